#include "render/tags.h"
#include "render/views.h"

namespace fernlow {

namespace {

void renderFileRow(const json::Object& file, Lines& lines) {
    const auto relativePath = file.optionalText("relativePath");
    lines.add(relativePath ? *relativePath : file.text("path"));

    Tags tags(lines);
    if (const auto action = file.text("outputAction"); action != "compile") {
        tags.add(UpperCase{action});
    }
    if (file.boolean("outputPathIsChosen")) {
        tags.add("path chosen");
    }
    if (file.boolean("outputActionIsChosen")) {
        tags.add("action chosen");
    }
    if (file.boolean("isShadowItem")) {
        tags.add("outside the project");
    }
    if (file.optionalBoolean("exists") == false) {
        tags.add("MISSING");
    }
    tags.close();

    if (const auto outputPath = file.optionalText("outputPath")) {
        lines.add("    → ", *outputPath);
    }
}

} // namespace

bool renderFileList(const json::Object& result, Lines& lines) {
    const auto files = result.optionalObjects("files");
    if (!files) {
        return false;
    }
    if (files->empty()) {
        lines.add("Nothing matched. If you expected a file here, refresh the project — this is "
                  "Fernlow's index, not the disk.");
        return true;
    }
    std::int64_t count = 0;
    for (const json::Object file : *files) {
        renderFileRow(file, lines);
        ++count;
    }
    lines.add();
    lines.add(count, " of ", result.optionalInteger("total").value_or(count), ".");
    if (result.boolean("truncated")) {
        const std::int64_t offset = result.integer("offset");
        // The sum is unsigned, because a large offset would overflow a signed sum. A negative
        // offset wraps around, and the conversion back to a signed number then gives the correct
        // sum.
        const auto next = static_cast<std::uint64_t>(offset) + static_cast<std::uint64_t>(count);
        lines.add("More to come: ask again with --offset ");
        if (offset < 0) {
            lines.append(static_cast<std::int64_t>(next));
        } else {
            lines.append(next);
        }
        lines.append(std::string_view("."));
    }
    return true;
}

bool renderFile(const json::Object& result, Lines& lines) {
    const auto file = result.object("file");
    if (!file) {
        return false;
    }
    renderFileRow(*file, lines);
    lines.add();
    if (const auto values = result.object("values")) {
        renderValues(*values, lines);
    }
    return true;
}

} // namespace fernlow

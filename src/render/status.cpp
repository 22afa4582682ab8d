#include "render/views.h"

namespace fernlow {

namespace {

std::string_view yesOrNo(bool value) {
    return value ? "yes" : "no";
}

} // namespace

bool renderStatus(const json::Object& result, Lines& lines) {
    const auto cursor = result.optionalUnsigned("logCursor");
    if (!cursor) {
        return false;
    }
    const bool paused = result.boolean("isFileWatchingPaused");
    lines.add("Projects: ", result.integer("projectCount"),
              "    Frameworks: ", result.integer("frameworkCount"));
    lines.add("Indexing: ", yesOrNo(result.boolean("isIndexing")),
              "    Compiling: ", yesOrNo(result.boolean("isCompiling")),
              "    Watching: ", paused ? "PAUSED" : "on");
    lines.add("Log cursor: ", *cursor);
    if (const auto build = result.object("activeBuild")) {
        lines.add("Building \"", build->text("projectName"),
                  "\": ", build->integer("itemsCompleted"), " of ", build->integer("itemsTotal"));
    }
    if (paused) {
        lines.add();
        lines.add("File watching is paused, so saving a file will not compile it. Resume with "
                  "\"fernlow watch resume\".");
    }
    return true;
}

} // namespace fernlow

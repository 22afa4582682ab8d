#include "render/views.h"

namespace fernlow {

namespace {

void renderLogEntry(const json::Object& entry, Lines& lines) {
    lines.add(entry.integer("cursor"), "  ", UpperCase{entry.text("severity")}, "  ",
              entry.text("title"));
}

} // namespace

bool renderLog(const json::Object& result, Lines& lines) {
    const auto entries = result.optionalObjects("entries");
    if (!entries) {
        return false;
    }
    renderList(*entries, renderLogEntry, "Nothing logged.", lines);
    return true;
}

} // namespace fernlow

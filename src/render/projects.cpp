#include "render/tags.h"
#include "render/views.h"

namespace fernlow {

void renderProjectRow(const json::Object& project, Lines& lines) {
    lines.add(project.text("name"));
    Tags tags(lines);
    if (project.boolean("isFramework")) {
        tags.add("framework");
    }
    if (!project.boolean("isEnabled")) {
        tags.add("OFF");
    }
    tags.close();
    lines.add("  ", project.text("path"));
}

} // namespace fernlow

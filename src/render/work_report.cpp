#include "render/views.h"

namespace fernlow {

namespace {

std::string_view plural(std::int64_t count) {
    return count == 1 ? "" : "s";
}

void renderProblem(const json::Object& problem, Lines& lines) {
    lines.add();
    lines.add(UpperCase{problem.text("severity")}, "  ", problem.text("title"));
    if (const auto message = problem.text("message"); !message.empty()) {
        lines.add(message);
    }
    for (const json::Object report : problem.objects("syntaxReports")) {
        const std::string_view path = report.text("path");
        for (const json::Object issue : report.objects("issues")) {
            lines.add("  ", path, ":", issue.integer("line"), ":", issue.integer("column"), "  ",
                      issue.text("reason"));
        }
    }
}

} // namespace

bool renderWorkReport(const json::Object& result, Lines& lines) {
    const auto compiled = result.optionalInteger("compiledFileCount");
    if (!compiled) {
        return false;
    }
    const std::int64_t errors = result.integer("errorCount");
    const std::int64_t warnings = result.integer("warningCount");
    lines.add("Compiled ", *compiled, " file", plural(*compiled), ". ", errors, " error",
              plural(errors), ", ", warnings, " warning", plural(warnings), ".");

    const auto requestedPaths = result.optionalTexts("requestedPaths");
    const auto requested = requestedPaths ? requestedPaths->size() : 0;
    if (requested != 0 && requested < *compiled) {
        lines.add("(You asked for ", requested,
                  "; Fernlow rebuilt everything that depended on them.)");
    }
    for (const json::Object problem : result.objects("problems")) {
        renderProblem(problem, lines);
    }
    if (result.boolean("timedOut")) {
        lines.add();
        lines.add("The wait expired. The work may still be going; ask again with a later --since.");
    }
    if (result.boolean("logTruncated")) {
        lines.add();
        lines.add("Some log entries were discarded before they could be read, so these counts are "
                  "lower bounds.");
    }
    return true;
}

} // namespace fernlow

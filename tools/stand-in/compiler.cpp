#include "compiler.h"

#include "project_files.h"

#include <algorithm>

namespace fernlow::standin {

namespace {

struct Position {
    int line = 1;
    int column = 1;
};

Json issueAt(Position position, const char* reason) {
    return {{"line", position.line}, {"column", position.column}, {"reason", reason}};
}

/// Braces that have no partner. Strings are not told apart: a brace in one counts like any other.
Json braceIssues(const std::string& text) {
    Json issues = Json::array();
    std::vector<Position> open;
    Position position;
    for (const char character : text) {
        if (character == '{') {
            open.push_back(position);
        }
        if (character == '}' && open.empty()) {
            issues.push_back(issueAt(position, "This \"}\" closes nothing."));
        } else if (character == '}') {
            open.pop_back();
        }
        if (character == '\n') {
            position = {position.line + 1, 1};
        } else if ((static_cast<unsigned char>(character) & 0xC0) != 0x80) {
            // Columns count characters, so the bytes that continue one in UTF-8 don't.
            ++position.column;
        }
    }
    for (const Position& each : open) {
        issues.push_back(issueAt(each, "This \"{\" is never closed."));
    }
    return issues;
}

Json entryFor(const Project& project, const fs::path& file, const char* severity,
              const std::string& title, const std::string& message = "") {
    return {{"severity", severity},
            {"title", title + " " + file.lexically_relative(project.folder).string()},
            {"message", message},
            {"path", file.string()},
            {"projectPath", project.folder.string()}};
}

/// Logs the faults of `source`; whether there were none.
bool reportFaults(State& state, const Project& project, const fs::path& source) {
    const Json issues = braceIssues(textOf(source));
    if (issues.empty()) {
        return true;
    }
    Json entry = entryFor(project, source, "error", "Syntax error in", "The braces don't balance.");
    entry["syntaxReports"] = Json::array({{{"path", source.string()}, {"issues", issues}}});
    state.record(entry);
    return false;
}

void reportMissingImports(State& state, const Project& project, const fs::path& source) {
    for (const Import& import : importsOf(source)) {
        if (import.file) {
            continue;
        }
        state.record(entryFor(project, source, "warning", "Missing import in",
                              "Nothing is called \"" + import.name + "\"."));
    }
}

} // namespace

void compile(State& state, const Project& project, const fs::path& source) {
    if (!languageOf(source).empty()) {
        reportMissingImports(state, project, source);
        if (!reportFaults(state, project, source)) {
            return;
        }
    }
    if (const auto output = outputPathOf(project, source); output && *output != source) {
        fs::create_directories(output->parent_path());
        fs::copy_file(source, *output, fs::copy_options::overwrite_existing);
    }
    Json entry = entryFor(project, source, "success", "Compiled");
    entry["isCompiled"] = true;
    state.record(entry);
}

std::vector<fs::path> affectedBy(const Project& project, const std::vector<fs::path>& saved) {
    const std::vector<fs::path> indexed = indexedPaths(project);
    std::vector<fs::path> affected = saved;
    // Grows while it is walked: an importer has importers too.
    for (std::size_t index = 0; index < affected.size(); ++index) {
        for (const fs::path& candidate : indexed) {
            const bool isImporter =
                std::ranges::any_of(importsOf(candidate), [&](const Import& import) {
                    return import.file == affected[index];
                });
            if (isImporter && std::ranges::find(affected, candidate) == affected.end()) {
                affected.push_back(candidate);
            }
        }
    }
    std::erase_if(affected,
                  [&](const fs::path& file) { return outputActionOf(project, file) == "ignore"; });
    return affected;
}

void build(State& state, const Project& project, bool clean) {
    if (clean && outputRoot(project) != sourceFolder(project)) {
        fs::remove_all(outputRoot(project));
    }
    for (const fs::path& file : indexedPaths(project)) {
        if (outputActionOf(project, file) != "ignore") {
            compile(state, project, file);
        }
    }
}

void checkSyntax(State& state, const Project& project, const fs::path& source) {
    if (reportFaults(state, project, source)) {
        state.record(entryFor(project, source, "success", "Checked"));
    }
}

Json workReport(const State& state, std::uint64_t since, const Project* project) {
    Json compiled = Json::array();
    Json problems = Json::array();
    int errors = 0;
    int warnings = 0;
    for (const Json& entry : state.log) {
        if (entry["cursor"].get<std::uint64_t>() <= since) {
            continue;
        }
        if (project != nullptr && entry.value("projectPath", "") != project->folder) {
            continue;
        }
        if (entry.value("isCompiled", false)) {
            compiled.push_back(entry["path"]);
        }
        if (entry["severity"] == "success") {
            continue;
        }
        ++(entry["severity"] == "error" ? errors : warnings);
        problems.push_back(entry);
    }
    return {{"compiledFileCount", compiled.size()},
            {"errorCount", errors},
            {"warningCount", warnings},
            {"requestedPaths", Json::array()},
            {"compiledPaths", std::move(compiled)},
            {"problems", std::move(problems)},
            {"timedOut", false},
            {"logTruncated", state.isTruncatedAfter(since)},
            {"logCursor", state.logCursor}};
}

} // namespace fernlow::standin

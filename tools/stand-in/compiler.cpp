#include "compiler.h"

#include "confined_files.h"
#include "project_files.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <tuple>

namespace fernlow::standin {

namespace {

struct Position {
    int line = 1;
    int column = 1;
};

Json issueAt(Position position, char bracket, const std::string& problem) {
    return {{"line", position.line},
            {"column", position.column},
            {"reason", std::string("This \"") + bracket + "\" " + problem + "."}};
}

/// Returns the end of the string literal or comment that begins at `start`, or `start` if none
/// begins there. A quote that is not closed on its line is an apostrophe; `unclosedUntil` is then
/// the place up to which the quote is known to be unclosed.
std::size_t endOfQuoted(std::string_view text, std::size_t start, std::size_t& unclosedUntil) {
    const auto endAfter = [&](std::string_view closing, std::size_t from) {
        const auto end = text.find(closing, from);
        return end == std::string::npos ? text.size() : end + closing.size();
    };
    if (text.substr(start, 2) == "/*") {
        return endAfter("*/", start + 2);
    }
    // After a colon, two slashes are part of a URL: style sheets contain URLs without quotes.
    if (text.substr(start, 2) == "//" && (start == 0 || text[start - 1] != ':')) {
        return std::min(text.find('\n', start), text.size());
    }
    if (text[start] != '"' && text[start] != '\'' && text[start] != '`') {
        return start;
    }
    std::size_t at = start + 1;
    for (; at < text.size() && (text[at] != '\n' || text[start] == '`'); ++at) {
        if (text[at] == text[start]) {
            return at + 1;
        }
        at += text[at] == '\\' ? 1 : 0;
    }
    unclosedUntil = at;
    return start;
}

/// Returns the first brackets without a partner. Does not recognise regular expressions.
Json bracketIssues(const std::string& text) {
    constexpr std::size_t maxIssues = 100;
    constexpr std::string_view opening = "{[(";
    constexpr std::string_view closing = "}])";
    Json issues = Json::array();
    std::vector<std::pair<char, Position>> open;
    Position position;
    std::size_t quotedUntil = 0;
    // For each kind of quote. Searching for the same closing quote again and again would take
    // minutes in a long line.
    std::map<char, std::size_t> unclosedUntil;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char character = text[at];
        if (at >= quotedUntil && at >= unclosedUntil[character]) {
            quotedUntil = endOfQuoted(text, at, unclosedUntil[character]);
        }
        const auto kind = at < quotedUntil ? std::string::npos : closing.find(character);
        if (at >= quotedUntil && opening.find(character) != std::string::npos) {
            open.emplace_back(character, position);
        } else if (kind != std::string::npos && !open.empty() &&
                   open.back().first == opening[kind]) {
            open.pop_back();
        } else if (kind != std::string::npos && issues.size() < maxIssues) {
            issues.push_back(issueAt(position, character, "closes nothing"));
        }
        if (character == '\n') {
            position = {position.line + 1, 1};
        } else if ((static_cast<unsigned char>(character) & 0xC0) != 0x80) {
            // Columns count characters, not the continuation bytes of UTF-8.
            ++position.column;
        }
    }
    open.resize(std::min(open.size(), maxIssues));
    for (const auto& [character, where] : open) {
        issues.push_back(issueAt(where, character, "is never closed"));
    }
    std::sort(issues.begin(), issues.end(), [](const Json& one, const Json& other) {
        return std::tie(one["line"], one["column"]) < std::tie(other["line"], other["column"]);
    });
    issues.erase(issues.begin() + std::min(std::ssize(issues), std::ptrdiff_t{maxIssues}),
                 issues.end());
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

/// Returns the file and all files that it imports directly or indirectly.
std::vector<fs::path> withImports(const fs::path& source) {
    std::vector<fs::path> files{source};
    for (std::size_t index = 0; index < files.size(); ++index) {
        for (const Import& import : importsOf(files[index])) {
            if (import.file && std::ranges::find(files, *import.file) == files.end()) {
                files.push_back(*import.file);
            }
        }
    }
    return files;
}

/// Checks the brackets of `files` and logs any issues as an error of `source`. Returns whether
/// there were none.
bool checkBrackets(State& state, const Project& project, const fs::path& source,
                   const std::vector<fs::path>& files) {
    Json reports = Json::array();
    for (const fs::path& file : files) {
        if (const Json issues = bracketIssues(textOf(file)); !issues.empty()) {
            reports.push_back({{"path", file.string()}, {"issues", issues}});
        }
    }
    if (reports.empty()) {
        return true;
    }
    Json entry =
        entryFor(project, source, "error", "Syntax error in", "The brackets don't balance.");
    entry["syntaxReports"] = std::move(reports);
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
    requireInside(project.folder, source);
    if (!languageOf(source).empty()) {
        reportMissingImports(state, project, source);
        if (!checkBrackets(state, project, source, withImports(source))) {
            return;
        }
    }
    if (const auto output = outputPathOf(project, source); output && *output != source) {
        copyInside(project.folder, source, *output);
    }
    Json entry = entryFor(project, source, "success", "Compiled");
    entry["isCompiled"] = true;
    state.record(entry);
}

std::vector<fs::path> affectedBy(const Project& project, const std::vector<fs::path>& saved) {
    std::map<fs::path, std::vector<fs::path>> importers;
    for (const fs::path& candidate : indexedPaths(project)) {
        for (const Import& import : importsOf(candidate)) {
            if (import.file) {
                importers[*import.file].push_back(candidate);
            }
        }
    }
    std::vector<fs::path> affected = saved;
    // The list grows during the loop, because an importer has importers too.
    for (std::size_t index = 0; index < affected.size(); ++index) {
        for (const fs::path& importer : importers[affected[index]]) {
            if (std::ranges::find(affected, importer) == affected.end()) {
                affected.push_back(importer);
            }
        }
    }
    std::erase_if(affected,
                  [&](const fs::path& file) { return outputActionOf(project, file) == "ignore"; });
    return affected;
}

std::vector<fs::path> filesWithOutput(const Project& project) {
    std::vector<fs::path> files = indexedPaths(project);
    std::erase_if(files,
                  [&](const fs::path& file) { return outputActionOf(project, file) == "ignore"; });
    return files;
}

void checkSyntax(State& state, const Project& project, const fs::path& source) {
    requireInside(project.folder, source);
    if (checkBrackets(state, project, source, {source})) {
        state.record(entryFor(project, source, "success", "Checked"));
    }
}

Json workReport(const State& state, std::uint64_t since, const fs::path& project) {
    Json compiled = Json::array();
    Json problems = Json::array();
    int errors = 0;
    int warnings = 0;
    for (const Json& entry : state.log) {
        if (entry["cursor"].get<std::uint64_t>() <= since) {
            continue;
        }
        if (!project.empty() && entry.value("projectPath", "") != project) {
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

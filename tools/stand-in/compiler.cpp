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

/// Returns the index after the string literal or comment that begins at `start`, or `start` if none
/// begins there. A quote without a closing quote on its line is an apostrophe. In that case, sets
/// `unclosedUntil` to the index up to which there is no closing quote.
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
    const char quote = text[start];
    std::size_t index = start + 1;
    while (index < text.size() && (text[index] != '\n' || quote == '`')) {
        if (text[index] == quote) {
            return index + 1;
        }
        // A backslash escapes the next character.
        index += text[index] == '\\' ? 2 : 1;
    }
    unclosedUntil = index;
    return start;
}

/// Returns an issue for each of the first 100 unmatched brackets. Does not recognise regular
/// expressions.
Json bracketIssues(const std::string& text) {
    constexpr std::size_t maxIssues = 100;
    constexpr std::string_view opening = "{[(";
    constexpr std::string_view closing = "}])";
    Json issues = Json::array();
    std::vector<std::pair<char, Position>> open;
    Position position;
    std::size_t quotedUntil = 0;
    // The results of endOfQuoted(), by the quote character. Without them, a long line full of
    // apostrophes would be searched again for each apostrophe, which would take minutes.
    std::map<char, std::size_t> unclosedUntil;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char character = text[at];
        if (at >= quotedUntil && at >= unclosedUntil[character]) {
            quotedUntil = endOfQuoted(text, at, unclosedUntil[character]);
        }
        const auto pair = at < quotedUntil ? std::string::npos : closing.find(character);
        if (at >= quotedUntil && opening.find(character) != std::string::npos) {
            open.emplace_back(character, position);
        } else if (pair != std::string::npos && !open.empty() &&
                   open.back().first == opening[pair]) {
            open.pop_back();
        } else if (pair != std::string::npos && issues.size() < maxIssues) {
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
    for (const auto& [character, bracketPosition] : open) {
        issues.push_back(issueAt(bracketPosition, character, "is never closed"));
    }
    std::sort(issues.begin(), issues.end(), [](const Json& first, const Json& second) {
        return std::tie(first["line"], first["column"]) <
               std::tie(second["line"], second["column"]);
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

/// Checks the brackets of `files` and logs any issues as an error of `source`. Returns true if
/// there are no issues.
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
        if (entry["severity"] == "error") {
            ++errors;
        } else {
            ++warnings;
        }
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

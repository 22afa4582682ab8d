#pragma once

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <list>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace fernlow::standin {

/// Keeps members in the order in which the code adds them.
using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

/// The error for a request that is refused. what() is a sentence for the user.
struct Refusal : std::runtime_error {
    explicit Refusal(const std::string& sentence, unsigned status = 422)
        : std::runtime_error(sentence), httpStatus(status) {}
    unsigned httpStatus;
};

/// A project or framework and its settings.
struct Project { // NOLINT(bugprone-exception-escape): moving a JSON value only asserts.
    fs::path folder;
    std::string name;
    std::string group;
    bool isFramework = false;
    bool isEnabled = true;
    /// {"project": {key: value}, "languages": {language: {key: value}}}
    Json settings;
    /// The languages' settings that output paths are computed from. Changes of some settings apply
    /// only once "settings apply-output-paths" copies them here.
    Json appliedLanguages;
    /// The choices made with "files set", by file: outputAction, outputFolder, outputFilename,
    /// values.
    std::map<fs::path, Json> fileChoices;
    std::set<fs::path> skippedFolders;
    /// Rows by kind of collection: {kind: [{"id", "values"}]}
    Json collections;
};

/// Work on one project, done step by step. Most steps process one file.
struct Job {
    fs::path project;
    /// The kind that a status reports: "build", "refresh" or empty.
    std::string kind;
    std::vector<std::function<void()>> steps;
    std::size_t stepsDone = 0;
    /// When the next step is due. Not set before the job starts.
    Clock::time_point nextStep{};
    /// The number of the request that started the job.
    std::uint64_t request = 0;
};

/// The whole state of the stand-in, with the look-ups that most requests need.
struct State {
    State();

    /// Returns the project whose folder is `path`. Throws Refusal if there is none.
    Project& projectAt(const std::string& path);
    /// Returns the project that contains `file`, the innermost of several. Throws Refusal if there
    /// is none or if it is disabled.
    Project& projectOf(const fs::path& file);
    /// Adds an entry with the next cursor to the log. Drops the oldest entry of a full log.
    void record(const Json& entry);
    /// Returns whether entries after `cursor` have been dropped from the log.
    [[nodiscard]] bool isTruncatedAfter(std::uint64_t cursor) const;
    /// Does the steps that are due. The jobs of one project run one after the other.
    void advance();

    std::vector<Project> projects;
    std::vector<std::string> groups;
    Json defaults;
    std::deque<Json> log;
    std::uint64_t logCursor = 0;
    std::uint64_t lastRowId = 0;
    bool isFileWatchingPaused = false;
    std::list<Job> jobs;
    std::uint64_t lastRequest = 0;
    /// The duration of each step of a job.
    std::chrono::milliseconds workTime{0};
};

/// Returns whether there is a regular file at `path`. After any error, such as a name that is too
/// long, returns false.
bool isFile(const fs::path& path);
/// Returns whether there is a folder at `path`. After any error, returns false.
bool isFolder(const fs::path& path);
/// Returns whether `text` can be part of a path, which contains no control characters. The system
/// would cut a path at a NUL character and use the folder before it.
bool isPathText(const std::string& text);
/// Returns whether `text` can be the name of a file or folder: part of a path without a slash, and
/// neither "." nor "..".
bool isPlainName(const std::string& text);
/// Returns an absolute path without ".", ".." and a trailing slash. Throws Refusal if `text` is not
/// absolute or contains control characters.
fs::path absolutePath(const std::string& text);
/// Returns whether `path` is `folder` or lies below it. Compares names only: both paths must be
/// absolute and without "..".
bool isWithin(const fs::path& path, const fs::path& folder);

} // namespace fernlow::standin

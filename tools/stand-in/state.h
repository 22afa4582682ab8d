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

/// Keeps members in the order they were written, so that replies read the way the code does.
using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

/// A request that was understood and is not carried out; what() is a sentence for the user.
struct Refusal : std::runtime_error {
    explicit Refusal(const std::string& sentence, unsigned status = 422)
        : std::runtime_error(sentence), httpStatus(status) {}
    unsigned httpStatus;
};

/// One project or framework and all that has been chosen for it.
struct Project { // NOLINT(bugprone-exception-escape): moving a JSON value only asserts.
    fs::path folder;
    std::string name;
    std::string group;
    bool isFramework = false;
    bool isEnabled = true;
    /// {"project": {key: value}, "languages": {language: {key: value}}}
    Json settings;
    /// The languages' settings as they were when output paths were last worked out.
    Json appliedLanguages;
    /// What "files set" chose, by file: outputAction, outputFolder, outputFilename, values.
    std::map<fs::path, Json> fileChoices;
    std::set<fs::path> skippedFolders;
    /// Rows by kind of collection: {kind: [{"id", "values"}]}
    Json collections;
};

/// Work on one project that is going on, a step (most often a file) at a time.
struct Job {
    fs::path project;
    /// What a status calls it: "build", "refresh", or nothing.
    std::string kind;
    std::vector<std::function<void()>> steps;
    std::size_t stepsDone = 0;
    /// When the next step is done; set once the job has begun.
    Clock::time_point nextStep{};
    /// Tells the jobs of one request from all others.
    std::uint64_t request = 0;
};

/// Everything the stand-in remembers, with the look-ups that most requests begin with.
struct State {
    State();

    /// The project whose folder is `path`; refuses when there is none.
    Project& projectAt(const std::string& path);
    /// The enabled project that holds `file`, the innermost of several; refuses otherwise.
    Project& projectOf(const fs::path& file);
    /// Gives `entry` the next cursor and keeps it; the oldest entry goes when the log is full.
    void record(const Json& entry);
    /// Whether entries after `cursor` have already been dropped from the log.
    [[nodiscard]] bool isTruncatedAfter(std::uint64_t cursor) const;
    /// Does the steps that are due. Jobs of one project go one after the other.
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
    /// How long each step of a job takes.
    std::chrono::milliseconds workTime{0};
};

/// Whether the text may become a part of a path. A control character may not: one of them, NUL,
/// ends the path for the system, so that the folder around it is meant.
bool isPathText(const std::string& text);
/// The same for the name of one file or folder, which leads nowhere else.
bool isPlainName(const std::string& text);
/// `text` as a path without "." and ".." and without a trailing slash; refuses a relative one.
fs::path absolutePath(const std::string& text);
/// Whether `path` is `folder` or lies below it.
bool isWithin(const fs::path& path, const fs::path& folder);

} // namespace fernlow::standin

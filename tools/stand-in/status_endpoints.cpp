#include "endpoints.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace fernlow::standin {

namespace {

std::ptrdiff_t severityRank(const std::string& severity) {
    constexpr std::array<std::string_view, 3> ascending = {"success", "warning", "error"};
    return std::ranges::find(ascending, severity) - ascending.begin();
}

Json logEntries(State& state, const Json& body) {
    const auto lowestRank = severityRank(body.value("minimumSeverity", "success"));
    const fs::path folder =
        body.contains("projectPath") ? state.projectAt(body["projectPath"]).folder : fs::path();
    const auto limit = body["limit"].get<std::int64_t>();
    std::uint64_t nextCursor = body["since"].get<std::uint64_t>();
    Json entries = Json::array();
    for (const Json& entry : state.log) {
        if (entry["cursor"].get<std::uint64_t>() <= nextCursor) {
            continue;
        }
        if (static_cast<std::int64_t>(entries.size()) >= limit) {
            break;
        }
        nextCursor = entry["cursor"].get<std::uint64_t>();
        const bool isWanted = folder.empty() || entry.value("projectPath", "") == folder;
        if (isWanted && severityRank(entry["severity"]) >= lowestRank) {
            entries.push_back(entry);
        }
    }
    return {{"entries", std::move(entries)}, {"nextCursor", nextCursor}};
}

Json status(State& state, const Json& /*unused*/) {
    const auto frameworks = std::ranges::count(state.projects, true, &Project::isFramework);
    const auto indexing = std::ranges::count(state.jobs, "refresh", &Job::kind);
    Json result = {{"logCursor", state.logCursor},
                   {"isIndexing", indexing > 0},
                   {"isCompiling", std::ssize(state.jobs) > indexing},
                   {"isFileWatchingPaused", state.isFileWatchingPaused},
                   {"projectCount", std::ssize(state.projects) - frameworks},
                   {"frameworkCount", frameworks}};
    const auto build = std::ranges::find(state.jobs, "build", &Job::kind);
    if (build != state.jobs.end()) {
        const auto project = std::ranges::find(state.projects, build->project, &Project::folder);
        result["activeBuild"] = {
            {"projectName", project == state.projects.end() ? "" : project->name},
            {"itemsCompleted", build->stepsDone},
            {"itemsTotal", build->steps.size()}};
    }
    return result;
}

} // namespace

const Endpoints& statusEndpoints() {
    static const Endpoints rows = {
        {"GET", "/v1/status", "What is going on, and the log cursor.", "", status},
        {"POST", "/v1/log", "Read the log from a cursor.",
         "since limit projectPath? minimumSeverity?", logEntries},
    };
    return rows;
}

} // namespace fernlow::standin

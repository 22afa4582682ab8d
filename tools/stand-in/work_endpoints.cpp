#include "compiler.h"
#include "endpoints.h"
#include "project_files.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace fernlow::standin {

namespace {

/// Nothing here goes on by itself, so quiet can be told at once, unless the pause that proves it
/// would outlast the wait.
bool isWaitExpired(const Json& body) {
    return body.value("settleMilliseconds", 0.0) > body["timeoutSeconds"].get<double>() * 1000;
}

/// Does `work`, or puts it off when the request does not wait, and reports on it.
Json carryOut(State& state, const Json& body, const Json& requestedPaths,
              const std::function<void()>& work) {
    const std::uint64_t before = state.logCursor;
    const bool isWaiting = body["wait"].get<bool>();
    if (isWaiting) {
        work();
    } else {
        state.submittedWork.push_back(work);
    }
    Json report = workReport(state, before);
    report["requestedPaths"] = requestedPaths;
    report["timedOut"] = isWaiting && isWaitExpired(body);
    return report;
}

/// The files that `body` names; refuses one that is missing or in no enabled project.
std::vector<fs::path> requestedFiles(State& state, const Json& body) {
    std::vector<fs::path> files;
    for (const auto& text : body["paths"]) {
        files.push_back(absolutePath(text.get<std::string>()));
        if (!fs::is_regular_file(files.back())) {
            throw Refusal("There is no file at " + files.back().string() + ".");
        }
        state.projectOf(files.back());
    }
    if (files.empty()) {
        throw Refusal("No path was given.");
    }
    return files;
}

Json process(State& state, const Json& body) {
    const std::vector<fs::path> files = requestedFiles(state, body);
    for (const fs::path& file : files) {
        if (!isWithin(file, sourceFolder(state.projectOf(file)))) {
            throw Refusal(file.string() + " is not in its project's source folder.");
        }
    }
    return carryOut(state, body, body["paths"], [&state, files, mode = body["mode"]] {
        std::map<Project*, std::vector<fs::path>> filesByProject;
        for (const fs::path& file : files) {
            filesByProject[&state.projectOf(file)].push_back(file);
        }
        for (const auto& [project, saved] : filesByProject) {
            const auto sources = mode == "exactly" ? saved : affectedBy(*project, saved);
            for (const fs::path& source : sources) {
                compile(state, *project, source);
            }
        }
    });
}

Json buildProject(State& state, const Json& body) {
    Project& project = state.projectOf(state.projectAt(body["path"]).folder);
    const auto hasOutput = [&](const fs::path& file) {
        return outputActionOf(project, file) != "ignore";
    };
    if (!body["wait"].get<bool>()) {
        state.activeBuild = {
            {"projectName", project.name},
            {"itemsCompleted", 0},
            {"itemsTotal", std::ranges::count_if(indexedPaths(project), hasOutput)}};
    }
    return carryOut(
        state, body, Json::array(),
        [&state, &project, clean = body.value("clean", false)] { build(state, project, clean); });
}

void recordAbout(State& state, const Project& project, const std::string& title) {
    state.record({{"severity", "success"},
                  {"title", title},
                  {"message", ""},
                  {"path", project.folder.string()},
                  {"projectPath", project.folder.string()}});
}

Json refresh(State& state, const Json& body) {
    const Project* only = body.contains("path") ? &state.projectAt(body["path"]) : nullptr;
    return carryOut(state, body, Json::array(), [&state, only] {
        for (Project& project : state.projects) {
            if (only != nullptr && only != &project) {
                continue;
            }
            readSkippedFolders(project);
            recordAbout(state, project, "Refreshed " + project.name);
        }
    });
}

/// Refuses files other than of the kinds wanted, then does `work` for each with its project.
Json forEachOfKind(State& state, const Json& body, const std::vector<std::string>& extensions,
                   const std::string& refusal,
                   const std::function<void(const Project&, const fs::path&)>& work) {
    const std::vector<fs::path> files = requestedFiles(state, body);
    for (const fs::path& file : files) {
        if (std::ranges::count(extensions, file.extension().string()) == 0) {
            throw Refusal(file.string() + refusal);
        }
    }
    return carryOut(state, body, body["paths"], [&state, files, work] {
        for (const fs::path& file : files) {
            work(state.projectOf(file), file);
        }
    });
}

Json check(State& state, const Json& body) {
    return forEachOfKind(state, body, {".js"},
                         " is not Javascript, and nothing else can be checked.",
                         [&state](const Project& project, const fs::path& file) {
                             checkSyntax(state, project, file);
                         });
}

Json optimize(State& state, const Json& body) {
    return forEachOfKind(state, body, {".png", ".jpg", ".jpeg", ".gif", ".svg", ".webp"},
                         " is not an image that can be optimised.",
                         [&state](const Project& project, const fs::path& file) {
                             recordAbout(state, project,
                                         "Would optimise " + file.filename().string());
                         });
}

Json waitUntilIdle(State& state, const Json& body) {
    const Project* project =
        body.contains("projectPath") ? &state.projectAt(body["projectPath"]) : nullptr;
    const std::uint64_t since = body.value("since", state.logCursor);
    state.finishSubmittedWork();
    Json report = workReport(state, since, project);
    report["timedOut"] = isWaitExpired(body);
    return report;
}

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
    Json result = {{"logCursor", state.logCursor},
                   {"isIndexing", false},
                   {"isCompiling", !state.submittedWork.empty()},
                   {"isFileWatchingPaused", state.isFileWatchingPaused},
                   {"projectCount", std::ssize(state.projects) - frameworks},
                   {"frameworkCount", frameworks}};
    if (!state.activeBuild.is_null()) {
        result["activeBuild"] = state.activeBuild;
    }
    return result;
}

/// The npm command line that a packages request stands for.
std::string npmCommand(const Json& body) {
    const std::string action = body["action"];
    std::string command = "npm " + (action == "forceInstall" ? "install --force" : action);
    for (const auto& package : body["packages"]) {
        command += " " + package.get<std::string>();
    }
    if (body.value("exactVersions", false)) {
        command += " --save-exact";
    }
    if (!body.value("updatePackageLock", true)) {
        command += " --no-package-lock";
    }
    return command;
}

Json packages(State& state, const Json& body) {
    Project& project = state.projectOf(state.projectAt(body["path"]).folder);
    if (body["action"] == "uninstall" && body["packages"].empty()) {
        throw Refusal("Uninstalling needs the names of the packages.");
    }
    const std::string command = npmCommand(body);
    Json report = carryOut(state, body, Json::array(), [&state, &project, command] {
        recordAbout(state, project, "Would run " + command);
    });
    report["command"] = command;
    return report;
}

Json preview(State& /*unused*/, const Json& body) {
    // The host stands for the choice; 192.0.2.1 is an address that documentation may use.
    static const std::map<std::string, std::string> hosts = {{"preferred", "localhost"},
                                                             {"bonjour", "stand-in.local"},
                                                             {"lan", "192.0.2.1"},
                                                             {"loopback", "127.0.0.1"},
                                                             {"localhost", "localhost"}};
    const fs::path page = body.value("relativePath", "");
    return {{"opened",
             "http://" + hosts.at(body["address"]) + ":5757/" + page.relative_path().string()}};
}

} // namespace

const Endpoints& workEndpoints() {
    static const Endpoints rows = {
        {"GET", "/v1/status", "What is going on, and the log cursor.", "", status},
        {"POST", "/v1/process", "Compile files.",
         "paths mode wait settleMilliseconds timeoutSeconds", process},
        {"POST", "/v1/wait", "Wait until nothing is happening.",
         "projectPath? since? settleMilliseconds timeoutSeconds", waitUntilIdle},
        {"POST", "/v1/log", "Read the log from a cursor.",
         "since limit projectPath? minimumSeverity?", logEntries},
        {"POST", "/v1/build", "Build a whole project.", "path clean? wait timeoutSeconds",
         buildProject},
        {"POST", "/v1/refresh", "Read projects from disk again.",
         "path? wait settleMilliseconds timeoutSeconds", refresh},
        {"POST", "/v1/optimize", "Optimise images.", "paths wait settleMilliseconds timeoutSeconds",
         optimize},
        {"POST", "/v1/check", "Check the syntax of Javascript.",
         "paths wait settleMilliseconds timeoutSeconds", check},
        {"POST", "/v1/packages", "Run a package operation.",
         "path action packages install? saveTo? exactVersions? updatePackageLock? "
         "raiseVersionLimits wait timeoutSeconds",
         packages},
        {"POST", "/v1/preview", "Open the preview in a browser.",
         "address browserBundleID? relativePath?", preview},
    };
    return rows;
}

} // namespace fernlow::standin

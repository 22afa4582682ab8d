#include "compiler.h"
#include "endpoints.h"
#include "project_files.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace fernlow::standin {

namespace {

/// Returns a work report of the log entries after `since`, limited to `project` unless that is
/// empty. Returns no report while one of the jobs for which `isRelevant` returns true exists, and
/// for the request's settle time after it. When the request's timeout expires, returns the report
/// anyway.
PendingResult reportWhenQuiet(State& state, const Json& body, std::uint64_t since,
                              const fs::path& project,
                              const std::function<bool(const Job&)>& isRelevant) {
    using Seconds = std::chrono::duration<double>;
    const Seconds settle(body.value("settleMilliseconds", 0.0) / 1000);
    const Seconds timeout(std::min(body["timeoutSeconds"].get<double>(), 86400.0));
    const auto start = Clock::now();
    const Json paths = body.value("paths", Json::array());
    return [=, &state, quietSince = start]() mutable -> std::optional<Json> {
        const auto now = Clock::now();
        const bool isBusy = std::ranges::any_of(state.jobs, isRelevant);
        quietSince = isBusy ? now : quietSince;
        const bool isQuiet = !isBusy && now - quietSince >= settle;
        if (!isQuiet && now - start < timeout) {
            return std::nullopt;
        }
        Json report = workReport(state, since, project);
        report["requestedPaths"] = paths;
        report["timedOut"] = !isQuiet;
        // Without std::in_place, the conversion from Json to an optional is ambiguous.
        return std::optional<Json>(std::in_place, std::move(report));
    };
}

/// Starts the jobs. Their report is ready when the jobs are done, or at once if the request's
/// "wait" is false.
PendingResult startJobs(State& state, const Json& body, std::vector<Job> jobs) {
    const std::uint64_t request = ++state.lastRequest;
    for (Job& job : jobs) {
        job.request = request;
        state.jobs.push_back(std::move(job));
    }
    const bool isWaiting = body["wait"];
    Json waiting = body;
    waiting["settleMilliseconds"] = isWaiting ? body.value("settleMilliseconds", 0.0) : 0.0;
    return reportWhenQuiet(state, waiting, state.logCursor, "",
                           [=](const Job& job) { return isWaiting && job.request == request; });
}

/// Returns a step for each source. Each step looks the project up again, because the project may be
/// removed before the step runs.
std::vector<std::function<void()>> compileSteps(State& state, const Project& project,
                                                const std::vector<fs::path>& sources) {
    std::vector<std::function<void()>> steps;
    for (const fs::path& source : sources) {
        steps.emplace_back([&state, folder = project.folder, source] {
            compile(state, state.projectAt(folder), source);
        });
    }
    return steps;
}

/// Returns the member "paths". Throws Refusal if a file is missing or in no enabled project.
std::vector<fs::path> requestedFiles(State& state, const Json& body) {
    std::vector<fs::path> files;
    for (const auto& text : body["paths"]) {
        files.push_back(absolutePath(text.get<std::string>()));
        if (!isFile(files.back())) {
            throw Refusal("There is no file at " + files.back().string() + ".");
        }
        state.projectOf(files.back());
    }
    if (files.empty()) {
        throw Refusal("No path was given.");
    }
    return files;
}

PendingResult process(State& state, const Json& body) {
    std::map<Project*, std::vector<fs::path>> filesByProject;
    for (const fs::path& file : requestedFiles(state, body)) {
        Project& project = state.projectOf(file);
        if (!isWithin(file, sourceFolder(project))) {
            throw Refusal(file.string() + " is not in its project's source folder.");
        }
        filesByProject[&project].push_back(file);
    }
    std::vector<Job> jobs;
    for (const auto& [project, saved] : filesByProject) {
        const auto sources = body["mode"] == "exactly" ? saved : affectedBy(*project, saved);
        jobs.push_back({project->folder, "", compileSteps(state, *project, sources)});
    }
    return startJobs(state, body, std::move(jobs));
}

/// Removes a build folder. Keeps it if it is a symbolic link, so that the build reports the link
/// instead of writing through it. remove_all() follows no links.
void removeBuildFolder(const fs::path& folder) {
    if (!fs::is_symlink(folder)) {
        fs::remove_all(folder);
    }
}

PendingResult buildProject(State& state, const Json& body) {
    const Project& project = state.projectOf(state.projectAt(body["path"]).folder);
    Job job = {project.folder, "build", compileSteps(state, project, filesWithOutput(project))};
    if (body.value("clean", false) && outputRoot(project) != sourceFolder(project)) {
        job.steps.insert(job.steps.begin(),
                         [folder = outputRoot(project)] { removeBuildFolder(folder); });
    }
    return startJobs(state, body, {job});
}

/// Returns a step that only adds an entry to the log.
std::function<void()> logStep(State& state, const Project& project, const std::string& title) {
    const Json entry = {{"severity", "success"},
                        {"title", title},
                        {"message", ""},
                        {"path", project.folder.string()},
                        {"projectPath", project.folder.string()}};
    return [&state, entry] { state.record(entry); };
}

PendingResult refresh(State& state, const Json& body) {
    const Project* only = body.contains("path") ? &state.projectAt(body["path"]) : nullptr;
    std::vector<Job> jobs;
    for (const Project& project : state.projects) {
        if (only != nullptr && only != &project) {
            continue;
        }
        jobs.push_back(
            {project.folder,
             "refresh",
             {[&state, folder = project.folder] { readSkippedFolders(state.projectAt(folder)); },
              logStep(state, project, "Refreshed " + project.name)}});
    }
    return startJobs(state, body, std::move(jobs));
}

/// Starts a job with the step `makeStep(project, file)` for each requested file. Throws Refusal if
/// a file has none of the extensions.
PendingResult forEachOfKind(
    State& state, const Json& body, const std::vector<std::string>& extensions,
    const std::string& refusal,
    const std::function<std::function<void()>(const Project&, const fs::path&)>& makeStep) {
    std::vector<Job> jobs;
    for (const fs::path& file : requestedFiles(state, body)) {
        if (std::ranges::count(extensions, file.extension().string()) == 0) {
            throw Refusal(file.string() + refusal);
        }
        const Project& project = state.projectOf(file);
        jobs.push_back({project.folder, "", {makeStep(project, file)}});
    }
    return startJobs(state, body, std::move(jobs));
}

PendingResult check(State& state, const Json& body) {
    return forEachOfKind(state, body, {".js"},
                         " is not Javascript, and nothing else can be checked.",
                         [&state](const Project& project, const fs::path& file) {
                             return [&state, folder = project.folder, file] {
                                 checkSyntax(state, state.projectAt(folder), file);
                             };
                         });
}

PendingResult optimize(State& state, const Json& body) {
    return forEachOfKind(state, body, {".png", ".jpg", ".jpeg", ".gif", ".svg", ".webp"},
                         " is not an image that can be optimised.",
                         [&state](const Project& project, const fs::path& file) {
                             return logStep(state, project,
                                            "Would optimise " + file.filename().string());
                         });
}

PendingResult waitUntilIdle(State& state, const Json& body) {
    const fs::path project =
        body.contains("projectPath") ? state.projectAt(body["projectPath"]).folder : fs::path();
    return reportWhenQuiet(
        state, body, body.value("since", state.logCursor), project,
        [project](const Job& job) { return project.empty() || job.project == project; });
}

/// Returns the npm command line for a packages request. Nothing runs it.
std::string npmCommand(const Json& body) {
    const std::string action = body["action"];
    std::string command = "npm " + (action == "forceInstall" ? "install --force" : action);
    for (const auto& package : body["packages"]) {
        command += " " + package.get<std::string>();
    }
    if (const auto lists = body.find("saveTo"); lists != body.end()) {
        static const std::map<std::string, std::string> flags = {{"production", " --save-prod"},
                                                                 {"development", " --save-dev"},
                                                                 {"optional", " --save-optional"},
                                                                 {"bundle", " --save-bundle"}};
        command += lists->empty() ? " --no-save" : "";
        for (const auto& list : *lists) {
            command += flags.at(list);
        }
    }
    if (body.value("exactVersions", false)) {
        command += " --save-exact";
    }
    if (!body.value("updatePackageLock", true)) {
        command += " --no-package-lock";
    }
    return command;
}

PendingResult packages(State& state, const Json& body) {
    const Project& project = state.projectOf(state.projectAt(body["path"]).folder);
    if (body["action"] == "uninstall" && body["packages"].empty()) {
        throw Refusal("Uninstalling needs the names of the packages.");
    }
    const std::string command = npmCommand(body);
    const PendingResult report = startJobs(
        state, body, {Job{project.folder, "", {logStep(state, project, "Would run " + command)}}});
    return [report, command, body] {
        std::optional<Json> result = report();
        if (result) {
            result->update({{"command", command}, {"request", body}});
        }
        return result;
    };
}

Json preview(State& /*unused*/, const Json& body) {
    // The host shows which address was chosen. 192.0.2.1 is reserved for documentation.
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
        {"POST", "/v1/process", "Compile files.",
         "paths mode wait settleMilliseconds timeoutSeconds", process},
        {"POST", "/v1/wait", "Wait until nothing is happening.",
         "projectPath? since? settleMilliseconds timeoutSeconds", waitUntilIdle},
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

#include "commands/work.h"

#include "commands/options.h"

namespace fernlow {

AgentCLIAction parseProcess(WordList& words, const CurrentDirectory& currentDirectory) {
    AgentProcessRequest request;
    request.mode =
        words.takeFlag("--exactly") ? AgentProcessMode::exactly : AgentProcessMode::asIfSaved;
    request.wait = !words.takeFlag("--no-wait");
    request.settleMilliseconds = takeSettle(words);
    request.timeoutSeconds = takeTimeout(words);
    request.paths = words.takePaths(currentDirectory, "process", Paths::required);
    return post("/v1/process", request);
}

AgentCLIAction parseWait(WordList& words, const CurrentDirectory& currentDirectory) {
    AgentWaitRequest request;
    request.projectPath = takePathOption(words, "--project", currentDirectory);
    request.since = words.takeCursor("--since");
    request.settleMilliseconds = takeSettle(words);
    request.timeoutSeconds = takeTimeout(words);
    words.rejectLeftoverWords();
    return post("/v1/wait", request);
}

AgentCLIAction parseLog(WordList& words, const CurrentDirectory& /*currentDirectory*/) {
    AgentLogQuery query;
    query.since = words.takeCursor("--since").value_or(0);
    query.limit = takePageSize(words);
    // The log is also asked about projects that are gone, so the path is matched as it was typed.
    query.projectPath = words.takeOptionValue("--project");
    if (words.takeFlag("--errors-only")) {
        query.minimumSeverity = AgentLogSeverity::error;
    }
    words.rejectLeftoverWords();
    return post("/v1/log", query);
}

AgentCLIAction parseBuild(WordList& words, const CurrentDirectory& currentDirectory) {
    AgentBuildRequest request;
    if (words.takeFlag("--clean")) {
        request.clean = true;
    }
    request.wait = !words.takeFlag("--no-wait");
    request.timeoutSeconds = takeTimeout(words);
    request.path = words.takePathOrCurrentDirectory(currentDirectory);
    return post("/v1/build", request);
}

AgentCLIAction parseRefresh(WordList& words, const CurrentDirectory& currentDirectory) {
    AgentRefreshRequest request;
    const bool everyProject = words.takeFlag("--all");
    request.wait = !words.takeFlag("--no-wait");
    request.timeoutSeconds = takeTimeout(words);
    if (everyProject) {
        // Paths are ignored then, but unknown options are still refused.
        words.takeRemainingWords();
    } else {
        request.path = words.takePathOrCurrentDirectory(currentDirectory);
    }
    return post("/v1/refresh", request);
}

namespace {

AgentOptimizeRequest takeFileWork(WordList& words, const CurrentDirectory& currentDirectory,
                                  std::string_view command) {
    AgentOptimizeRequest request;
    request.wait = !words.takeFlag("--no-wait");
    request.timeoutSeconds = takeTimeout(words);
    request.paths = words.takePaths(currentDirectory, command, Paths::required);
    return request;
}

} // namespace

AgentCLIAction parseOptimize(WordList& words, const CurrentDirectory& currentDirectory) {
    return post("/v1/optimize", takeFileWork(words, currentDirectory, "optimize"));
}

AgentCLIAction parseCheck(WordList& words, const CurrentDirectory& currentDirectory) {
    return post("/v1/check", takeFileWork(words, currentDirectory, "check"));
}

} // namespace fernlow

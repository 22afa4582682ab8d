#include "commands/command_line.h"
#include "commands/encode.h"
#include "commands/families.h"
#include "commands/options.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fernlow {

enum class AgentProcessMode {
    /// As if the files had just been saved: files that depend on them are compiled too.
    asIfSaved,
    /// Only the named files.
    exactly,
};
template <>
inline constexpr auto wireNames<AgentProcessMode> =
    std::to_array<std::string_view>({"asIfSaved", "exactly"});

/// In ascending order, for use as a minimum.
enum class AgentLogSeverity { success, warning, error };
template <>
inline constexpr auto wireNames<AgentLogSeverity> =
    std::to_array<std::string_view>({"success", "warning", "error"});

namespace {

using namespace options;
using namespace operands;

constexpr Flag exactly{"--exactly", "Precisely these files; rarely right"};

struct AgentProcessRequest {
    std::vector<std::string> paths;
    AgentProcessMode mode = AgentProcessMode::asIfSaved;
    bool wait = true;
    std::int64_t settleMilliseconds = settle.defaultValue();
    double timeoutSeconds = timeout.defaultValue();
    FERNLOW_WIRE_FIELDS(paths, mode, wait, settleMilliseconds, timeoutSeconds)
};

AgentCLIAction parseProcess(CommandLine& line) {
    AgentProcessRequest request;
    request.mode = line.has(exactly) ? AgentProcessMode::exactly : AgentProcessMode::asIfSaved;
    request.wait = !line.has(noWait);
    request.settleMilliseconds = line.valueOrDefault(settle);
    request.timeoutSeconds = line.valueOrDefault(timeout);
    request.paths = line.takeRequiredPaths();
    return post("/v1/process", request);
}

constexpr Path onlyProject{
    "--project", {ValueKind::project, "path", "every project"}, "Only this project"};
constexpr Cursor since{"--since", "Only what happened after this log cursor"};

struct AgentWaitRequest {
    std::optional<std::string> projectPath;
    std::optional<std::uint64_t> since;
    std::int64_t settleMilliseconds = settle.defaultValue();
    double timeoutSeconds = timeout.defaultValue();
    FERNLOW_WIRE_FIELDS(projectPath, since, settleMilliseconds, timeoutSeconds)
};

AgentCLIAction parseWait(CommandLine& line) {
    AgentWaitRequest request;
    request.projectPath = line.optionalPath(onlyProject);
    request.since = line.optionalValue(since);
    request.settleMilliseconds = line.valueOrDefault(settle);
    request.timeoutSeconds = line.valueOrDefault(timeout);
    line.rejectLeftoverWords();
    return post("/v1/wait", request);
}

constexpr auto logSince = describedAs(since, since.summary, "0, the oldest entries");
// The log also has entries of projects that no longer exist, so the path is sent as typed.
constexpr auto projectAsTyped = onlyProject.asTyped();
constexpr Flag errorsOnly{"--errors-only", "Only errors"};

struct AgentLogQuery {
    std::uint64_t since = 0;
    std::int64_t limit = 0;
    std::optional<std::string> projectPath;
    std::optional<AgentLogSeverity> minimumSeverity;
    FERNLOW_WIRE_FIELDS(since, limit, projectPath, minimumSeverity)
};

AgentCLIAction parseLog(CommandLine& line) {
    AgentLogQuery query;
    query.since = line.optionalValue(logSince).value_or(query.since);
    query.limit = line.valueOrDefault(limit);
    query.projectPath = line.optionalValue(projectAsTyped);
    if (line.has(errorsOnly)) {
        query.minimumSeverity = AgentLogSeverity::error;
    }
    line.rejectLeftoverWords();
    return post("/v1/log", query);
}

constexpr Flag clean{"--clean", "Empty the Build Folder first, this once"};

struct AgentBuildRequest {
    std::string path;
    /// Absent means the project's own setting.
    std::optional<bool> clean;
    bool wait = true;
    double timeoutSeconds = timeout.defaultValue();
    FERNLOW_WIRE_FIELDS(path, clean, wait, timeoutSeconds)
};

AgentCLIAction parseBuild(CommandLine& line) {
    AgentBuildRequest request;
    if (line.has(clean)) {
        request.clean = true;
    }
    request.wait = !line.has(noWait);
    request.timeoutSeconds = line.valueOrDefault(timeout);
    request.path = line.takePathOrCurrentDirectory();
    return post("/v1/build", request);
}

constexpr Flag everyProject{"--all", "Every project"};

struct AgentRefreshRequest {
    /// Absent means every project.
    std::optional<std::string> path;
    bool wait = true;
    std::int64_t settleMilliseconds = settle.defaultValue();
    double timeoutSeconds = timeout.defaultValue();
    FERNLOW_WIRE_FIELDS(path, wait, settleMilliseconds, timeoutSeconds)
};

AgentCLIAction parseRefresh(CommandLine& line) {
    AgentRefreshRequest request;
    request.wait = !line.has(noWait);
    request.timeoutSeconds = line.valueOrDefault(timeout);
    if (line.has(everyProject)) {
        // Ignores paths, but reports unknown options.
        line.takeRemainingWords();
    } else {
        request.path = line.takePathOrCurrentDirectory();
    }
    return post("/v1/refresh", request);
}

/// The body of "optimize", and of "check", whose AgentSyntaxCheckRequest has the same four fields.
struct AgentOptimizeRequest {
    std::vector<std::string> paths;
    bool wait = true;
    std::int64_t settleMilliseconds = settle.defaultValue();
    double timeoutSeconds = timeout.defaultValue();
    FERNLOW_WIRE_FIELDS(paths, wait, settleMilliseconds, timeoutSeconds)
};

AgentOptimizeRequest takeFilesRequest(CommandLine& line) {
    AgentOptimizeRequest request;
    request.wait = !line.has(noWait);
    request.timeoutSeconds = line.valueOrDefault(timeout);
    request.paths = line.takeRequiredPaths();
    return request;
}

AgentCLIAction parseOptimize(CommandLine& line) {
    return post("/v1/optimize", takeFilesRequest(line));
}

AgentCLIAction parseCheck(CommandLine& line) {
    return post("/v1/check", takeFilesRequest(line));
}

constexpr Operand sources{.value = {ValueKind::file, "path"}, .isRequired = true, .repeats = true};
constexpr Operand images{.value = {ValueKind::file, "image"}, .isRequired = true, .repeats = true};
constexpr Operand scripts{.value = {ValueKind::file, "file"}, .isRequired = true, .repeats = true};

constexpr auto commands = std::to_array<Command>({
    {.word = "process",
     .summary = "Compile files, as though they had just been saved",
     .operands = operandList<sources>,
     .options = optionList<exactly, noWait, settle, timeout>,
     .parse = parseProcess},
    {.word = "wait",
     .summary = "Wait until nothing is happening",
     .options = optionList<onlyProject, since, settle, timeout>,
     .parse = parseWait},
    {.word = "log",
     .summary = "Read the log from a cursor",
     .options = optionList<logSince, limit, projectAsTyped, errorsOnly>,
     .parse = parseLog},
    {.word = "build",
     .summary = "Build a whole project; rarely needed",
     .operands = operandList<anyProject>,
     .options = optionList<clean, noWait, timeout>,
     .parse = parseBuild},
    {.word = "optimize",
     .summary = "Optimise images in place",
     .operands = operandList<images>,
     .options = optionList<noWait, timeout>,
     .parse = parseOptimize},
    {.word = "check",
     .summary = "Check the syntax of Javascript",
     .operands = operandList<scripts>,
     .options = optionList<noWait, timeout>,
     .parse = parseCheck},
    {.word = "refresh",
     .summary = "Re-read projects from disk",
     .operands = operandList<anyProject>,
     .options = optionList<everyProject, noWait, timeout>,
     .parse = parseRefresh},
});

} // namespace

std::span<const Command> workCommands() {
    return commands;
}

} // namespace fernlow

#pragma once

#include "commands/encode.h"
#include "commands/ranges.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The commands that make the application compile, build, re-read, optimise or check files, and
/// that ask it what has happened.
namespace fernlow {

enum class AgentProcessMode {
    /// As though the files had just been saved: whatever depends on them is rebuilt too.
    asIfSaved,
    /// Precisely the named files.
    exactly,
};
template <>
inline constexpr auto wireWords<AgentProcessMode> =
    std::to_array<std::string_view>({"asIfSaved", "exactly"});

/// In ascending order: as a minimum, a case stands for itself and every later one.
enum class AgentLogSeverity { success, warning, error };
template <>
inline constexpr auto wireWords<AgentLogSeverity> =
    std::to_array<std::string_view>({"success", "warning", "error"});

struct AgentProcessRequest {
    std::vector<std::string> paths;
    AgentProcessMode mode = AgentProcessMode::asIfSaved;
    bool wait = true;
    std::int64_t settleMilliseconds = defaultSettleMilliseconds;
    double timeoutSeconds = defaultTimeoutSeconds;
    FERNLOW_WIRE_RECORD(AgentProcessRequest, paths, mode, wait, settleMilliseconds, timeoutSeconds)
};

struct AgentWaitRequest {
    std::optional<std::string> projectPath;
    std::optional<std::uint64_t> since;
    std::int64_t settleMilliseconds = defaultSettleMilliseconds;
    double timeoutSeconds = defaultTimeoutSeconds;
    FERNLOW_WIRE_RECORD(AgentWaitRequest, projectPath, since, settleMilliseconds, timeoutSeconds)
};

struct AgentLogQuery {
    std::uint64_t since = 0;
    std::int64_t limit = 0;
    std::optional<std::string> projectPath;
    std::optional<AgentLogSeverity> minimumSeverity;
    FERNLOW_WIRE_RECORD(AgentLogQuery, since, limit, projectPath, minimumSeverity)
};

struct AgentBuildRequest {
    std::string path;
    /// Absent leaves the project's own setting in force.
    std::optional<bool> clean;
    bool wait = true;
    double timeoutSeconds = defaultTimeoutSeconds;
    FERNLOW_WIRE_RECORD(AgentBuildRequest, path, clean, wait, timeoutSeconds)
};

struct AgentRefreshRequest {
    /// Absent means every project.
    std::optional<std::string> path;
    bool wait = true;
    std::int64_t settleMilliseconds = defaultSettleMilliseconds;
    double timeoutSeconds = defaultTimeoutSeconds;
    FERNLOW_WIRE_RECORD(AgentRefreshRequest, path, wait, settleMilliseconds, timeoutSeconds)
};

struct AgentOptimizeRequest {
    std::vector<std::string> paths;
    bool wait = true;
    std::int64_t settleMilliseconds = defaultSettleMilliseconds;
    double timeoutSeconds = defaultTimeoutSeconds;
    FERNLOW_WIRE_RECORD(AgentOptimizeRequest, paths, wait, settleMilliseconds, timeoutSeconds)
};

/// The same four fields, for "check".
using AgentSyntaxCheckRequest = AgentOptimizeRequest;

AgentCLIAction parseProcess(WordList& words, const CurrentDirectory& currentDirectory);
AgentCLIAction parseWait(WordList& words, const CurrentDirectory& currentDirectory);
AgentCLIAction parseLog(WordList& words, const CurrentDirectory& currentDirectory);
AgentCLIAction parseBuild(WordList& words, const CurrentDirectory& currentDirectory);
AgentCLIAction parseRefresh(WordList& words, const CurrentDirectory& currentDirectory);
AgentCLIAction parseOptimize(WordList& words, const CurrentDirectory& currentDirectory);
AgentCLIAction parseCheck(WordList& words, const CurrentDirectory& currentDirectory);

} // namespace fernlow

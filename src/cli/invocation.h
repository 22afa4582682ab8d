#pragma once

#include "commands/action.h"
#include "commands/paths.h"

#include <string>
#include <vector>

namespace fernlow {

/// A parsed command line.
struct AgentCLIInvocation {
    AgentCLIAction action;
    /// Whether to print the reply as JSON. The default is true unless standard output is a
    /// terminal.
    bool wantsJSON = false;
    /// The path of the socket, as typed or the default. Empty if no request is sent and no path was
    /// typed.
    std::string socketPath;
    /// Whether to start the application if it is not running.
    bool launchIfNeeded = true;

    bool operator==(const AgentCLIInvocation&) const = default;
};

/// Parses a command line: the arguments after the program's name. The options --json, --no-launch
/// and --socket may stand anywhere. Throws AgentCLIUsageError, or json::EncodingError or
/// CurrentDirectoryError if the request cannot be built.
AgentCLIInvocation parseInvocation(const std::vector<std::string>& arguments,
                                   const CurrentDirectory& currentDirectory,
                                   bool standardOutputIsTerminal);

} // namespace fernlow

#pragma once

#include "commands/action.h"
#include "commands/paths.h"

#include <string>
#include <vector>

namespace fernlow {

/// A parsed command line.
struct AgentCLIInvocation {
    AgentCLIAction action;
    /// Print the reply as JSON; the default where standard output is not a terminal.
    bool wantsJSON = false;
    /// The socket to use, as typed or the usual one. Empty where nothing is to be sent and none was
    /// typed.
    std::string socketPath;
    /// Whether the application may be started when nobody listens.
    bool launchIfNeeded = true;

    bool operator==(const AgentCLIInvocation&) const = default;
};

/// Understands a command line: the arguments after the program's name. The options --json,
/// --no-launch and --socket may stand anywhere. Throws AgentCLIUsageError, or json::EncodingError
/// or CurrentDirectoryError when the request cannot be built.
AgentCLIInvocation parseInvocation(const std::vector<std::string>& arguments,
                                   const CurrentDirectory& currentDirectory,
                                   bool standardOutputIsTerminal);

} // namespace fernlow

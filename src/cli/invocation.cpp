#include "cli/invocation.h"

#include "commands/command_line.h"
#include "commands/global_options.h"
#include "commands/options.h"
#include "commands/usage_error.h"
#include "transport/socket_location.h"

#include <utility>

namespace fernlow {

AgentCLIInvocation parseInvocation(const std::vector<std::string>& arguments,
                                   const CurrentDirectory& currentDirectory,
                                   bool standardOutputIsTerminal) {
    std::vector<std::string> words = arguments;
    GlobalOptions globals;
    globals.take(words);
    if (globals.lacksSocketPath()) {
        throw AgentCLIUsageError(
            AgentCLIUsageError::missingValue{std::string(options::socket.word)});
    }
    AgentCLIInvocation invocation;
    invocation.wantsJSON = !standardOutputIsTerminal || globals.has(options::json);
    invocation.launchIfNeeded = !globals.has(options::noLaunch);
    invocation.action = parseCommand(std::move(words), currentDirectory);
    // Finding the default takes longer than the rest of this function, so skip it if it is not
    // used.
    if (const std::string* const socketPath = globals.socketPath()) {
        invocation.socketPath = *socketPath;
    } else if (invocation.action.isSent()) {
        invocation.socketPath = defaultSocketPath();
    }
    return invocation;
}

} // namespace fernlow

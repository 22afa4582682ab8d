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
    if (globals.lackSocketPath()) {
        throw AgentCLIUsageError(
            AgentCLIUsageError::missingValue{std::string(options::socket.word)});
    }
    AgentCLIInvocation invocation;
    invocation.wantsJSON = !standardOutputIsTerminal || globals.has(options::json);
    invocation.launchIfNeeded = !globals.has(options::noLaunch);
    // Asking the user database costs more than all the rest, so only where the answer is used.
    const std::string* const socketPath = globals.socketPath();
    invocation.socketPath = socketPath != nullptr ? *socketPath : defaultSocketPath();
    invocation.action = parseCommand(std::move(words), currentDirectory);
    return invocation;
}

} // namespace fernlow

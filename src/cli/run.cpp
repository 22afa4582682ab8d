#include "cli/run.h"

#include "cli/help_text.h"
#include "cli/invocation.h"
#include "commands/action.h"
#include "render/reply.h"
#include "terminal/output.h"
#include "transport/socket_client.h"

#include <exception>
#include <new>
#include <string_view>
#include <utility>
#include <variant>

namespace fernlow {

namespace {

constexpr std::string_view version = FERNLOW_VERSION;

/// Either writeTextLine or, for JSON, writeLine. JSON is written unchanged even to a terminal.
using Writer = bool (*)(int descriptor, std::string_view text);

void writeStandardError(const RunEnvironment& environment, std::string_view text,
                        Writer write = writeTextLine) {
    // There is no other place to report a failure.
    static_cast<void>(write(environment.standardError, text));
}

void printError(const RunEnvironment& environment, const std::exception& error) {
    const bool isOutOfMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
    try {
        writeStandardError(environment, isOutOfMemory ? outOfMemoryMessage : error.what());
    } catch (const std::bad_alloc&) {
        writeStandardError(environment, outOfMemoryMessage);
    }
}

/// Writes the text to standard output. Returns the given exit status, or 1 instead of 0 if the text
/// could not be written.
int writeResult(const RunEnvironment& environment, std::string_view text, int status,
                Writer write = writeTextLine) {
    if (write(environment.standardOutput, text)) {
        return status;
    }
    writeStandardError(environment, "Fernlow's answer could not be written to standard output.");
    return status == 0 ? 1 : status;
}

int performRequest(const AgentCLIInvocation& invocation, const AgentRequest& request,
                   const RunEnvironment& environment) {
    const AgentSocketClient client(environment.exchange);
    AgentReply reply = client.exchange(invocation.socketPath, invocation.launchIfNeeded, request);
    ReplyOutput output =
        presentReply(reply.statusCode, std::move(reply.body), invocation.wantsJSON);
    const Writer write = invocation.wantsJSON ? writeLine : writeTextLine;
    if (output.toStandardError) {
        writeStandardError(environment, output.text.view(), write);
        return output.exitStatus;
    }
    const int status = writeResult(environment, output.text.view(), output.exitStatus, write);
    if (environment.writtenText != nullptr) {
        *environment.writtenText = std::move(output.text);
    }
    return status;
}

int perform(const AgentCLIInvocation& invocation, const RunEnvironment& environment) {
    struct {
        const AgentCLIInvocation& invocation;
        const RunEnvironment& environment;

        int operator()(const AgentCLIAction::help& /*help*/) const {
            return writeResult(environment, usageText(), 0);
        }
        int operator()(const AgentCLIAction::version& /*version*/) const {
            return writeResult(environment, version, 0);
        }
        int operator()(const AgentCLIAction::get& get) const {
            return performRequest(invocation, {"GET", get.path, {}}, environment);
        }
        int operator()(const AgentCLIAction::post& post) const {
            return performRequest(invocation, {"POST", post.path, post.body}, environment);
        }
    } const performer{invocation, environment};
    return std::visit(performer, invocation.action.kind);
}

} // namespace

int runAgentCLI(const std::vector<std::string>& arguments, const CurrentDirectory& currentDirectory,
                bool standardOutputIsTerminal, const RunEnvironment& environment) {
    AgentCLIInvocation invocation;
    try {
        invocation = parseInvocation(arguments, currentDirectory, standardOutputIsTerminal);
    } catch (const std::exception& error) {
        printError(environment, error);
        return badArgumentsStatus;
    }
    try {
        return perform(invocation, environment);
    } catch (const std::exception& error) {
        printError(environment, error);
        return unreachableStatus;
    }
}

} // namespace fernlow

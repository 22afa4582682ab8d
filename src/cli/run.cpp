#include "cli/run.h"

#include "cli/help_text.h"
#include "cli/invocation.h"
#include "cli/output.h"
#include "commands/action.h"
#include "render/reply.h"
#include "transport/socket_client.h"

#include <exception>
#include <new>
#include <string_view>
#include <utility>
#include <variant>

namespace fernlow {

namespace {

constexpr std::string_view version = FERNLOW_VERSION;

/// JSON goes out as it is, whoever reads it.
using Writer = bool (*)(int descriptor, std::string_view text);

void writeStandardError(const RunSurroundings& surroundings, std::string_view text,
                        Writer write = writeTextLine) {
    // There is nobody left to tell when this fails.
    static_cast<void>(write(surroundings.standardError, text));
}

void report(const RunSurroundings& surroundings, const std::exception& error) {
    const bool isOutOfMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
    try {
        writeStandardError(surroundings, isOutOfMemory ? outOfMemory : error.what());
    } catch (const std::bad_alloc&) {
        writeStandardError(surroundings, outOfMemory);
    }
}

/// Writes the text and gives the status, which is never success when the text was lost.
int finish(const RunSurroundings& surroundings, std::string_view text, int status,
           Writer write = writeTextLine) {
    if (write(surroundings.standardOutput, text)) {
        return status;
    }
    writeStandardError(surroundings, "Fernlow's answer could not be written to standard output.");
    return status == 0 ? 1 : status;
}

int performRequest(const AgentCLIInvocation& invocation, const AgentRequest& request,
                   const RunSurroundings& surroundings) {
    const AgentSocketClient client(surroundings.launch);
    AgentReply reply = client.exchange(invocation.socketPath, invocation.launchIfNeeded, request);
    const ReplyOutput output =
        presentReply(reply.statusCode, std::move(reply.body), invocation.wantsJSON);
    const Writer write = invocation.wantsJSON ? writeLine : writeTextLine;
    if (output.toStandardError) {
        writeStandardError(surroundings, output.text.view(), write);
        return output.exitStatus;
    }
    return finish(surroundings, output.text.view(), output.exitStatus, write);
}

int perform(const AgentCLIInvocation& invocation, const RunSurroundings& surroundings) {
    struct {
        const AgentCLIInvocation& invocation;
        const RunSurroundings& surroundings;

        int operator()(const AgentCLIAction::help& /*help*/) const {
            return finish(surroundings, usageText(), 0);
        }
        int operator()(const AgentCLIAction::version& /*version*/) const {
            return finish(surroundings, version, 0);
        }
        int operator()(const AgentCLIAction::get& get) const {
            return performRequest(invocation, {"GET", get.path, {}}, surroundings);
        }
        int operator()(const AgentCLIAction::post& post) const {
            return performRequest(invocation, {"POST", post.path, post.body}, surroundings);
        }
    } const performer{invocation, surroundings};
    return std::visit(performer, invocation.action.kind);
}

} // namespace

int runAgentCLI(const std::vector<std::string>& arguments, const CurrentDirectory& currentDirectory,
                bool standardOutputIsTerminal, const RunSurroundings& surroundings) {
    AgentCLIInvocation invocation;
    try {
        invocation = parseInvocation(arguments, currentDirectory, standardOutputIsTerminal);
    } catch (const std::exception& error) {
        report(surroundings, error);
        return badArguments;
    }
    try {
        return perform(invocation, surroundings);
    } catch (const std::exception& error) {
        report(surroundings, error);
        return notReached;
    }
}

} // namespace fernlow

#include "transport/socket_client.h"

#include "platform/platform.h"
#include "transport/connection.h"
#include "transport/socket_client_error.h"
#include "transport/socket_location.h"

#include <cstddef>
#include <thread>
#include <utility>
#include <variant>

namespace fernlow {

namespace {

/// No reply comes near it. A peer that never stops sending is stopped here, before it has used up
/// the machine.
constexpr std::size_t maxReplySize = std::size_t{256} * 1024 * 1024;

constexpr std::chrono::seconds probeTimeout{30};

AgentReply attempt(const std::string& socketPath, const AgentRequest& request) {
    ByteBuffer bytes;
    {
        const Connection connection(socketPath, replyTimeout(request.body));
        connection.send(requestBytes(request));
        bytes = connection.receive(maxReplySize);
    }
    return parseReply(std::move(bytes));
}

bool somebodyListens(const std::string& socketPath) {
    try {
        const Connection probe(socketPath, probeTimeout);
        return true;
    } catch (const AgentSocketClientError&) {
        return false;
    }
}

/// Has the system start the application in the background, and waits until its socket accepts a
/// connection or timeout runs out. Never fails: whoever connects next finds out.
void launchApplication(const std::string& socketPath, const LaunchSettings& settings) {
    platform::runProgram(settings.program, {"-g", "-b", applicationBundleIdentifier});
    const auto deadline = std::chrono::steady_clock::now() + settings.timeout;
    while (std::chrono::steady_clock::now() < deadline && !somebodyListens(socketPath)) {
        std::this_thread::sleep_for(settings.pollInterval);
    }
}

} // namespace

AgentReply AgentSocketClient::exchange(const std::string& socketPath, bool launchIfNeeded,
                                       const AgentRequest& request) const {
    try {
        return attempt(socketPath, request);
    } catch (const AgentSocketClientError& error) {
        if (!launchIfNeeded ||
            !std::holds_alternative<AgentSocketClientError::notRunning>(error.kind())) {
            throw;
        }
    }
    launchApplication(socketPath, launch_);
    return attempt(socketPath, request);
}

} // namespace fernlow

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

/// The maximum size of a reply in bytes, so that a peer that never stops sending cannot use up the
/// memory. Real replies are much smaller.
constexpr std::size_t maxReplySize = std::size_t{256} * 1024 * 1024;

constexpr std::chrono::seconds probeTimeout{30};

AgentReply attempt(const std::string& socketPath, const AgentRequest& request,
                   std::chrono::milliseconds minTimeout) {
    ByteBuffer bytes;
    {
        const Connection connection(socketPath, replyTimeout(request.body, minTimeout));
        connection.send(requestBytes(request));
        bytes = connection.receive(maxReplySize);
    }
    return parseReply(std::move(bytes));
}

bool acceptsConnections(const std::string& socketPath) {
    try {
        const Connection probe(socketPath, probeTimeout);
        return true;
    } catch (const AgentSocketClientError&) {
        return false;
    }
}

/// Asks the system to start the application in the background. Waits until its socket accepts a
/// connection or the launch timeout expires. Does not report a failure, because the next attempt to
/// connect will fail too.
void launchApplication(const std::string& socketPath, const ExchangeSettings& settings) {
    platform::runProgram(settings.launchProgram, {"-g", "-b", applicationBundleIdentifier});
    const auto deadline = std::chrono::steady_clock::now() + settings.launchTimeout;
    while (std::chrono::steady_clock::now() < deadline && !acceptsConnections(socketPath)) {
        std::this_thread::sleep_for(settings.pollInterval);
    }
}

} // namespace

AgentReply AgentSocketClient::exchange(const std::string& socketPath, bool launchIfNeeded,
                                       const AgentRequest& request) const {
    if (!launchIfNeeded) {
        return attempt(socketPath, request, settings_.minReplyTimeout);
    }
    try {
        return attempt(socketPath, request, settings_.minReplyTimeout);
    } catch (const AgentSocketClientError& error) {
        if (!std::holds_alternative<AgentSocketClientError::notRunning>(error.kind())) {
            throw;
        }
    }
    launchApplication(socketPath, settings_);
    return attempt(socketPath, request, settings_.minReplyTimeout);
}

} // namespace fernlow

#include "transport/socket_client.h"

#include "platform/platform.h"
#include "transport/socket_client_error.h"
#include "transport/socket_location.h"

#include <algorithm>
#include <cstdint>
#include <thread>
#include <variant>

namespace fernlow {

namespace {

/// No reply comes near it. A peer that never stops sending is stopped here, before it has used up
/// the machine.
constexpr std::size_t longestReply = std::size_t{256} * 1024 * 1024;

bool somebodyListens(const std::string& socketPath) {
    try {
        const Connection connection(socketPath, patienceFor(0));
        return true;
    } catch (const AgentSocketClientError&) {
        return false;
    }
}

} // namespace

Patience patienceFor(double replyTimeoutSeconds) {
    // Thirty years: no machine waits longer, and systems count further in units that overflow.
    constexpr double longest = 1e9;
    const auto seconds =
        static_cast<std::int64_t>(std::clamp(replyTimeoutSeconds + 30, 5.0, longest));
    return Patience::forEach(std::chrono::seconds(seconds));
}

AgentReply exchangeOnce(const std::string& socketPath, const AgentRequest& request,
                        const Patience& patience, std::size_t longest) {
    ByteBuffer bytes;
    {
        Connection connection(socketPath, patience);
        connection.write(requestBytes(request));
        bytes = connection.readToEnd(longest);
    }
    return parseReply(std::move(bytes));
}

AgentReply AgentSocketClient::exchange(const std::string& socketPath, bool launchIfNeeded,
                                       const AgentRequest& request) const {
    const Patience patience = patienceFor(replyTimeoutSeconds(request.body));
    try {
        return exchangeOnce(socketPath, request, patience, longestReply);
    } catch (const AgentSocketClientError& error) {
        if (!launchIfNeeded ||
            !std::holds_alternative<AgentSocketClientError::notRunning>(error.kind())) {
            throw;
        }
    }
    launchApplication(socketPath);
    return exchangeOnce(socketPath, request, patience, longestReply);
}

/// Has the system start the application in the background, and waits until its socket accepts a
/// connection or patience runs out. Never fails: whoever connects next finds out.
void AgentSocketClient::launchApplication(const std::string& socketPath) const {
    platform::runProgram(launch_.program, {"-g", "-b", applicationBundleIdentifier});
    const auto deadline = std::chrono::steady_clock::now() + launch_.patience;
    while (std::chrono::steady_clock::now() < deadline && !somebodyListens(socketPath)) {
        std::this_thread::sleep_for(launch_.pollInterval);
    }
}

} // namespace fernlow

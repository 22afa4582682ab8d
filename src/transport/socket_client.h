#pragma once

#include "transport/http.h"

#include <chrono>
#include <string>
#include <utility>

namespace fernlow {

/// How the application is started.
struct LaunchSettings {
    /// Run as `program -g -b <bundle identifier>`.
    std::string program = "/usr/bin/open";
    std::chrono::milliseconds pollInterval{200};
    /// How long to wait for the application to listen, once the program has ended.
    std::chrono::milliseconds timeout{25000};
};

/// Carries one request to the application and brings one reply back, over its Unix-domain socket.
class AgentSocketClient {
public:
    explicit AgentSocketClient(LaunchSettings launch) : launch_(std::move(launch)) {}

    /// Sends the request and reads until the application closes the connection, each write and each
    /// read no longer than the request's replyTimeout(). When nobody listens and `launchIfNeeded`,
    /// starts the application and tries once more. Throws AgentSocketClientError.
    [[nodiscard]] AgentReply exchange(const std::string& socketPath, bool launchIfNeeded,
                                      const AgentRequest& request) const;

private:
    LaunchSettings launch_;
};

} // namespace fernlow

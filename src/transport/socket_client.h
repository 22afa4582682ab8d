#pragma once

#include "transport/connection.h"
#include "transport/http.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>

namespace fernlow {

/// How the application is started.
struct LaunchSettings {
    /// Run as `program -g -b <bundle identifier>`.
    std::string program = "/usr/bin/open";
    std::chrono::milliseconds pollInterval{200};
    /// How long to wait for the application to listen, once the program has ended.
    std::chrono::milliseconds patience{25000};
};

/// Sends the request over a connection of its own and reads until the application closes it. Throws
/// AgentSocketClientError; a reply longer than `longestReply` bytes is a `malformedResponse`.
AgentReply exchangeOnce(const std::string& socketPath, const AgentRequest& request,
                        const Patience& patience, std::size_t longestReply);

/// How long connecting, and each read and write, may take for a request that the application has
/// this many seconds to answer: 30 more, at least 5.
Patience patienceFor(double replyTimeoutSeconds);

/// Carries one request to the application and brings one reply back, over its Unix-domain socket.
class AgentSocketClient {
public:
    explicit AgentSocketClient(LaunchSettings launch) : launch_(std::move(launch)) {}

    /// exchangeOnce() with the patience that the request asks for. When nobody listens and
    /// `launchIfNeeded`, starts the application and tries once more.
    [[nodiscard]] AgentReply exchange(const std::string& socketPath, bool launchIfNeeded,
                                      const AgentRequest& request) const;

private:
    void launchApplication(const std::string& socketPath) const;

    LaunchSettings launch_;
};

} // namespace fernlow

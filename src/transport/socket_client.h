#pragma once

#include "transport/http.h"

#include <chrono>
#include <string>
#include <utility>

namespace fernlow {

/// How AgentSocketClient starts the application and how long it waits. Tests set shorter times.
struct ExchangeSettings {
    /// Starts the application. It is run as `program -g -b <bundle identifier>`.
    std::string launchProgram = "/usr/bin/open";
    /// The pause between two attempts to connect to the starting application.
    std::chrono::milliseconds pollInterval{200};
    /// How long to wait, after the launch program has ended, until the application listens.
    std::chrono::milliseconds launchTimeout{25000};
    /// The lower limit of the timeout for a reply; see replyTimeout().
    std::chrono::milliseconds minReplyTimeout{fernlow::minReplyTimeout};
};

/// Sends a request to the application over its Unix-domain socket and receives the reply.
class AgentSocketClient {
public:
    explicit AgentSocketClient(ExchangeSettings settings) : settings_(std::move(settings)) {}

    /// Sends the request and reads the reply until the application closes the connection. Each
    /// write and each read may take as long as replyTimeout() of the request's body. If nothing
    /// listens on the socket and `launchIfNeeded` is set, starts the application and tries once
    /// more. Throws AgentSocketClientError.
    [[nodiscard]] AgentReply exchange(const std::string& socketPath, bool launchIfNeeded,
                                      const AgentRequest& request) const;

private:
    ExchangeSettings settings_;
};

} // namespace fernlow

#pragma once

#include "transport/http.h"
#include "transport/launcher.h"

#include <chrono>
#include <string>
#include <utility>

namespace fernlow {

/// An open socket, closed when it goes.
class SocketDescriptor {
public:
    explicit SocketDescriptor(int descriptor) : descriptor_(descriptor) {}
    SocketDescriptor(SocketDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)) {}
    SocketDescriptor& operator=(SocketDescriptor&&) = delete;
    SocketDescriptor(const SocketDescriptor&) = delete;
    SocketDescriptor& operator=(const SocketDescriptor&) = delete;
    ~SocketDescriptor();

    [[nodiscard]] int get() const { return descriptor_; }

private:
    int descriptor_;
};

/// Carries one request to the application and brings one reply back, over its Unix-domain socket.
/// Everything blocks, each read and write no longer than the reply timeout and 30 seconds.
class AgentSocketClient {
public:
    explicit AgentSocketClient(LaunchSettings launch) : launch_(std::move(launch)) {}

    /// Sends the request and reads until the application closes the connection. When nobody
    /// listens and `launchIfNeeded`, starts the application and tries once more. Throws
    /// AgentSocketClientError. The path is UTF-8 and used as it is.
    [[nodiscard]] AgentReply exchange(const std::string& socketPath, bool launchIfNeeded,
                                      const AgentRequest& request) const;

    /// A connected socket whose reads and writes give up after the timeout and 30 seconds, but not
    /// before 5. Throws AgentSocketClientError `pathTooLong` or `notRunning`.
    static SocketDescriptor connect(const std::string& socketPath, double replyTimeoutSeconds);

    /// The same, but each of connecting, reading and writing gives up after `patience`.
    static SocketDescriptor connect(const std::string& socketPath,
                                    std::chrono::microseconds patience);

private:
    LaunchSettings launch_;
};

} // namespace fernlow

#pragma once

#include "bytes/byte_buffer.h"

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace fernlow {

/// How long the other side is waited for: so long each time something is waited for, or until a
/// moment for everything together.
using Timeout = std::variant<std::chrono::seconds, std::chrono::steady_clock::time_point>;

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

/// A connection to whoever listens on a Unix-domain socket. Connecting, each write and each read is
/// waited for with timeout. Being stopped and continued meanwhile (Ctrl-Z and `fg`) interrupts
/// none of them: the clock goes on, but what has come when the process is continued is taken.
class Connection {
public:
    /// The path is UTF-8 and used as it is. Throws AgentSocketClientError `pathTooLong` or
    /// `notRunning`.
    Connection(const std::string& socketPath, Timeout timeout);

    /// Writes all of the bytes. Throws AgentSocketClientError `writeFailed`.
    void send(std::string_view bytes) const;

    /// Reads until the other side closes the connection. Throws AgentSocketClientError
    /// `readFailed`, or `malformedResponse` where more than `longest` bytes come.
    [[nodiscard]] ByteBuffer receive(std::size_t longest) const;

private:
    template <class Transfer>
    [[nodiscard]] ssize_t retryUntilReady(short event, Transfer transfer) const;

    Timeout timeout_;
    SocketDescriptor socket_;
};

} // namespace fernlow

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

/// A timeout for each wait, or one deadline for all waits of an exchange.
using Timeout = std::variant<std::chrono::milliseconds, std::chrono::steady_clock::time_point>;

/// Owns the descriptor of a socket and closes it. A negative descriptor stands for no socket.
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

/// A connection to the program that listens on a Unix-domain socket. The timeout limits the wait
/// for the connection, for each write and for each read.
///
/// Stopping and continuing the process (Ctrl-Z and `fg`) makes none of these waits fail. A timeout
/// may expire while the process is stopped, but data that has arrived by then is still read.
class Connection {
public:
    /// Connects to the socket at a path, which is used unchanged. Throws AgentSocketClientError
    /// `pathTooLong` or `notRunning`.
    Connection(const std::string& socketPath, Timeout timeout);

    /// Writes all of the bytes. Throws AgentSocketClientError `writeFailed`.
    void send(std::string_view bytes) const;

    /// Reads until the other side closes the connection. Throws AgentSocketClientError
    /// `readFailed`, or `malformedResponse` if more than `maxSize` bytes arrive.
    [[nodiscard]] ByteBuffer receive(std::size_t maxSize) const;

private:
    /// Calls a read or write function again whenever the socket is ready, until the call does not
    /// fail with EAGAIN. Returns its result, or a negative number if the timeout expires.
    template <class Transfer>
    [[nodiscard]] ssize_t retryUntilReady(short event, Transfer transfer) const;

    Timeout timeout_;
    SocketDescriptor socket_;
};

} // namespace fernlow

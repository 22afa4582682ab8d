#pragma once

#include "bytes/byte_buffer.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace fernlow {

/// How long a peer is waited for. A process that is stopped and continued goes on waiting; what has
/// come in the meantime is taken, however long that was.
class Patience {
public:
    using Clock = std::chrono::steady_clock;

    /// Connecting, and each read and write, may take this long.
    static Patience forEach(std::chrono::seconds wait) { return {wait, Clock::time_point::max()}; }

    /// All of it together may take until then.
    static Patience until(Clock::time_point deadline) {
        return {Clock::duration::max(), deadline};
    }

    /// When a wait that begins now is over.
    [[nodiscard]] Clock::time_point deadline() const;

private:
    Patience(Clock::duration wait, Clock::time_point deadline)
        : wait_(wait), deadline_(deadline) {}

    Clock::duration wait_;
    Clock::time_point deadline_;
};

/// A connection to whoever listens at a Unix-domain socket, closed when it goes.
class Connection {
public:
    /// The path is UTF-8 and used as it is. Throws AgentSocketClientError `pathTooLong` or
    /// `notRunning`.
    Connection(const std::string& socketPath, const Patience& patience);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    Connection(Connection&&) = delete;
    Connection& operator=(Connection&&) = delete;
    ~Connection();

    /// Throws `writeFailed` when the peer has gone, or takes nothing for too long.
    void write(std::string_view bytes);

    /// All that comes until the peer closes. Throws `readFailed`; `malformedResponse` when it is
    /// more than `longest` bytes.
    ByteBuffer readToEnd(std::size_t longest);

private:
    void connect(const std::string& socketPath);
    [[nodiscard]] bool waitFor(short event) const;

    int descriptor_;
    Patience patience_;
};

} // namespace fernlow

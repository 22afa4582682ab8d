#include "transport/connection.h"

#include "platform/platform.h"
#include "transport/socket_client_error.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

namespace fernlow {

namespace {

using Clock = Patience::Clock;
using std::chrono::microseconds;
using std::chrono::milliseconds;

/// The same on every system, though the address would hold four bytes more on Linux.
constexpr int longestSocketPath = 103;
static_assert(sizeof(sockaddr_un::sun_path) > longestSocketPath);

constexpr std::size_t readSize = 16384;

/// A descriptor of a new stream socket, or -1.
int openSocket() {
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (descriptor < 0 || descriptor > STDERR_FILENO) {
        return descriptor;
    }
    // We were started with a standard stream closed, and the socket has taken its place: a message
    // for the user would be written to the application.
    const int moved = ::fcntl(descriptor, F_DUPFD, STDERR_FILENO + 1);
    ::close(descriptor);
    return moved;
}

Clock::duration left(Clock::time_point deadline) {
    return std::max(deadline - Clock::now(), Clock::duration::zero());
}

/// Whether the call that just failed had only come too early.
bool wouldBlock() {
    return errno == EAGAIN || errno == EWOULDBLOCK;
}

} // namespace

Clock::time_point Patience::deadline() const {
    const auto now = Clock::now();
    return deadline_ - now > wait_ ? now + wait_ : deadline_;
}

Connection::Connection(const std::string& socketPath, const Patience& patience)
    : descriptor_(-1), patience_(patience) {
    if (socketPath.size() > longestSocketPath) {
        throw AgentSocketClientError(
            AgentSocketClientError::pathTooLong{socketPath, longestSocketPath});
    }
    descriptor_ = openSocket();
    try {
        connect(socketPath);
    } catch (...) {
        ::close(descriptor_);
        throw;
    }
}

Connection::~Connection() {
    ::close(descriptor_);
}

void Connection::connect(const std::string& socketPath) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, socketPath.data(), socketPath.size());
    platform::prepareSocket(descriptor_);
    const auto deadline = patience_.deadline();
    // Connecting waits where the peer's queue is full, for which there is nothing to poll; no wait
    // at all would stand for an endless one.
    for (auto patience = left(deadline); patience > Clock::duration::zero();
         patience = left(deadline)) {
        const auto wait = std::chrono::ceil<microseconds>(patience).count();
        timeval timeout{};
        timeout.tv_sec = static_cast<decltype(timeout.tv_sec)>(wait / 1'000'000);
        timeout.tv_usec = static_cast<decltype(timeout.tv_usec)>(wait % 1'000'000);
        ::setsockopt(descriptor_, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
        // Linux would take an empty path for an abstract address, which somebody else may listen
        // on. The whole structure's length is passed, not the path's: the zero bytes behind the
        // path end it. The length byte that it begins with on macOS is not looked at there.
        if (!socketPath.empty() &&
            ::connect(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
                0) {
            // From here on only poll waits, which a stop and continue can't end.
            ::fcntl(descriptor_, F_SETFL, O_NONBLOCK);
            return;
        }
        if (socketPath.empty() || errno != EINTR) {
            break;
        }
    }
    throw AgentSocketClientError(AgentSocketClientError::notRunning{socketPath});
}

bool Connection::waitFor(short event) const {
    const auto deadline = patience_.deadline();
    pollfd waiting{descriptor_, event, 0};
    for (;;) {
        // Looked at once more when time is up: the process may have been stopped.
        const auto patience = left(deadline);
        const auto wait = std::chrono::ceil<milliseconds>(patience).count();
        const int found =
            ::poll(&waiting, 1, static_cast<int>(std::min<decltype(wait)>(wait, INT_MAX)));
        if (found != 0 && !(found < 0 && errno == EINTR)) {
            return found > 0;
        }
        if (found == 0 && patience == Clock::duration::zero()) {
            return false;
        }
    }
}

void Connection::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written =
            waitFor(POLLOUT) ? platform::sendWithoutSignal(descriptor_, bytes.data(), bytes.size())
                             : 0;
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || !wouldBlock()) {
            throw AgentSocketClientError(AgentSocketClientError::writeFailed{});
        }
    }
}

ByteBuffer Connection::readToEnd(std::size_t longest) {
    ByteBuffer bytes;
    while (waitFor(POLLIN)) {
        const ssize_t count = ::read(descriptor_, bytes.room(readSize), readSize);
        if (count == 0) {
            return bytes;
        }
        if (count > 0) {
            bytes.commit(static_cast<std::size_t>(count));
        } else if (!wouldBlock()) {
            break;
        }
        if (bytes.view().size() > longest) {
            throw AgentSocketClientError(AgentSocketClientError::malformedResponse{});
        }
    }
    throw AgentSocketClientError(AgentSocketClientError::readFailed{});
}

} // namespace fernlow

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
#include <cstring>
#include <limits>

namespace fernlow {

namespace {

using std::chrono::ceil;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/// The same on every system, though the address would hold four bytes more on Linux.
constexpr int maxSocketPath = 103;
static_assert(sizeof(sockaddr_un::sun_path) > maxSocketPath);

constexpr std::size_t readSize = 16384;

/// When what is waited for from now on is given up.
Clock::time_point deadlineOf(const Timeout& timeout) {
    const auto* const each = std::get_if<std::chrono::seconds>(&timeout);
    return each != nullptr ? Clock::now() + *each : std::get<Clock::time_point>(timeout);
}

/// Nothing once that moment has passed.
Clock::duration remaining(Clock::time_point deadline) {
    return std::max(deadline - Clock::now(), Clock::duration::zero());
}

/// Waits until the socket can be read or written without blocking. Gives false when time ran out.
bool awaitReady(int socket, short event, Clock::time_point deadline) {
    constexpr auto longest = milliseconds(std::numeric_limits<int>::max());
    pollfd waiting{socket, event, 0};
    int count = 0;
    // After an interruption it looks once more even where no time is left: what it waits for may
    // have come while the process was stopped.
    do {
        const auto timeout = std::min(ceil<milliseconds>(remaining(deadline)), longest);
        count = ::poll(&waiting, 1, static_cast<int>(timeout.count()));
    } while (count < 0 ? errno == EINTR
                       : count == 0 && remaining(deadline) != Clock::duration::zero());
    return count > 0;
}

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

/// Whether somebody listens and takes the connection in time.
bool connectBefore(Clock::time_point deadline, int socket, const sockaddr_un& address) {
    // Linux waits here while the listener's queue is full. No poll can do that (a socket that
    // doesn't block is just refused), so this one wait is left to the system, and asked for again
    // when it was interrupted, which undoes it.
    do {
        // None at all would mean to wait for ever.
        const auto limit =
            std::max(ceil<microseconds>(remaining(deadline)), microseconds(1)).count();
        timeval timeout{};
        timeout.tv_sec = static_cast<decltype(timeout.tv_sec)>(limit / 1'000'000);
        timeout.tv_usec = static_cast<decltype(timeout.tv_usec)>(limit % 1'000'000);
        ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
        // The whole structure's length is passed, not the path's: the zero bytes behind the path
        // end it. The length byte that it begins with on macOS is not looked at there.
        if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
            return true;
        }
    } while (errno == EINTR);
    return false;
}

SocketDescriptor connectedSocket(const std::string& socketPath, Clock::time_point deadline) {
    if (socketPath.size() > maxSocketPath) {
        throw AgentSocketClientError(
            AgentSocketClientError::pathTooLong{socketPath, maxSocketPath});
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, socketPath.data(), socketPath.size());

    SocketDescriptor socket(openSocket());
    // Linux would take an empty path for an abstract address, which somebody else may listen on.
    if (socket.get() < 0 || socketPath.empty()) {
        throw AgentSocketClientError(AgentSocketClientError::notRunning{socketPath});
    }
    platform::prepareSocket(socket.get());
    if (!connectBefore(deadline, socket.get(), address)) {
        throw AgentSocketClientError(AgentSocketClientError::notRunning{socketPath});
    }
    // From here on nothing waits but poll.
    ::fcntl(socket.get(), F_SETFL, O_NONBLOCK);
    return socket;
}

} // namespace

SocketDescriptor::~SocketDescriptor() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

Connection::Connection(const std::string& socketPath, Timeout timeout)
    : timeout_(timeout), socket_(connectedSocket(socketPath, deadlineOf(timeout))) {}

template <class Transfer>
ssize_t Connection::retryUntilReady(short event, Transfer transfer) const {
    const auto deadline = deadlineOf(timeout_);
    // Before the transfer, or a peer that never pauses would be listened to beyond the end.
    if (remaining(deadline) == Clock::duration::zero()) {
        return -1;
    }
    ssize_t count = transfer();
    while (count < 0 && errno == EAGAIN && awaitReady(socket_.get(), event, deadline)) {
        count = transfer();
    }
    return count;
}

void Connection::send(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t count = retryUntilReady(POLLOUT, [&] {
            return platform::sendWithoutSignal(socket_.get(), bytes.data(), bytes.size());
        });
        if (count <= 0) {
            throw AgentSocketClientError(AgentSocketClientError::writeFailed{});
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

ByteBuffer Connection::receive(std::size_t longest) const {
    ByteBuffer bytes;
    for (;;) {
        char* const room = bytes.room(readSize);
        const ssize_t count =
            retryUntilReady(POLLIN, [&] { return ::read(socket_.get(), room, readSize); });
        if (count < 0) {
            throw AgentSocketClientError(AgentSocketClientError::readFailed{});
        }
        if (count == 0) {
            return bytes;
        }
        bytes.commit(static_cast<std::size_t>(count));
        if (bytes.view().size() > longest) {
            throw AgentSocketClientError(AgentSocketClientError::malformedResponse{});
        }
    }
}

} // namespace fernlow

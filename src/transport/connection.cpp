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

/// The limit is the same on every system. Linux would allow four bytes more.
constexpr int maxSocketPath = 103;
static_assert(sizeof(sockaddr_un::sun_path) > maxSocketPath);

/// The maximum size of one read in bytes. The buffer for a reply has room for two reads at first,
/// and the last read, which returns nothing, needs room for one. So a reply of up to this size,
/// like nearly every reply, is never moved. Room that a reply does not need takes no memory.
constexpr std::size_t readSize = 262144;

/// Returns the deadline of a wait that begins now.
Clock::time_point deadlineOf(const Timeout& timeout) {
    if (const auto* const forEachWait = std::get_if<milliseconds>(&timeout)) {
        return Clock::now() + *forEachWait;
    }
    return std::get<Clock::time_point>(timeout);
}

/// Returns the time until the deadline, or zero if it has passed.
Clock::duration remaining(Clock::time_point deadline) {
    return std::max(deadline - Clock::now(), Clock::duration::zero());
}

/// Waits until the socket can be read or written without blocking. Returns false if the timeout
/// expires first, or if poll fails.
bool awaitReady(int socket, short event, const Timeout& timeout) {
    const auto deadline = deadlineOf(timeout);
    constexpr auto maxPollTimeout = milliseconds(std::numeric_limits<int>::max());
    pollfd waiting{socket, event, 0};
    for (;;) {
        const auto wait = std::min(ceil<milliseconds>(remaining(deadline)), maxPollTimeout);
        const int count = ::poll(&waiting, 1, static_cast<int>(wait.count()));
        if (count > 0) {
            return true;
        }
        if (count == 0 && remaining(deadline) == Clock::duration::zero()) {
            return false;
        }
        // After an interruption poll is called again even if the deadline has passed: the socket
        // may have become ready while the process was stopped.
        if (count < 0 && errno != EINTR) {
            return false;
        }
    }
}

/// Returns the descriptor of a new stream socket, or -1.
int openSocket() {
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (descriptor < 0 || descriptor > STDERR_FILENO) {
        return descriptor;
    }
    // A standard stream was closed when the program started, so the socket got the stream's number.
    // A message for the user would be written to the application.
    const int moved = ::fcntl(descriptor, F_DUPFD, STDERR_FILENO + 1);
    ::close(descriptor);
    return moved;
}

bool setBlocking(int socket, bool blocks) {
    return ::fcntl(socket, F_SETFL, blocks ? 0 : O_NONBLOCK) == 0;
}

/// Sets the longest time that connect may wait. Returns false if connect could wait without a
/// limit.
bool limitConnect(int socket, Clock::duration maxWait) {
    const auto limit = ceil<microseconds>(maxWait).count();
    timeval timeout{};
    timeout.tv_sec = static_cast<decltype(timeout.tv_sec)>(limit / 1'000'000);
    timeout.tv_usec = static_cast<decltype(timeout.tv_usec)>(limit % 1'000'000);
    return ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout) == 0;
}

/// Returns whether the socket could be connected.
bool connects(int socket, const sockaddr_un& address) {
    // The address includes the zero bytes that follow the path. macOS ignores sun_len, the first
    // byte of the structure.
    return ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

/// Returns whether a listener accepted the connection before the timeout expired. A connected
/// socket does not block, so that only poll waits.
bool connectInTime(int socket, const sockaddr_un& address, const Timeout& timeout) {
    if (!setBlocking(socket, false)) {
        return false;
    }
    if (connects(socket, address)) {
        return true;
    }
    // On Linux this error means that the listener's queue is full. poll cannot wait for room in the
    // queue, but connect can.
    if (errno != EAGAIN || !setBlocking(socket, true)) {
        return false;
    }
    const auto deadline = deadlineOf(timeout);
    auto wait = remaining(deadline);
    // A limit of zero would be no limit.
    for (; wait > Clock::duration::zero(); wait = remaining(deadline)) {
        if (!limitConnect(socket, wait)) {
            return false;
        }
        if (connects(socket, address)) {
            return setBlocking(socket, false);
        }
        // An interrupted connect has had no effect and can be repeated.
        if (errno != EINTR) {
            return false;
        }
    }
    // The queue may have got room while the process was stopped.
    return setBlocking(socket, false) && connects(socket, address);
}

SocketDescriptor connectedSocket(const std::string& socketPath, const Timeout& timeout) {
    if (socketPath.size() > maxSocketPath) {
        throw AgentSocketClientError(
            AgentSocketClientError::pathTooLong{socketPath, maxSocketPath});
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, socketPath.data(), socketPath.size());

    SocketDescriptor socket(openSocket());
    // Linux treats an empty path as an abstract address, where an unrelated program may listen.
    if (socket.get() < 0 || socketPath.empty() || !platform::prepareSocket(socket.get()) ||
        !connectInTime(socket.get(), address, timeout)) {
        throw AgentSocketClientError(AgentSocketClientError::notRunning{socketPath});
    }
    return socket;
}

} // namespace

SocketDescriptor::~SocketDescriptor() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

Connection::Connection(const std::string& socketPath, Timeout timeout)
    : timeout_(timeout), socket_(connectedSocket(socketPath, timeout)) {}

template <class Transfer>
ssize_t Connection::retryUntilReady(short event, Transfer transfer) const {
    ssize_t count = transfer();
    // A process that reads the clock for the first time loads code and data for it. Only a transfer
    // that has to wait needs the clock.
    while (count < 0 && errno == EAGAIN && awaitReady(socket_.get(), event, timeout_)) {
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

ByteBuffer Connection::receive(std::size_t maxSize) const {
    ByteBuffer bytes;
    for (;;) {
        char* const destination = bytes.prepare(readSize);
        const ssize_t count =
            retryUntilReady(POLLIN, [&] { return ::read(socket_.get(), destination, readSize); });
        if (count < 0) {
            throw AgentSocketClientError(AgentSocketClientError::readFailed{});
        }
        if (count == 0) {
            return bytes;
        }
        bytes.commit(static_cast<std::size_t>(count));
        if (bytes.view().size() > maxSize) {
            throw AgentSocketClientError(AgentSocketClientError::malformedResponse{});
        }
    }
}

} // namespace fernlow

#include "transport/socket_client.h"

#include "platform/platform.h"
#include "transport/socket_client_error.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>
#include <variant>

namespace fernlow {

namespace {

/// The same on every system, though the address would hold four bytes more on Linux.
constexpr int longestSocketPath = 103;
static_assert(sizeof(sockaddr_un::sun_path) > longestSocketPath);

constexpr std::size_t readSize = 16384;

/// No reply comes near it. A peer that never stops sending is stopped here, before it has used up
/// the machine.
constexpr std::size_t longestReply = std::size_t{256} * 1024 * 1024;

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

timeval socketTimeout(std::chrono::microseconds patience) {
    timeval timeout{};
    timeout.tv_sec = static_cast<decltype(timeout.tv_sec)>(patience.count() / 1'000'000);
    timeout.tv_usec = static_cast<decltype(timeout.tv_usec)>(patience.count() % 1'000'000);
    return timeout;
}

void writeAll(const SocketDescriptor& socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written =
            platform::sendWithoutSignal(socket.get(), bytes.data(), bytes.size());
        if (written <= 0) {
            throw AgentSocketClientError(AgentSocketClientError::writeFailed{});
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

ByteBuffer readToEnd(const SocketDescriptor& socket) {
    ByteBuffer bytes;
    for (;;) {
        const ssize_t count = ::read(socket.get(), bytes.room(readSize), readSize);
        if (count < 0) {
            throw AgentSocketClientError(AgentSocketClientError::readFailed{});
        }
        if (count == 0) {
            return bytes;
        }
        bytes.commit(static_cast<std::size_t>(count));
        if (bytes.view().size() > longestReply) {
            throw AgentSocketClientError(AgentSocketClientError::malformedResponse{});
        }
    }
}

bool somebodyListens(const std::string& socketPath) {
    try {
        AgentSocketClient::connect(socketPath, 0);
        return true;
    } catch (const AgentSocketClientError&) {
        return false;
    }
}

AgentReply attempt(const std::string& socketPath, const AgentRequest& request) {
    ByteBuffer bytes;
    {
        const SocketDescriptor socket =
            AgentSocketClient::connect(socketPath, replyTimeoutSeconds(request.body));
        writeAll(socket, requestBytes(request));
        bytes = readToEnd(socket);
    }
    return parseReply(std::move(bytes));
}

} // namespace

SocketDescriptor::~SocketDescriptor() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

SocketDescriptor AgentSocketClient::connect(const std::string& socketPath,
                                            double replyTimeoutSeconds) {
    // Thirty years: no machine waits longer, and systems count further in units that overflow.
    constexpr double longest = 1e9;
    const auto seconds =
        static_cast<std::int64_t>(std::clamp(replyTimeoutSeconds + 30, 5.0, longest));
    return connect(socketPath, std::chrono::seconds(seconds));
}

SocketDescriptor AgentSocketClient::connect(const std::string& socketPath,
                                            std::chrono::microseconds patience) {
    if (socketPath.size() > longestSocketPath) {
        throw AgentSocketClientError(
            AgentSocketClientError::pathTooLong{socketPath, longestSocketPath});
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
    const timeval timeout = socketTimeout(patience);
    ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
    // The whole structure's length is passed, not the path's: the zero bytes behind the path end
    // it. The length byte that the structure begins with on macOS is not looked at there.
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw AgentSocketClientError(AgentSocketClientError::notRunning{socketPath});
    }
    return socket;
}

AgentReply AgentSocketClient::exchange(const std::string& socketPath, bool launchIfNeeded,
                                       const AgentRequest& request) const {
    try {
        return attempt(socketPath, request);
    } catch (const AgentSocketClientError& error) {
        if (!launchIfNeeded ||
            !std::holds_alternative<AgentSocketClientError::notRunning>(error.kind())) {
            throw;
        }
    }
    launchApplication(socketPath, launch_, somebodyListens);
    return attempt(socketPath, request);
}

} // namespace fernlow

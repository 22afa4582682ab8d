#include "completion/application.h"

#include "platform/platform.h"
#include "transport/socket_client.h"
#include "transport/socket_client_error.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

namespace fernlow::completion {

namespace {

using Deadline = std::chrono::steady_clock::time_point;

/// More than a list to choose from ever is, and parsed in a few hundredths of a second.
constexpr std::size_t longestReply = std::size_t{4} * 1024 * 1024;
constexpr std::size_t readSize = 65536;

std::chrono::microseconds left(Deadline deadline) {
    return std::max(std::chrono::duration_cast<std::chrono::microseconds>(
                        deadline - std::chrono::steady_clock::now()),
                    std::chrono::microseconds(0));
}

bool waitFor(int socket, short event, Deadline deadline) {
    pollfd waiting{socket, event, 0};
    const auto milliseconds = static_cast<int>(left(deadline).count() / 1000);
    return milliseconds > 0 && ::poll(&waiting, 1, milliseconds) == 1;
}

bool send(int socket, std::string_view bytes, Deadline deadline) {
    while (!bytes.empty()) {
        if (!waitFor(socket, POLLOUT, deadline)) {
            return false;
        }
        const ssize_t count = platform::sendWithoutSignal(socket, bytes.data(), bytes.size());
        if (count <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool receive(int socket, ByteBuffer& bytes, Deadline deadline) {
    while (bytes.view().size() <= longestReply && waitFor(socket, POLLIN, deadline)) {
        const ssize_t count = ::read(socket, bytes.room(readSize), readSize);
        if (count <= 0) {
            return count == 0;
        }
        bytes.commit(static_cast<std::size_t>(count));
    }
    return false;
}

} // namespace

bool Application::exchange(const AgentRequest& request) {
    const auto patience = left(deadline_);
    if (patience.count() == 0) {
        // A timeout of 0 would mean to wait for ever.
        return false;
    }
    try {
        const auto socket = AgentSocketClient::connect(socketPath_, patience);
        // Where the socket blocked, a single write could outlast the deadline.
        ::fcntl(socket.get(), F_SETFL, O_NONBLOCK);
        ByteBuffer bytes;
        if (!send(socket.get(), requestBytes(request), deadline_) ||
            !receive(socket.get(), bytes, deadline_)) {
            return false;
        }
        body_ = parseReply(std::move(bytes)).body;
        return true;
    } catch (const AgentSocketClientError&) {
        return false;
    }
}

std::optional<json::Value> Application::ask(const AgentRequest& request) {
    document_.reset();
    if (!exchange(request)) {
        return std::nullopt;
    }
    document_ = json::Document::parse(body_.view());
    const auto reply = document_ ? document_->root().object() : std::nullopt;
    return reply && reply->boolean("ok") ? reply->find("result") : std::nullopt;
}

} // namespace fernlow::completion

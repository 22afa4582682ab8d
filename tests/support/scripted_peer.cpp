#include "support/scripted_peer.h"

#include "platform/platform.h"
#include "support/seeds.h"
#include "transport/socket_client.h"
#include "transport/socket_client_error.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace fernlow::test {

namespace {

/// The length of the whole request, once its head is complete; 0 before.
std::size_t requestLength(const std::string& request) {
    const std::size_t headEnd = request.find("\r\n\r\n");
    const std::size_t length = request.find("Content-Length: ");
    if (headEnd == std::string::npos || length == std::string::npos) {
        return 0;
    }
    return headEnd + 4 + std::stoul(request.substr(length + std::strlen("Content-Length: ")));
}

} // namespace

const std::string& ScriptedPeer::Connection::readRequest() {
    std::array<char, 65536> buffer{};
    while (requestLength(request_) == 0 || request_.size() < requestLength(request_)) {
        const ssize_t count = ::read(socket_, buffer.data(), buffer.size());
        if (count <= 0) {
            break;
        }
        request_.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return request_;
}

void ScriptedPeer::Connection::write(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t count = platform::sendWithoutSignal(socket_, bytes.data(), bytes.size());
        if (count <= 0) {
            return;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void ScriptedPeer::Connection::reset() {
    // A Unix-domain socket has no linger: closing with unread bytes is what resets it.
    awaitFirstByte();
    close();
}

void ScriptedPeer::Connection::awaitFirstByte() const {
    std::array<char, 1> byte{};
    ::recv(socket_, byte.data(), byte.size(), MSG_PEEK);
}

bool ScriptedPeer::Connection::isGone() const {
    pollfd hangUp{socket_, 0, 0};
    return ::poll(&hangUp, 1, 1) == 1 && (hangUp.revents & POLLHUP) != 0;
}

void ScriptedPeer::Connection::waitUntilGone() const {
    while (!isGone()) {
    }
}

void ScriptedPeer::Connection::close() {
    if (socket_ >= 0) {
        ::close(std::exchange(socket_, -1));
    }
}

void ScriptedPeer::Connection::waitForClose() const {
    // The client never half-closes, so the end can only be a close; what it sent lies before it.
    std::array<char, 65536> buffer{};
    while (::read(socket_, buffer.data(), buffer.size()) > 0) {
    }
}

ScriptedPeer::ScriptedPeer(std::vector<Script> scripts)
    : ScriptedPeer(Later{}, std::move(scripts)) {
    start();
}

ScriptedPeer::ScriptedPeer(Later /*later*/, std::vector<Script> scripts)
    : scripts_(std::move(scripts)) {}

ScriptedPeer::~ScriptedPeer() {
    if (!thread_.joinable()) {
        return;
    }
    stopping_ = true;
    try {
        // Wakes an accept that nobody connects to any more.
        AgentSocketClient::connect(path(), 0);
    } catch (const AgentSocketClientError&) {
        // The last script is done.
    }
    thread_.join();
}

void ScriptedPeer::start() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path().copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener, 16) != 0) {
        throw std::runtime_error("cannot listen on " + path());
    }
    thread_ = std::thread([this, listener] { serve(listener); });
}

void ScriptedPeer::serve(int listener) {
    for (const Script& script : scripts_) {
        const int socket = ::accept(listener, nullptr, nullptr);
        if (stopping_) {
            ::close(socket);
            break;
        }
        platform::prepareSocket(socket);
        Connection connection(socket);
        script(connection);
        connection.close();
        requests_.push_back(connection.request());
    }
    ::close(listener);
}

const std::vector<std::string>& ScriptedPeer::requests() {
    if (thread_.joinable()) {
        thread_.join();
    }
    return requests_;
}

ScriptedPeer::Script answer(std::string bytes) {
    keepSeed("framing", bytes);
    return [bytes = std::move(bytes)](ScriptedPeer::Connection& connection) {
        connection.readRequest();
        connection.write(bytes);
    };
}

std::string reply(std::string_view body) {
    return "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n\r\n" + std::string(body);
}

} // namespace fernlow::test

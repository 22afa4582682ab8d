#include "support/scripted_peer.h"

#include "support/seeds.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace fernlow::test {

namespace {

#ifdef MSG_NOSIGNAL
constexpr int sendFlags = MSG_NOSIGNAL;
#else
constexpr int sendFlags = 0;
#endif

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
        const ssize_t count = ::send(socket_, bytes.data(), bytes.size(), sendFlags);
        if (count <= 0) {
            return;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void ScriptedPeer::Connection::reset() {
    // A Unix-domain socket has no linger: closing with unread bytes is what resets it. So this
    // belongs before readRequest().
    std::array<char, 1> byte{};
    ::recv(socket_, byte.data(), byte.size(), MSG_PEEK);
    close();
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
    if (listener_ >= 0) {
        // Ends an accept that nobody connects to any more.
        ::shutdown(listener_, SHUT_RDWR);
    }
    if (thread_.joinable()) {
        thread_.join();
    }
}

void ScriptedPeer::start() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path().copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
    listener_ = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (::bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener_, 16) != 0) {
        throw std::runtime_error("cannot listen on " + path());
    }
    thread_ = std::thread([this] { serve(listener_); });
}

void ScriptedPeer::serve(int listener) {
    for (const Script& script : scripts_) {
        const int socket = ::accept(listener, nullptr, nullptr);
        if (socket < 0) {
            break;
        }
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
        listener_ = -1;
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

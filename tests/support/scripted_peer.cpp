#include "support/scripted_peer.h"

#include "platform/platform.h"
#include "support/seeds.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace fernlow::test {

namespace {

/// Returns whether the request has its head and its whole body.
bool isComplete(const std::string& request) {
    constexpr std::string_view lengthHeader = "Content-Length: ";
    constexpr std::string_view headEnd = "\r\n\r\n";
    const std::size_t headSize = request.find(headEnd);
    const std::size_t header = request.find(lengthHeader);
    if (headSize == std::string::npos || header == std::string::npos) {
        return false;
    }
    const std::size_t bodySize =
        std::strtoul(request.c_str() + header + lengthHeader.size(), nullptr, 10);
    return request.size() >= headSize + headEnd.size() + bodySize;
}

} // namespace

const std::string& ScriptedPeer::Connection::readRequest() {
    std::array<char, 65536> buffer{};
    while (!isComplete(request_)) {
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

void ScriptedPeer::Connection::awaitFirstByte() const {
    std::array<char, 1> byte{};
    ::recv(socket_, byte.data(), byte.size(), MSG_PEEK);
}

bool ScriptedPeer::Connection::isGone() const {
    constexpr int milliseconds = 1;
    pollfd hangUp{socket_, 0, 0};
    return ::poll(&hangUp, 1, milliseconds) == 1 && (hangUp.revents & POLLHUP) != 0;
}

void ScriptedPeer::Connection::waitUntilGone() const {
    while (!isGone()) {
        // isGone() waits.
    }
}

ScriptedPeer::~ScriptedPeer() {
    stopping_ = true;
    requests();
}

ScriptedPeer::ScriptedPeer(std::vector<Script> scripts) : scripts_(std::move(scripts)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path().copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener, 0) != 0) {
        throw std::runtime_error("cannot listen on " + path());
    }
    thread_ = std::thread([this, listener] { serve(listener); });
}

void ScriptedPeer::serve(int listener) {
    for (const Script& script : scripts_) {
        constexpr int milliseconds = 5;
        pollfd waiting{listener, POLLIN, 0};
        while (!stopping_ && ::poll(&waiting, 1, milliseconds) != 1) {
            // poll() waits.
        }
        if (stopping_) {
            break;
        }
        const int socket = ::accept(listener, nullptr, nullptr);
        // This fails on macOS if the client has closed the connection already.
        static_cast<void>(platform::prepareSocket(socket));
        Connection connection(socket);
        script(connection);
        ::close(socket);
        requests_.push_back(connection.request_);
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

ScriptedPeer::Script answerResult(std::string_view result) {
    return answer(reply(R"({"ok":true,"result":)" + std::string(result) + "}"));
}

} // namespace fernlow::test

// Answers every request with a fixed reply, as fast as the client can read it: a request to the
// socket SOCKETS/NAME gets the content of REPLIES/NAME.json. Serves one connection at a time.
// Prints "ready" when it listens, and runs until it is killed.
//
//   reply-server SOCKETS REPLIES
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// Prints the message and the error in errno.
[[noreturn]] void fail(const std::string& message) {
    std::perror(message.c_str());
    std::exit(1);
}

/// Returns a complete reply whose body is the content of the file.
std::string replyOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::string body{std::istreambuf_iterator<char>(stream), {}};
    return "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
}

int listenAt(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        fail(path + " is too long");
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener, SOMAXCONN) != 0) {
        fail(path);
    }
    return listener;
}

/// Returns the length of a request whose head is complete. Recognises the header for the length of
/// the body only in the spelling of the clients of this benchmark.
std::size_t requestLength(std::string_view request, std::size_t headEnd) {
    constexpr std::string_view name = "Content-Length: ";
    const std::size_t at = request.substr(0, headEnd).find(name);
    const std::size_t bodySize = at == std::string_view::npos
                                     ? 0
                                     : std::strtoul(request.data() + at + name.size(), nullptr, 10);
    return headEnd + 4 + bodySize;
}

void readRequest(int connection) {
    std::string request;
    std::array<char, 16384> piece{};
    for (;;) {
        const std::size_t headEnd = request.find("\r\n\r\n");
        if (headEnd != std::string::npos && request.size() >= requestLength(request, headEnd)) {
            return;
        }
        const ssize_t count = ::read(connection, piece.data(), piece.size());
        if (count <= 0) {
            return;
        }
        request.append(piece.data(), static_cast<std::size_t>(count));
    }
}

void answer(int listener, std::string_view reply) {
    const int connection = ::accept(listener, nullptr, nullptr);
    if (connection < 0) {
        return;
    }
    readRequest(connection);
    while (!reply.empty()) {
        const ssize_t count = ::send(connection, reply.data(), reply.size(), 0);
        if (count <= 0) {
            break;
        }
        reply.remove_prefix(static_cast<std::size_t>(count));
    }
    ::close(connection);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: reply-server SOCKETS REPLIES\n", stderr);
        return 2;
    }
    // A client that disconnects early must not end the server.
    std::signal(SIGPIPE, SIG_IGN);
    std::vector<pollfd> listeners;
    std::vector<std::string> replies;
    for (const auto& entry : fs::directory_iterator(argv[2])) {
        if (entry.path().extension() == ".json") {
            replies.push_back(replyOf(entry.path()));
            const fs::path socket = fs::path(argv[1]) / entry.path().stem();
            listeners.push_back({listenAt(socket.string()), POLLIN, 0});
        }
    }
    std::puts("ready");
    std::fflush(stdout);
    while (::poll(listeners.data(), static_cast<nfds_t>(listeners.size()), -1) > 0) {
        for (std::size_t index = 0; index < listeners.size(); ++index) {
            if ((listeners[index].revents & POLLIN) != 0) {
                answer(listeners[index].fd, replies[index]);
            }
        }
    }
    fail("poll");
}

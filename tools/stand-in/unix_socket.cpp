#include "unix_socket.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace fernlow::standin {

namespace {

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        throw std::runtime_error("The socket path must have 1 to " +
                                 std::to_string(sizeof address.sun_path - 1) + " bytes: " + path);
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

[[noreturn]] void throwSystemError(const std::string& path) {
    throw std::runtime_error("Listening on " + path + " failed: " + std::strerror(errno) + ".");
}

int newSocket(const std::string& path) {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    if (descriptor < 0) {
        throwSystemError(path);
    }
    return descriptor;
}

void removeStaleSocket(const std::string& path, const sockaddr_un& address) {
    struct stat status{};
    if (lstat(path.c_str(), &status) != 0) {
        return;
    }
    if (!S_ISSOCK(status.st_mode)) {
        throw std::runtime_error(path + " exists and is not a socket.");
    }
    const int probe = newSocket(path);
    const bool isAnswered =
        connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(probe);
    if (isAnswered) {
        throw std::runtime_error("Somebody is already listening on " + path + ".");
    }
    unlink(path.c_str());
}

} // namespace

ListeningSocket::ListeningSocket(const std::string& path) : path_(path) {
    const sockaddr_un address = addressOf(path);
    removeStaleSocket(path, address);
    descriptor_ = newSocket(path);
    // The mask, not a later chmod: the file must at no moment be open to others.
    const mode_t previousMask = umask(0177);
    const int bound =
        bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    umask(previousMask);
    if (bound != 0 || listen(descriptor_, SOMAXCONN) != 0) {
        const int reason = errno;
        close(descriptor_);
        errno = reason;
        throwSystemError(path);
    }
}

ListeningSocket::~ListeningSocket() {
    unlink(path_.c_str());
}

} // namespace fernlow::standin

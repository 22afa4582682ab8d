#include "unix_socket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace fernlow::standin {

namespace {

/// macOS's limit, which the client applies on every system.
constexpr std::size_t maxSocketPath = 103;

std::string validate(std::string path) {
    if (path.empty() || path.size() > maxSocketPath) {
        throw std::runtime_error("The socket path must have 1 to " + std::to_string(maxSocketPath) +
                                 " bytes: " + path);
    }
    return path;
}

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(static_cast<char*>(address.sun_path), path.size());
    return address;
}

[[noreturn]] void throwSystemError(const std::string& path) {
    throw std::runtime_error("Using " + path + " failed: " + std::strerror(errno) + ".");
}

[[noreturn]] void throwInUse(const std::string& path) {
    throw std::runtime_error("Somebody is already listening on " + path + ".");
}

int newSocket(const std::string& path) {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    if (descriptor < 0) {
        throwSystemError(path);
    }
    return descriptor;
}

/// Removes the socket of a process that has ended. Throws if something else is at `path`.
void removeStaleSocket(const std::string& path, const sockaddr_un& address) {
    struct stat status{};
    if (lstat(path.c_str(), &status) != 0) {
        return;
    }
    if (!S_ISSOCK(status.st_mode)) {
        throw std::runtime_error(path + " exists and is not a socket.");
    }
    const int probe = newSocket(path);
    // Without this, connecting would wait for a process that has stopped accepting.
    fcntl(probe, F_SETFL, O_NONBLOCK);
    const int result = connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    const int error = errno;
    close(probe);
    if (result == 0 || error == EAGAIN) {
        throwInUse(path);
    }
    errno = error;
    if (error != ECONNREFUSED || unlink(path.c_str()) != 0) {
        throwSystemError(path);
    }
}

} // namespace

LockFile::LockFile(const std::string& socketPath) : path_(socketPath + ".lock") {
    for (;;) {
        descriptor_ =
            open(path_.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
        if (descriptor_ < 0) {
            throwSystemError(path_);
        }
        // The destructor removes the file, so refuse a file that is not a lock file.
        struct stat locked{};
        if (fstat(descriptor_, &locked) != 0 || !S_ISREG(locked.st_mode) || locked.st_size != 0) {
            throw std::runtime_error(path_ + " exists and is not a lock file.");
        }
        struct flock wholeFile{};
        wholeFile.l_type = F_WRLCK;
        wholeFile.l_whence = SEEK_SET;
        if (fcntl(descriptor_, F_SETLK, &wholeFile) != 0) {
            if (errno == EACCES || errno == EAGAIN) {
                throwInUse(socketPath);
            }
            throwSystemError(path_);
        }
        // The previous owner may have removed the file after this process opened it.
        struct stat current{};
        if (lstat(path_.c_str(), &current) == 0 && locked.st_ino == current.st_ino) {
            return;
        }
        close(descriptor_);
    }
}

LockFile::~LockFile() {
    unlink(path_.c_str());
    close(descriptor_);
}

ListeningSocket::ListeningSocket(const std::string& path) : path_(validate(path)), lock_(path) {
    const sockaddr_un address = addressOf(path);
    removeStaleSocket(path, address);
    descriptor_ = newSocket(path);
    // A chmod() after bind() would leave the file open to others for a moment.
    const mode_t previousMask = umask(0177);
    const int bound =
        bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    umask(previousMask);
    if (bound != 0 || listen(descriptor_, SOMAXCONN) != 0) {
        throwSystemError(path);
    }
}

ListeningSocket::~ListeningSocket() {
    unlink(path_.c_str());
}

} // namespace fernlow::standin

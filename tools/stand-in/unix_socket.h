#pragma once

#include <string>

namespace fernlow::standin {

/// A locked file. The lock ends with the process at the latest, even if the process is killed.
class LockFile {
public:
    /// Creates the file if necessary and locks it for the owner of the socket at `socketPath`.
    /// Throws std::runtime_error if another process holds the lock or if a system call fails.
    explicit LockFile(const std::string& socketPath);
    /// Removes the file and unlocks it.
    ~LockFile();
    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;

private:
    std::string path_;
    int descriptor_ = -1;
};

/// A listening Unix-domain stream socket to which only this user can connect. A killed process does
/// not remove its socket, so the next process replaces it. A lock file ensures that only one
/// process does so at a time.
class ListeningSocket {
public:
    /// Binds to `path` and listens. Throws std::runtime_error if another process listens there, if
    /// `path` is a file of another kind, or if a system call fails.
    explicit ListeningSocket(const std::string& path);
    /// Removes the socket file. Does not close the descriptor, which the HTTP server owns.
    ~ListeningSocket();
    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;

    /// Returns the listening descriptor.
    [[nodiscard]] int descriptor() const { return descriptor_; }

private:
    std::string path_;
    LockFile lock_;
    int descriptor_ = -1;
};

} // namespace fernlow::standin

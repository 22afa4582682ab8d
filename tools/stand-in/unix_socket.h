#pragma once

#include <string>

namespace fernlow::standin {

/// A listening Unix-domain stream socket that only this user may connect to.
class ListeningSocket {
public:
    /// Binds and listens at `path`. A socket left behind by a process that is gone is replaced;
    /// throws std::runtime_error when somebody listens there, when something other than a socket
    /// is there, or when the system refuses.
    explicit ListeningSocket(const std::string& path);
    /// Removes the socket file. The descriptor belongs to whoever serves it.
    ~ListeningSocket();
    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;

    /// The listening descriptor.
    [[nodiscard]] int descriptor() const { return descriptor_; }

private:
    std::string path_;
    int descriptor_ = -1;
};

} // namespace fernlow::standin

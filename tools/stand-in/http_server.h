#pragma once

#include <functional>
#include <string>

struct MHD_Daemon;

namespace fernlow::standin {

/// One request, read completely.
struct Request {
    std::string method;
    std::string path;
    std::string body;
    bool isTooLarge = false;
};

/// One answer: an HTTP status and a JSON document.
struct Reply {
    unsigned status;
    std::string body;
};

/// Serves HTTP/1.1 on a listening descriptor, one request a connection, until destroyed.
class HttpServer {
public:
    using Handler = std::function<Reply(const Request&)>;

    /// Starts serving and takes over `listeningDescriptor`. `handler` is called for one request at
    /// a time, on the server's own thread, and must not throw. Throws std::runtime_error when the
    /// server cannot start.
    HttpServer(int listeningDescriptor, Handler handler);
    /// Stops accepting, drops open connections and closes the descriptor.
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

private:
    Handler handler_;
    MHD_Daemon* daemon_ = nullptr;
};

} // namespace fernlow::standin

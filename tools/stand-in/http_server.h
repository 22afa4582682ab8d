#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

struct MHD_Daemon;

namespace fernlow::standin {

/// A complete request.
struct Request {
    std::string method;
    std::string path;
    std::string body;
    bool isTooLarge = false;
};

/// An HTTP status and a JSON document.
struct Reply {
    unsigned status;
    std::string body;
};

/// Returns the reply, or nothing while work is still going on. It is called repeatedly.
using PendingReply = std::function<std::optional<Reply>()>;

/// A request that is being served. Private to the server.
struct Exchange;

/// Serves HTTP/1.1 on a listening descriptor until it is destroyed, with one request for each
/// connection. A pending reply delays no other reply. A connection that sends no complete request
/// within a few seconds is closed.
class HttpServer {
public:
    using Handler = std::function<PendingReply(const Request&)>;

    /// Starts serving and takes ownership of `listeningDescriptor`. Calls `handler`, which must not
    /// throw, on a separate thread for one request at a time. Throws std::runtime_error if the
    /// server cannot start.
    HttpServer(int listeningDescriptor, Handler handler);
    /// Closes all connections, even if their replies are pending, and the descriptor.
    ~HttpServer();
    /// Calls `work` while no request is being handled, then sends the replies that are ready.
    void advance(const std::function<void()>& work);
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// For the HTTP library's callback: handles a complete request. Returns false, and suspends the
    /// connection, if the reply is pending.
    bool handle(Exchange& exchange);

private:
    Handler handler_;
    std::mutex mutex_;
    std::vector<Exchange*> waiting_;
    MHD_Daemon* daemon_ = nullptr;
};

} // namespace fernlow::standin

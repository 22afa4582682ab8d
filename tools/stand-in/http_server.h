#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

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

/// Gives the answer once there is one; asked again and again until then.
using PendingReply = std::function<std::optional<Reply>()>;

/// A request on its way to an answer; what it holds is the server's own affair.
struct Exchange;

/// Serves HTTP/1.1 on a listening descriptor, one request a connection, until destroyed. A request
/// whose answer is pending holds up no other, and a connection that says nothing is soon dropped.
class HttpServer {
public:
    using Handler = std::function<PendingReply(const Request&)>;

    /// Starts serving and takes over `listeningDescriptor`. `handler` is called for one request at
    /// a time, on the server's own thread, and must not throw. Throws std::runtime_error when the
    /// server cannot start.
    HttpServer(int listeningDescriptor, Handler handler);
    /// Stops accepting, drops open connections and closes the descriptor.
    ~HttpServer();
    /// Does `work` while nothing is being answered, then sends the answers that are there now.
    void advance(const std::function<void()>& work);
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// The library's calls: a request is complete; a connection is done with.
    bool answer(Exchange& exchange);

private:
    Handler handler_;
    std::mutex mutex_;
    std::vector<Exchange*> waiting_;
    MHD_Daemon* daemon_ = nullptr;
};

} // namespace fernlow::standin

#include "http_server.h"

#include <microhttpd.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace fernlow::standin {

struct Exchange {
    MHD_Connection* connection = nullptr;
    Request request;
    PendingReply pendingReply;
    std::optional<Reply> reply;
};

namespace {

constexpr std::size_t maxBody = 64U << 20;

MHD_Result send(MHD_Connection* connection, const Reply& reply) {
    // The parameter is not const, but with MHD_RESPMEM_MUST_COPY the library only reads the body.
    MHD_Response* response = MHD_create_response_from_buffer(
        reply.body.size(), const_cast<char*>(reply.body.data()), MHD_RESPMEM_MUST_COPY);
    if (response == nullptr) {
        return MHD_NO;
    }
    MHD_add_response_header(response, "Content-Type", "application/json; charset=utf-8");
    MHD_add_response_header(response, "Connection", "close");
    const MHD_Result queued = MHD_queue_response(connection, reply.status, response);
    MHD_destroy_response(response);
    return queued;
}

/// The HTTP library's callback. It is called after the head, for each piece of the body, at the end
/// of the body, and again after a suspended connection is resumed. `context` holds the Exchange.
MHD_Result onRequest(void* server, MHD_Connection* connection, const char* path, const char* method,
                     const char* /*unused*/, const char* piece, std::size_t* pieceSize,
                     void** context) {
    const auto handle = [&](Exchange& exchange) {
        const bool isReady = static_cast<HttpServer*>(server)->handle(exchange);
        return isReady ? send(connection, *exchange.reply) : MHD_YES;
    };
    if (*context == nullptr) {
        Exchange& exchange = *new Exchange{connection, {method, path, "", false}, {}, {}};
        *context = &exchange;
        const char* length =
            MHD_lookup_connection_value(connection, MHD_HEADER_KIND, "Content-Length");
        exchange.request.isTooLarge =
            length != nullptr && std::strtoull(length, nullptr, 10) > maxBody;
        return exchange.request.isTooLarge ? handle(exchange) : MHD_YES;
    }
    Exchange& exchange = *static_cast<Exchange*>(*context);
    if (*pieceSize == 0) {
        return handle(exchange);
    }
    Request& request = exchange.request;
    // The library accepts no reply before the end of the body, so the rest is read and discarded.
    if (request.body.size() + *pieceSize > maxBody) {
        request.isTooLarge = true;
    }
    if (!request.isTooLarge) {
        request.body.append(piece, *pieceSize);
    }
    *pieceSize = 0;
    return MHD_YES;
}

void onCompleted(void* /*unused*/, MHD_Connection* /*unused*/, void** context,
                 MHD_RequestTerminationCode /*unused*/) {
    delete static_cast<Exchange*>(*context);
    *context = nullptr;
}

/// Returns the number of connections for which there are enough descriptors: at least 64 and at
/// most 4096. Raises the process's limit if necessary.
unsigned connectionLimit() {
    constexpr rlim_t minConnections = 64;
    constexpr rlim_t maxConnections = 4096;
    // Descriptors for the files of projects and for the server itself.
    constexpr rlim_t reserved = 64;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlim_t wanted = std::min(maxConnections + reserved, limit.rlim_max);
    limit.rlim_cur = std::max(limit.rlim_cur, wanted);
    setrlimit(RLIMIT_NOFILE, &limit);
    getrlimit(RLIMIT_NOFILE, &limit);
    // rlim_t is unsigned, so a small limit must not become negative.
    const rlim_t available = limit.rlim_cur > reserved ? limit.rlim_cur - reserved : 0;
    return static_cast<unsigned>(std::clamp(available, minConnections, maxConnections));
}

} // namespace

HttpServer::HttpServer(int listeningDescriptor, Handler handler) : handler_(std::move(handler)) {
    constexpr unsigned requestTimeoutSeconds = 5;
    // Copying and printing a request of maximum depth needs more stack than threads have on macOS.
    constexpr std::size_t stackSize = 8U << 20;
    daemon_ = MHD_start_daemon(
        MHD_USE_AUTO | MHD_USE_INTERNAL_POLLING_THREAD | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr,
        nullptr, &onRequest, this, MHD_OPTION_LISTEN_SOCKET, listeningDescriptor,
        MHD_OPTION_NOTIFY_COMPLETED, &onCompleted, nullptr, MHD_OPTION_CONNECTION_TIMEOUT,
        requestTimeoutSeconds, MHD_OPTION_CONNECTION_LIMIT, connectionLimit(),
        MHD_OPTION_THREAD_STACK_SIZE, stackSize, MHD_OPTION_END);
    if (daemon_ == nullptr) {
        throw std::runtime_error("The HTTP server could not be started.");
    }
}

HttpServer::~HttpServer() {
    // The library must not be stopped while connections are suspended.
    const PendingReply unavailable = [] { return Reply{503, "{}"}; };
    {
        const std::scoped_lock lock(mutex_);
        handler_ = [&](const Request& /*unused*/) { return unavailable; };
        for (Exchange* exchange : waiting_) {
            exchange->pendingReply = unavailable;
        }
    }
    advance([] {});
    MHD_stop_daemon(daemon_);
}

bool HttpServer::handle(Exchange& exchange) {
    const std::scoped_lock lock(mutex_);
    if (!exchange.pendingReply) {
        exchange.pendingReply = handler_(exchange.request);
        exchange.reply = exchange.pendingReply();
    }
    if (!exchange.reply) {
        waiting_.push_back(&exchange);
        MHD_suspend_connection(exchange.connection);
    }
    return exchange.reply.has_value();
}

void HttpServer::advance(const std::function<void()>& work) {
    const std::scoped_lock lock(mutex_);
    work();
    std::erase_if(waiting_, [](Exchange* exchange) {
        exchange->reply = exchange->pendingReply();
        if (exchange->reply) {
            MHD_resume_connection(exchange->connection);
        }
        return exchange->reply.has_value();
    });
}

} // namespace fernlow::standin

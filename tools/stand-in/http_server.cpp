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
    PendingReply ask;
    std::optional<Reply> reply;
};

namespace {

constexpr std::size_t largestBody = 64U << 20;

MHD_Result send(MHD_Connection* connection, const Reply& reply) {
    // The library's parameter is not const, but with MUST_COPY it only reads.
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

/// Called once when the head is read, once for each piece of the body, once at its end and once
/// more when the connection is resumed; what is known so far travels in `context`.
MHD_Result onRequest(void* server, MHD_Connection* connection, const char* path, const char* method,
                     const char* /*unused*/, const char* piece, std::size_t* pieceSize,
                     void** context) {
    HttpServer& answering = *static_cast<HttpServer*>(server);
    if (*context == nullptr) {
        auto exchange = std::make_unique<Exchange>();
        exchange->connection = connection;
        exchange->request = {method, path, "", false};
        const char* length =
            MHD_lookup_connection_value(connection, MHD_HEADER_KIND, "Content-Length");
        exchange->request.isTooLarge =
            length != nullptr && std::strtoull(length, nullptr, 10) > largestBody;
        *context = exchange.release();
        Exchange& begun = *static_cast<Exchange*>(*context);
        return begun.request.isTooLarge && answering.answer(begun) ? send(connection, *begun.reply)
                                                                   : MHD_YES;
    }
    Exchange& exchange = *static_cast<Exchange*>(*context);
    Request& request = exchange.request;
    if (*pieceSize == 0) {
        return answering.answer(exchange) ? send(connection, *exchange.reply) : MHD_YES;
    }
    // An answer can't be given in the middle of a body, so the rest of it is read and dropped.
    if (request.body.size() + *pieceSize > largestBody) {
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

/// As many connections as there can be descriptors for, within reason.
unsigned connectionLimit() {
    constexpr rlim_t wanted = 4096;
    constexpr rlim_t forFiles = 64;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::max(limit.rlim_cur, std::min(wanted + forFiles, limit.rlim_max));
    setrlimit(RLIMIT_NOFILE, &limit);
    getrlimit(RLIMIT_NOFILE, &limit);
    return static_cast<unsigned>(
        std::min(wanted, std::max(limit.rlim_cur, 2 * forFiles) - forFiles));
}

} // namespace

HttpServer::HttpServer(int listeningDescriptor, Handler handler) : handler_(std::move(handler)) {
    // A client sends its request at once; whatever holds a connection longer is none.
    constexpr unsigned secondsForARequest = 5;
    daemon_ = MHD_start_daemon(
        MHD_USE_AUTO | MHD_USE_INTERNAL_POLLING_THREAD | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr,
        nullptr, &onRequest, this, MHD_OPTION_LISTEN_SOCKET, listeningDescriptor,
        MHD_OPTION_NOTIFY_COMPLETED, &onCompleted, nullptr, MHD_OPTION_CONNECTION_TIMEOUT,
        secondsForARequest, MHD_OPTION_CONNECTION_LIMIT, connectionLimit(), MHD_OPTION_END);
    if (daemon_ == nullptr) {
        throw std::runtime_error("The HTTP server could not be started.");
    }
}

HttpServer::~HttpServer() {
    // The library may not be stopped while connections are suspended.
    const PendingReply leaving = [] { return Reply{503, "{}"}; };
    {
        const std::scoped_lock lock(mutex_);
        handler_ = [&](const Request& /*unused*/) { return leaving; };
        for (Exchange* exchange : waiting_) {
            exchange->ask = leaving;
        }
    }
    advance([] {});
    MHD_stop_daemon(daemon_);
}

bool HttpServer::answer(Exchange& exchange) {
    const std::scoped_lock lock(mutex_);
    if (!exchange.ask) {
        exchange.ask = handler_(exchange.request);
        exchange.reply = exchange.ask();
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
        exchange->reply = exchange->ask();
        if (exchange->reply) {
            MHD_resume_connection(exchange->connection);
        }
        return exchange->reply.has_value();
    });
}

} // namespace fernlow::standin

#include "http_server.h"

#include <microhttpd.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace fernlow::standin {

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

/// Called once when the head is read, once for each piece of the body and once at its end; what it
/// has gathered so far travels in `context`.
MHD_Result onRequest(void* handlerPointer, MHD_Connection* connection, const char* path,
                     const char* method, const char* /*unused*/, const char* piece,
                     std::size_t* pieceSize, void** context) {
    const auto& handler = *static_cast<HttpServer::Handler*>(handlerPointer);
    if (*context == nullptr) {
        auto request = std::make_unique<Request>(Request{method, path, "", false});
        const char* length =
            MHD_lookup_connection_value(connection, MHD_HEADER_KIND, "Content-Length");
        if (length != nullptr && std::strtoull(length, nullptr, 10) > largestBody) {
            request->isTooLarge = true;
            return send(connection, handler(*request));
        }
        *context = request.release();
        return MHD_YES;
    }
    Request& request = *static_cast<Request*>(*context);
    if (*pieceSize == 0) {
        return send(connection, handler(request));
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
    delete static_cast<Request*>(*context);
    *context = nullptr;
}

} // namespace

HttpServer::HttpServer(int listeningDescriptor, Handler handler) : handler_(std::move(handler)) {
    constexpr unsigned secondsForARequest = 60;
    daemon_ = MHD_start_daemon(MHD_USE_AUTO | MHD_USE_INTERNAL_POLLING_THREAD, 0, nullptr, nullptr,
                               &onRequest, &handler_, MHD_OPTION_LISTEN_SOCKET, listeningDescriptor,
                               MHD_OPTION_NOTIFY_COMPLETED, &onCompleted, nullptr,
                               MHD_OPTION_CONNECTION_TIMEOUT, secondsForARequest, MHD_OPTION_END);
    if (daemon_ == nullptr) {
        throw std::runtime_error("The HTTP server could not be started.");
    }
}

HttpServer::~HttpServer() {
    MHD_stop_daemon(daemon_);
}

} // namespace fernlow::standin

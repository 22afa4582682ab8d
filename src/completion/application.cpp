#include "completion/application.h"

#include "transport/connection.h"
#include "transport/socket_client_error.h"

#include <cstddef>

namespace fernlow::completion {

namespace {

/// In bytes: larger than any real list, and parsed within a few hundredths of a second.
constexpr std::size_t maxReplySize = std::size_t{4} * 1024 * 1024;

} // namespace

bool Application::exchange(const AgentRequest& request) {
    try {
        const Connection connection(socketPath_, deadline_);
        connection.send(requestBytes(request));
        body_ = parseReply(connection.receive(maxReplySize)).body;
        return true;
    } catch (const AgentSocketClientError&) {
        return false;
    }
}

std::optional<json::Value> Application::ask(const AgentRequest& request) {
    document_.reset();
    if (!exchange(request)) {
        return std::nullopt;
    }
    document_ = json::Document::parse(body_.view());
    const auto reply = document_ ? document_->root().object() : std::nullopt;
    return reply && reply->boolean("ok") ? reply->find("result") : std::nullopt;
}

} // namespace fernlow::completion

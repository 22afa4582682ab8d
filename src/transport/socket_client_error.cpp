#include "transport/socket_client_error.h"

#include <utility>

namespace fernlow {

namespace {

struct Message {
    std::string operator()(const AgentSocketClientError::notRunning& /*error*/) const {
        return "Fernlow is not running, or it is not listening for agents. Open Fernlow and try "
               "again.";
    }
    std::string operator()(const AgentSocketClientError::pathTooLong& error) const {
        return "That socket path is too long. The limit is " + std::to_string(error.limit) +
               " characters:\n\n" + error.path;
    }
    std::string operator()(const AgentSocketClientError::writeFailed& /*error*/) const {
        return "The request could not be sent to Fernlow.";
    }
    std::string operator()(const AgentSocketClientError::readFailed& /*error*/) const {
        return "Fernlow stopped answering partway through its reply.";
    }
    std::string operator()(const AgentSocketClientError::malformedResponse& /*error*/) const {
        return "Something answered on Fernlow's socket, but not with a reply Fernlow would send.";
    }
};

} // namespace

AgentSocketClientError::AgentSocketClientError(Kind kind)
    : kind_(std::move(kind)), message_(std::visit(Message(), kind_)) {}

} // namespace fernlow

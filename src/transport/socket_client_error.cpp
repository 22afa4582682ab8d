#include "transport/socket_client.h"

namespace fernlow {

AgentSocketClientError AgentSocketClientError::notRunning(const std::string& path) {
    return {Case::notRunning, path,
            "Fernlow is not running, or it is not listening for agents. Open Fernlow and try "
            "again."};
}

AgentSocketClientError AgentSocketClientError::pathTooLong(const std::string& path, int limit) {
    return {Case::pathTooLong, path,
            "That socket path is too long. The limit is " + std::to_string(limit) +
                " characters:\n\n" + path};
}

AgentSocketClientError AgentSocketClientError::writeFailed() {
    return {Case::writeFailed, {}, "The request could not be sent to Fernlow."};
}

AgentSocketClientError AgentSocketClientError::readFailed() {
    return {Case::readFailed, {}, "Fernlow stopped answering partway through its reply."};
}

AgentSocketClientError AgentSocketClientError::malformedResponse() {
    return {Case::malformedResponse,
            {},
            "Something answered on Fernlow's socket, but not with a reply Fernlow would send."};
}

} // namespace fernlow

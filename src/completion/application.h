#pragma once

#include "bytes/byte_buffer.h"
#include "json/document.h"
#include "transport/http.h"

#include <chrono>
#include <optional>
#include <string>
#include <utility>

namespace fernlow::completion {

/// The running application, for questions whose answer is not essential: one that is late or wrong
/// counts as missing, without a message. The application is never started.
class Application {
public:
    Application(std::string socketPath, std::chrono::steady_clock::time_point deadline)
        : socketPath_(std::move(socketPath)), deadline_(deadline) {}

    /// Returns the reply's "result", which is valid until the next call. Throws only
    /// std::bad_alloc.
    std::optional<json::Value> ask(const AgentRequest& request);

private:
    bool exchange(const AgentRequest& request);

    std::string socketPath_;
    std::chrono::steady_clock::time_point deadline_;
    ByteBuffer body_;
    std::optional<json::Document> document_;
};

} // namespace fernlow::completion

#pragma once

#include "bytes/byte_buffer.h"
#include "json/document.h"
#include "transport/http.h"

#include <chrono>
#include <optional>
#include <string>
#include <utility>

namespace fernlow::completion {

/// The running application, asked in passing: an answer that doesn't come in time, or is none, is
/// no answer, and nobody hears of it. The application is never started.
class Application {
public:
    Application(std::string socketPath, std::chrono::steady_clock::time_point deadline)
        : socketPath_(std::move(socketPath)), deadline_(deadline) {}

    /// The "result" of the reply, good until the next question. Never throws but std::bad_alloc.
    std::optional<json::Value> ask(const AgentRequest& request);

private:
    bool exchange(const AgentRequest& request);

    std::string socketPath_;
    std::chrono::steady_clock::time_point deadline_;
    ByteBuffer body_;
    std::optional<json::Document> document_;
};

} // namespace fernlow::completion

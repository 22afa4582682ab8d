#pragma once

#include "bytes/byte_buffer.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace fernlow {

/// A request to the application. The method is "GET" or "POST". The body is a JSON document, or
/// empty for GET.
struct AgentRequest {
    std::string_view method;
    std::string_view path;
    std::string_view body;
};

/// A reply of the application: the status code of the status line, and the body.
struct AgentReply {
    std::int64_t statusCode = 0;
    ByteBuffer body;
};

/// Returns the request as HTTP/1.1: a head with a fixed set of headers, then the body.
std::string requestBytes(const AgentRequest& request);

/// Splits a complete reply into its status code and its body. The headers are ignored: the body is
/// everything after the first blank line. Throws AgentSocketClientError `malformedResponse`.
AgentReply parseReply(ByteBuffer bytes);

inline constexpr std::chrono::seconds minReplyTimeout{5};

/// Returns the timeout for the application's reply to a request with this body: 30 seconds more
/// than its "timeoutSeconds" (600 if it has none), but at least `minTimeout`.
std::chrono::milliseconds replyTimeout(std::string_view body,
                                       std::chrono::milliseconds minTimeout = minReplyTimeout);

} // namespace fernlow

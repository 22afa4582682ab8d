#pragma once

#include "bytes/byte_buffer.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace fernlow {

/// One request: "GET" or "POST", the request path, and a JSON document (empty for GET).
struct AgentRequest {
    std::string_view method;
    std::string_view path;
    std::string_view body;
};

/// One reply. The status code is what the status line says and decides nothing by itself.
struct AgentReply {
    std::int64_t statusCode = 0;
    ByteBuffer body;
};

/// The bytes that carry the request: an HTTP/1.1 head with a fixed set of headers, then the body.
std::string requestBytes(const AgentRequest& request);

/// Splits all that was read into status code and body. No header is looked at: the body is whatever
/// lies behind the first blank line. Throws AgentSocketClientError `malformedResponse`.
AgentReply parseReply(ByteBuffer bytes);

/// How long the application is waited for after a request with this body: its "timeoutSeconds", or
/// 600 where it has none, and 30 more for the answer to arrive, but 5 at least.
std::chrono::seconds replyTimeout(std::string_view body);

} // namespace fernlow

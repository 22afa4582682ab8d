#include "transport/http.h"

#include "bytes/number.h"
#include "json/document.h"
#include "transport/socket_client_error.h"

#include <algorithm>

namespace fernlow {

namespace {

constexpr std::string_view lineBreak = "\r\n";
constexpr std::string_view blankLine = "\r\n\r\n";
/// The timeout of a request that states none. The default of --timeout is the same by coincidence.
constexpr double defaultTimeout = 600;
/// The time for the reply to arrive after the application's own timeout, in seconds.
constexpr double replyMargin = 30;
/// Thirty years. A longer timeout would overflow the units in which clocks count.
constexpr double maxTimeout = 1e9;
constexpr std::string_view timeoutKey = "timeoutSeconds";

/// Removes the next piece that is not empty from the front of the text and returns it. Returns ""
/// at the end of the text.
std::string_view takePiece(std::string_view& text, std::string_view separator) {
    while (text.starts_with(separator)) {
        text.remove_prefix(separator.size());
    }
    const std::string_view piece = text.substr(0, text.find(separator));
    text.remove_prefix(piece.size());
    return piece;
}

} // namespace

std::string requestBytes(const AgentRequest& request) {
    std::string bytes;
    bytes.append(request.method).append(" ").append(request.path).append(" HTTP/1.1\r\n");
    bytes += "Host: localhost\r\n"
             "Content-Type: application/json; charset=utf-8\r\n"
             "Content-Length: ";
    bytes += std::to_string(request.body.size());
    bytes += "\r\nConnection: close\r\n\r\n";
    bytes += request.body;
    return bytes;
}

AgentReply parseReply(ByteBuffer bytes) {
    const std::string_view all = bytes.view();
    const std::size_t headEnd = all.find(blankLine);
    if (headEnd == std::string_view::npos) {
        throw AgentSocketClientError(AgentSocketClientError::malformedResponse{});
    }
    std::string_view head = all.substr(0, headEnd);
    std::string_view statusLine = takePiece(head, lineBreak);
    takePiece(statusLine, " ");
    const auto statusCode = number::readInteger(takePiece(statusLine, " "));
    if (!statusCode) {
        throw AgentSocketClientError(AgentSocketClientError::malformedResponse{});
    }
    bytes.removePrefix(headEnd + blankLine.size());
    return {*statusCode, std::move(bytes)};
}

std::chrono::milliseconds replyTimeout(std::string_view body,
                                       std::chrono::milliseconds minTimeout) {
    const auto document = json::Document::parse(body, {&timeoutKey, 1});
    const auto object = document ? document->root().object() : std::nullopt;
    const auto timeout = object ? object->find(timeoutKey) : std::nullopt;
    const auto literal = timeout ? timeout->numberLiteral() : std::nullopt;
    const double requested = literal ? number::nearestDouble(*literal) : defaultTimeout;
    const double limited = std::clamp(requested + replyMargin, 0.0, maxTimeout);
    const std::chrono::seconds wait(static_cast<std::int64_t>(limited));
    return std::max<std::chrono::milliseconds>(wait, minTimeout);
}

} // namespace fernlow

#include "transport/http.h"

#include "bytes/number.h"
#include "json/document.h"
#include "transport/socket_client_error.h"

#include <algorithm>

namespace fernlow {

namespace {

constexpr std::string_view lineBreak = "\r\n";
constexpr std::string_view blankLine = "\r\n\r\n";
/// For requests that don't say; that --timeout has the same default is a coincidence.
constexpr double usualReplyTimeout = 600;
constexpr std::string_view timeoutKey = "timeoutSeconds";

/// Takes the next piece that isn't empty off the front of the text; empty at the end.
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

std::chrono::seconds replyTimeout(std::string_view body) {
    // Thirty years: no machine waits longer, and clocks count in units that overflow.
    constexpr double longest = 1e9;
    const auto document = json::Document::parse(body, {&timeoutKey, 1});
    const auto object = document ? document->root().object() : std::nullopt;
    const auto timeout = object ? object->find(timeoutKey) : std::nullopt;
    const auto literal = timeout ? timeout->numberLiteral() : std::nullopt;
    const double seconds = literal ? number::nearestDouble(*literal) : usualReplyTimeout;
    return std::chrono::seconds(static_cast<std::int64_t>(std::clamp(seconds + 30, 5.0, longest)));
}

} // namespace fernlow

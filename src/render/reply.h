#pragma once

#include "bytes/byte_buffer.h"
#include "json/document.h"

#include <cstdint>
#include <optional>

namespace fernlow {

/// What a reply comes to: the text to show, to which the caller adds one line break, the stream it
/// belongs on, and the exit status.
struct ReplyOutput {
    ByteBuffer text;
    bool toStandardError = false;
    int exitStatus = 0;
};

/// Decides all of that from the reply's body alone; the status code plays no part. As JSON the text
/// is the body itself, made valid UTF-8 where it isn't.
ReplyOutput presentReply(std::int64_t statusCode, ByteBuffer body, bool wantsJSON);

/// 5 refused; 4 the wait expired; 1 something failed; 0 otherwise.
int replyExitStatus(bool ok, const std::optional<json::Object>& result);

/// The text that shows a person a reply that was carried out. `result` is the reply's "result"
/// where that is an object. Throws TextTooLong when the text would have no end.
ByteBuffer renderResult(const std::optional<json::Object>& result, const json::Object& reply);

} // namespace fernlow

#pragma once

#include "bytes/byte_buffer.h"

#include <cstdint>

namespace fernlow {

/// The outcome of a reply: the text, without the line break that the caller adds; the stream for
/// the text; and the exit status of the program.
struct ReplyOutput {
    ByteBuffer text;
    bool toStandardError = false;
    int exitStatus = 0;
};

/// Determines the outcome from the reply's body; the status code has no influence. With `wantsJSON`
/// the text is the body itself, with ill-formed UTF-8 replaced.
ReplyOutput presentReply(std::int64_t statusCode, ByteBuffer body, bool wantsJSON);

} // namespace fernlow

#pragma once

#include "bytes/byte_buffer.h"

#include <cstdint>

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

} // namespace fernlow

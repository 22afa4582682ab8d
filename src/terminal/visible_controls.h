#pragma once

#include "bytes/byte_buffer.h"

#include <optional>
#include <string_view>

namespace fernlow {

/// Returns a copy of the text that is safe to write to a terminal, or nothing if the text is safe
/// already.
///
/// File names and compiler messages come from downloaded projects, and a terminal obeys every
/// control sequence that it reads. A control sequence can move the cursor over earlier output, or
/// write to the clipboard. In the copy, one U+FFFD replaces each of the following:
/// - a C0 control character, except the tab, the line break, and a carriage return before a line
///   break or at the end of the text;
/// - DEL, or a C1 control character;
/// - a control that changes the writing direction of the text after it (U+202A to U+202E, U+2066 to
///   U+2069). The marks U+200E, U+200F and U+061C stay, because they affect only their neighbours;
/// - a sequence of bytes that is not valid UTF-8. An 8-bit terminal would read some of these
///   bytes as C1 control characters.
///
/// Colour sequences (ESC "[", digits and ";", "m") stay. If a colour is still on at the end of the
/// text, a reset is added.
std::optional<ByteBuffer> withVisibleControls(std::string_view text);

} // namespace fernlow

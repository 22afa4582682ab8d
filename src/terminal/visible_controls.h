#pragma once

#include "bytes/byte_buffer.h"

#include <optional>
#include <string_view>

namespace fernlow {

/// The text as a terminal may be handed it. Names of files and messages of compilers come from
/// projects that somebody has downloaded, and a terminal obeys whatever control sequence it reads:
/// it moves the cursor over what was printed, or writes to the clipboard.
///
/// Control characters become visible, each as one U+FFFD: C0 except the tab and the line break (and
/// the carriage return in front of one), DEL, C1, and the controls that turn the direction of
/// writing (U+202A to U+202E, U+2066 to U+2069; the marks U+200E, U+200F and U+061C, which turn
/// nothing but their neighbours, pass). So does what is not valid UTF-8, each sequence as one: an
/// 8-bit terminal would take some of its bytes for C1. Colours (ESC "[", digits and ";", "m") stay,
/// and end with the text. Gives nothing where the text is fit as it is.
std::optional<ByteBuffer> withVisibleControls(std::string_view text);

} // namespace fernlow

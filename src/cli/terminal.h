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
/// the carriage return in front of one), DEL, C1, and what embeds, overrides or isolates a
/// direction of writing (U+202A to U+202E, U+2066 to U+2069). The marks U+200E, U+200F and U+061C,
/// which names in Arabic and Hebrew need, pass. So does each ill-formed sequence, which an 8-bit
/// terminal might obey, become one U+FFFD. Colours (ESC "[", digits and ";", "m") stay, and end
/// with the text. Gives nothing where the text is fit as it is.
std::optional<ByteBuffer> withVisibleControls(std::string_view text);

} // namespace fernlow

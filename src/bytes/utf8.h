#pragma once

#include "bytes/byte_buffer.h"

#include <cstddef>
#include <string_view>

namespace fernlow::utf8 {

inline constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

/// The bytes of one character, or of a part of one.
struct Sequence {
    std::size_t length;
    bool wellFormed;
};

/// The first sequence of a text that is not empty; where it is ill-formed, the longest part that
/// some well-formed sequence begins with, one byte at least.
Sequence firstSequence(std::string_view text);

/// Whether the whole text is well-formed UTF-8: no overlong forms, no surrogates, nothing above
/// U+10FFFF.
bool isWellFormed(std::string_view text);

/// The text with one U+FFFD in place of each ill-formed sequence. A sequence that starts well and
/// breaks off counts as one (the Unicode standard's "maximal subpart" practice); any other stray
/// byte counts alone.
ByteBuffer replaceIllFormed(std::string_view text);

} // namespace fernlow::utf8

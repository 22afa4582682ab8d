#pragma once

#include "bytes/byte_buffer.h"

#include <cstddef>
#include <string_view>

namespace fernlow::utf8 {

inline constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

/// One character or one ill-formed part of a text; its length is in bytes.
struct Sequence {
    std::size_t length;
    bool wellFormed;
};

/// Returns the first sequence of the text, which must not be empty. An ill-formed sequence is the
/// longest prefix that a well-formed sequence could begin with, or a single byte.
Sequence firstSequence(std::string_view text);

/// Returns whether the whole text is well-formed UTF-8: it contains no overlong forms, no
/// surrogates and no values above U+10FFFF.
bool isWellFormed(std::string_view text);

/// Returns the text with each ill-formed sequence replaced by one U+FFFD. A truncated character is
/// one sequence (the Unicode standard's "maximal subpart" practice); any other invalid byte is a
/// sequence of its own.
ByteBuffer replaceIllFormed(std::string_view text);

} // namespace fernlow::utf8

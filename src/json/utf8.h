#pragma once

#include "json/byte_buffer.h"

#include <string>
#include <string_view>

namespace fernlow::utf8 {

/// Whether the whole text is well-formed UTF-8: no overlong forms, no surrogates, nothing above
/// U+10FFFF.
bool isWellFormed(std::string_view text);

/// The text with one U+FFFD in place of each ill-formed sequence. A sequence that starts well and
/// breaks off counts as one (the Unicode standard's "maximal subpart" practice); any other stray
/// byte counts alone.
ByteBuffer replaceIllFormed(std::string_view text);

} // namespace fernlow::utf8

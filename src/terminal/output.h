#pragma once

#include <string_view>

namespace fernlow {

/// Writes the complete text and a line break to a descriptor, and waits whenever a write would
/// block. Returns false if not everything could be written (a full disk, a closed stream).
bool writeLine(int descriptor, std::string_view text);

/// Writes like writeLine(), but passes the text through withVisibleControls() if the descriptor is
/// a terminal.
bool writeTextLine(int descriptor, std::string_view text);

} // namespace fernlow

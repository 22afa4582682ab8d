#pragma once

#include <string_view>

namespace fernlow {

/// Writes the text and a line break to a descriptor, all of it, waiting where it would block.
/// Gives false when the descriptor takes less (a full disk, a closed stream).
bool writeLine(int descriptor, std::string_view text);

/// The same for a text that a person reads, which a terminal gets withVisibleControls(). Nothing is
/// changed on the way to a file or a pipe.
bool writeTextLine(int descriptor, std::string_view text);

} // namespace fernlow

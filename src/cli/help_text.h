#pragma once

#include <string>

namespace fernlow {

/// The help text: the whole manual, as UTF-8, without a line break after its last line.
std::string usageText();

} // namespace fernlow

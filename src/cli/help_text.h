#pragma once

#include <string>

namespace fernlow {

/// Returns the help text, which is the whole manual, in UTF-8 and without a final line break.
std::string usageText();

} // namespace fernlow

#pragma once

#include "cli/words.h"

#include <cstdint>

namespace fernlow {

inline constexpr std::int64_t defaultSettleMilliseconds = 400;
inline constexpr std::int64_t defaultTimeoutSeconds = 600;

/// --settle: how long, in milliseconds, nothing must happen before the application is idle.
/// Brought into the range 0 to 60000.
std::int64_t takeSettle(WordList& words);

/// --timeout: how long to wait for the work, in seconds. Brought into the range 0 to 86400, so it
/// is always finite.
double takeTimeout(WordList& words);

/// --limit: how many rows a reply may hold. 500 when not given, brought into the range 1 to 5000.
std::int64_t takePageSize(WordList& words);

} // namespace fernlow

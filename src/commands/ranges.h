#pragma once

#include "commands/words.h"

#include <cstdint>

namespace fernlow {

inline constexpr std::int64_t defaultSettleMilliseconds = 400;
inline constexpr std::int64_t longestSettleMilliseconds = 60000;
inline constexpr std::int64_t defaultTimeoutSeconds = 600;
inline constexpr std::int64_t longestTimeoutSeconds = 86400;
inline constexpr std::int64_t defaultPageSize = 500;
inline constexpr std::int64_t smallestPageSize = 1;
inline constexpr std::int64_t largestPageSize = 5000;

/// --settle: how long, in milliseconds, nothing must happen before the application is idle. Brought
/// into its range, which begins at 0.
std::int64_t takeSettle(WordList& words);

/// --timeout: how long to wait for the work, in seconds. Brought into its range, which begins at 0,
/// so it is always finite.
double takeTimeout(WordList& words);

/// --limit: how many rows a reply may hold. Brought into its range.
std::int64_t takePageSize(WordList& words);

} // namespace fernlow

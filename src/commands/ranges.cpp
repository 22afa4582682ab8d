#include "commands/ranges.h"

#include <algorithm>

namespace fernlow {

std::int64_t takeSettle(WordList& words) {
    const auto given = words.takeWholeNumber("--settle");
    return std::clamp<std::int64_t>(given.value_or(defaultSettleMilliseconds), 0,
                                    longestSettleMilliseconds);
}

double takeTimeout(WordList& words) {
    const auto given = words.takeDecimalNumber("--timeout");
    const double seconds = given.value_or(static_cast<double>(defaultTimeoutSeconds));
    // The comparison is also what turns "nan" into 0.
    return seconds >= 0 ? std::min(seconds, static_cast<double>(longestTimeoutSeconds)) : 0;
}

std::int64_t takePageSize(WordList& words) {
    return std::clamp(words.takeWholeNumber("--limit").value_or(defaultPageSize), smallestPageSize,
                      largestPageSize);
}

} // namespace fernlow

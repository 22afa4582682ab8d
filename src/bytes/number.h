#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace fernlow::number {

/// Parses a signed 64-bit integer: an optional "+" or "-", then ASCII digits and nothing else.
/// Returns nothing for any other text and outside the range.
std::optional<std::int64_t> readInteger(std::string_view text);

/// Returns the value of a JSON number literal as decimal digits with an optional leading "-", if it
/// is a whole number: "2" for "2.0", "100" for "1e2", "0" for "-0". The digits are exact. Returns
/// nothing for fractions and outside the range of a double. Does not validate the literal.
std::optional<std::string> wholeDigits(std::string_view literal);

/// Returns the double that is nearest to a number literal: infinity if the literal is too large for
/// a double, zero if it is too small.
double nearestDouble(std::string_view literal);

/// Returns the shortest decimal text that reads back as the same double, which must be finite.
/// Whole numbers have no decimal point. Only fractions below a millionth have an exponent.
std::string shortestDecimal(double value);

} // namespace fernlow::number

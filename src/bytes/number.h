#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace fernlow::number {

/// A whole number as people and protocols write it: an optional "+" or "-" and ASCII digits, within
/// 64 bits.
std::optional<std::int64_t> readInteger(std::string_view text);

/// The value of a JSON number literal (the grammar is taken for granted) as plain decimal digits
/// with an optional leading "-", when it is whole: "2.0" gives "2", "1e2" gives "100", "-0" gives
/// "0". Exact at any size up to the range of a double. Absent for fractions and beyond that range.
std::optional<std::string> wholeDigits(std::string_view literal);

/// The double nearest to a number literal; infinite beyond the range of a double, zero below it.
double nearestDouble(std::string_view literal);

/// The shortest decimal text that reads back as the same (finite) double. A whole number has no
/// point and no exponent, and neither has an ordinary fraction; only those below a millionth are
/// written with an exponent.
std::string shortestDecimal(double value);

} // namespace fernlow::number

#include "bytes/number.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <system_error>

namespace fernlow::number {

namespace {

constexpr std::int64_t longestWhole = std::numeric_limits<double>::max_exponent10 + 1;

/// With as many decimals in scientific notation every double reads back as itself.
constexpr int maximumDecimals = std::numeric_limits<double>::max_digits10 - 1;

/// Beyond it no literal that fits in memory is a whole number within range, save zero.
constexpr std::int64_t furthestExponent = std::int64_t{1} << 32;

void dropZerosBefore(std::string_view& digits) {
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
}

/// Gives how many there were.
std::size_t dropZerosBehind(std::string_view& digits) {
    const std::size_t kept = digits.find_last_not_of('0') + 1;
    const std::size_t dropped = digits.size() - kept;
    digits.remove_suffix(dropped);
    return dropped;
}

} // namespace

std::optional<std::int64_t> readInteger(std::string_view text) {
    // from_chars knows "-" but not "+".
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return std::nullopt;
        }
    }
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc{} || result.ptr != end) {
        return std::nullopt;
    }
    return number;
}

std::optional<std::string> wholeDigits(std::string_view literal) {
    const bool negative = literal.starts_with('-');
    literal.remove_prefix(negative ? 1 : 0);
    const std::string_view mantissa = literal.substr(0, literal.find_first_of("eE"));
    literal.remove_prefix(std::min(mantissa.size() + 1, literal.size()));
    std::string_view whole = mantissa.substr(0, mantissa.find('.'));
    std::string_view fraction = mantissa.substr(std::min(whole.size() + 1, mantissa.size()));

    // Nothing is copied before the digits are known to be few: a literal may be as long as a reply.
    dropZerosBehind(fraction);
    const auto decimals = std::ssize(fraction);
    const std::size_t zerosOfWhole = fraction.empty() ? dropZerosBehind(whole) : 0;
    dropZerosBefore(whole);
    if (whole.empty()) {
        dropZerosBefore(fraction);
    }
    if (whole.empty() && fraction.empty()) {
        return "0";
    }
    const auto exponent = literal.empty() ? 0 : readInteger(literal);
    if (!exponent || *exponent > furthestExponent || *exponent < -furthestExponent) {
        return std::nullopt;
    }
    const std::int64_t zeros = *exponent - decimals + static_cast<std::int64_t>(zerosOfWhole);
    if (zeros < 0 || std::ssize(whole) + std::ssize(fraction) + zeros > longestWhole) {
        return std::nullopt;
    }
    std::string digits(negative ? "-" : "");
    digits.append(whole).append(fraction).append(static_cast<std::size_t>(zeros), '0');
    return digits;
}

double nearestDouble(std::string_view literal) {
    // strtod rather than from_chars: it gives infinity and zero beyond the range, and libc++ has no
    // from_chars for doubles. No locale is ever set in this process, so the point is a point.
    return std::strtod(std::string(literal).c_str(), nullptr);
}

std::string shortestDecimal(double value) {
    // Not to_chars: it needs a recent macOS, and here it would have the mathematics library loaded
    // at every start.
    std::array<char, 64> text{};
    int decimals = 0;
    do {
        std::snprintf(text.data(), text.size(), "%.*e", decimals, value);
    } while (std::strtod(text.data(), nullptr) != value && ++decimals <= maximumDecimals);

    std::string scientific(text.data());
    if (auto digits = wholeDigits(scientific)) {
        return *std::move(digits);
    }
    if (std::abs(value) < 1e-6) {
        return scientific;
    }
    const auto exponent =
        readInteger(std::string_view(scientific).substr(scientific.find('e') + 1));
    std::snprintf(text.data(), text.size(), "%.*f",
                  decimals - static_cast<int>(exponent.value_or(0)), value);
    return text.data();
}

} // namespace fernlow::number

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

/// The number of digits before the decimal point of the largest double.
constexpr std::int64_t maxWholeDigits = std::numeric_limits<double>::max_exponent10 + 1;

/// In scientific notation, every double written with this many decimals reads back unchanged.
constexpr int maxDecimals = std::numeric_limits<double>::max_digits10 - 1;

/// With a larger exponent, no literal that fits in memory is a whole number within the range of a
/// double, except zero.
constexpr std::int64_t maxExponent = std::int64_t{1} << 32;

void removeLeadingZeros(std::string_view& digits) {
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
}

/// Returns the number of removed zeros.
std::size_t removeTrailingZeros(std::string_view& digits) {
    const std::size_t kept = digits.find_last_not_of('0') + 1;
    const std::size_t removed = digits.size() - kept;
    digits.remove_suffix(removed);
    return removed;
}

} // namespace

std::optional<std::int64_t> readInteger(std::string_view text) {
    // from_chars accepts "-" but not "+".
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

    // Copies digits only once it is certain that there are few: a literal can be as long as a
    // reply.
    removeTrailingZeros(fraction);
    const auto decimals = std::ssize(fraction);
    const std::size_t wholeZeros = fraction.empty() ? removeTrailingZeros(whole) : 0;
    removeLeadingZeros(whole);
    if (whole.empty()) {
        removeLeadingZeros(fraction);
    }
    if (whole.empty() && fraction.empty()) {
        return "0";
    }
    const auto exponent = literal.empty() ? 0 : readInteger(literal);
    if (!exponent || *exponent > maxExponent || *exponent < -maxExponent) {
        return std::nullopt;
    }
    const std::int64_t zeros = *exponent - decimals + static_cast<std::int64_t>(wholeZeros);
    if (zeros < 0 || std::ssize(whole) + std::ssize(fraction) + zeros > maxWholeDigits) {
        return std::nullopt;
    }
    std::string digits(negative ? "-" : "");
    digits.append(whole).append(fraction).append(static_cast<std::size_t>(zeros), '0');
    return digits;
}

double nearestDouble(std::string_view literal) {
    // libc++ has no from_chars for doubles. strtod also returns infinity or zero outside the range.
    // The process never sets a locale, so the decimal point is always ".".
    return std::strtod(std::string(literal).c_str(), nullptr);
}

std::string shortestDecimal(double value) {
    // Not to_chars: it needs a recent macOS, and on Linux it would load the mathematics library at
    // every start.
    std::array<char, 64> text{};
    int decimals = 0;
    for (; decimals <= maxDecimals; ++decimals) {
        std::snprintf(text.data(), text.size(), "%.*e", decimals, value);
        if (std::strtod(text.data(), nullptr) == value) {
            break;
        }
    }

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

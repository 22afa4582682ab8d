#include "commands/option.h"

#include "bytes/number.h"
#include "commands/usage_error.h"

#include <algorithm>
#include <cstdlib>

namespace fernlow {

namespace {

[[noreturn]] void fail(const Option& option, std::string_view text) {
    throw AgentCLIUsageError(
        AgentCLIUsageError::notANumber{std::string(option.word), std::string(text)});
}

std::int64_t readWholeNumber(const Option& option, const std::string& text) {
    const auto number = number::readInteger(text);
    if (!number) {
        fail(option, text);
    }
    return *number;
}

std::uint64_t readCursor(const Option& option, const std::string& text) {
    const std::int64_t cursor = readWholeNumber(option, text);
    if (cursor < 0) {
        fail(option, text);
    }
    return static_cast<std::uint64_t>(cursor);
}

double readDecimal(const Option& option, const std::string& text) {
    // strtod skips leading blanks and reads hexadecimal and "nan(...)"; none of them is a decimal
    // number here. No locale is ever set in this process, so the point is a point.
    if (text.empty() || text.find_first_of(" \t\n\v\f\rxX(") != std::string::npos) {
        fail(option, text);
    }
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (end != text.c_str() + text.size()) {
        fail(option, text);
    }
    return number;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of(" \t"), text.size());
    text.remove_prefix(first);
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

/// `typed` is what to report.
std::size_t placeOf(const Option& option, std::string_view word, std::string_view typed) {
    const auto& choices = option.value.choices;
    const auto found = std::find(choices.begin(), choices.end(), word);
    if (found == choices.end()) {
        fail(option, typed);
    }
    return static_cast<std::size_t>(found - choices.begin());
}

} // namespace

std::size_t choiceIn(const Option& option, const std::string& text) {
    return placeOf(option, text, text);
}

std::vector<std::size_t> choicesIn(const Option& option, const std::string& text) {
    std::vector<std::size_t> places;
    for (std::size_t begin = 0; !text.empty() && begin <= text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        const auto piece = std::string_view(text).substr(begin, end - begin);
        places.push_back(placeOf(option, trimmed(piece), piece));
        begin = end + 1;
    }
    return places;
}

std::int64_t WholeNumber::read(const std::string& text) const {
    return std::clamp(readWholeNumber(*this, text), value.range.min, value.range.max);
}

double Decimal::read(const std::string& text) const {
    double number = readDecimal(*this, text);
    const auto& [min, max, defaultValue] = value.range;
    // Negated, so that "nan" is taken for too little.
    if (min != NumberRange::noMin && !(number >= static_cast<double>(min))) {
        number = static_cast<double>(min);
    }
    if (max != NumberRange::noMax) {
        number = std::min(number, static_cast<double>(max));
    }
    return number;
}

std::uint64_t Cursor::read(const std::string& text) const {
    return readCursor(*this, text);
}

void Option::validate(const std::string& text) const {
    switch (value.kind) {
    case ValueKind::wholeNumber:
        readWholeNumber(*this, text);
        return;
    case ValueKind::decimal:
        readDecimal(*this, text);
        return;
    case ValueKind::logCursor:
        readCursor(*this, text);
        return;
    case ValueKind::choiceList:
        choicesIn(*this, text);
        return;
    default:
        return;
    }
}

} // namespace fernlow

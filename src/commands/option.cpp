#include "commands/option.h"

#include "bytes/number.h"
#include "commands/usage_error.h"

#include <algorithm>
#include <cstdlib>

namespace fernlow {

namespace {

AgentCLIUsageError notANumber(const Option& option, std::string_view text) {
    return AgentCLIUsageError(
        AgentCLIUsageError::notANumber{std::string(option.word), std::string(text)});
}

std::int64_t readWholeNumber(const Option& option, const std::string& text) {
    const auto number = number::readInteger(text);
    if (!number) {
        throw notANumber(option, text);
    }
    return *number;
}

std::uint64_t readCursor(const Option& option, const std::string& text) {
    const std::int64_t cursor = readWholeNumber(option, text);
    if (cursor < 0) {
        throw notANumber(option, text);
    }
    return static_cast<std::uint64_t>(cursor);
}

double readDecimal(const Option& option, const std::string& text) {
    // strtod also accepts leading blanks, hexadecimal digits and "nan(...)", which are not decimal
    // numbers here. The decimal point is always ".", because this process never sets a locale.
    const bool hasOtherSyntax = text.find_first_of(" \t\n\v\f\rxX(") != std::string::npos;
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (text.empty() || hasOtherSyntax || end != text.c_str() + text.size()) {
        throw notANumber(option, text);
    }
    return number;
}

template <class Number>
Number clamped(Number number, const NumberRange& range) {
    // The negated comparison is also true for "nan", which therefore becomes the minimum.
    if (range.min && !(number >= static_cast<Number>(*range.min))) {
        return static_cast<Number>(*range.min);
    }
    if (range.max && number > static_cast<Number>(*range.max)) {
        return static_cast<Number>(*range.max);
    }
    return number;
}

std::string_view trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

/// Returns the index of the choice. Throws `notANumber` with the typed text if there is none.
std::size_t indexOf(std::string_view choice, const Option& option, std::string_view typed) {
    const auto& choices = option.value.choices;
    const auto found = std::find(choices.begin(), choices.end(), choice);
    if (found == choices.end()) {
        throw notANumber(option, typed);
    }
    return static_cast<std::size_t>(found - choices.begin());
}

} // namespace

std::size_t indexOfChoice(const Option& option, const std::string& text) {
    return indexOf(text, option, text);
}

std::vector<std::size_t> indexesOfChoices(const Option& option, const std::string& text) {
    std::vector<std::size_t> indexes;
    if (text.empty()) {
        return indexes;
    }
    std::size_t begin = 0;
    while (begin <= text.size()) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        const auto piece = std::string_view(text).substr(begin, end - begin);
        indexes.push_back(indexOf(trimmed(piece), option, piece));
        begin = end + 1;
    }
    return indexes;
}

std::int64_t WholeNumber::read(const std::string& text) const {
    return clamped(readWholeNumber(*this, text), value.range);
}

double Decimal::read(const std::string& text) const {
    return clamped(readDecimal(*this, text), value.range);
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
        indexesOfChoices(*this, text);
        return;
    default:
        return;
    }
}

} // namespace fernlow

#pragma once

#include "commands/wire_names.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Options as typed constants. A parser asks for the constant and gets a value of its type;
/// completion and the tests of the pages read from it what it means to a person.
namespace fernlow {

/// What the value of an option, or a word that is no option, stands for.
enum class ValueKind {
    /// A flag: no value follows.
    flag,
    wholeNumber,
    decimal,
    /// Only the person who types it can know it.
    text,
    /// One of the named choices.
    choice,
    /// Any of the named choices, separated by commas; may be empty.
    choiceList,
    json,
    file,
    folder,
    /// The first of those that only the application knows.
    project,
    /// A project that is not a framework, which has a fixed group.
    movableProject,
    /// A group that a project can be moved to.
    group,
    /// A group that a person made, so that it can be changed.
    userGroup,
    language,
    /// The file extension of a language that a person has defined.
    extension,
    /// key=value, with a setting's name as the key: of a project, of the defaults, of a file, of a
    /// row of a collection.
    setting,
    defaultSetting,
    fileSetting,
    rowSetting,
    rowId,
    logCursor,
};

// The empty initialisers let tables leave members out without a warning.
// NOLINTBEGIN(readability-redundant-member-init)

/// What a number is brought into; one without a bound on a side is sent as typed there.
struct NumberRange {
    static constexpr std::int64_t noMin = std::numeric_limits<std::int64_t>::min();
    static constexpr std::int64_t noMax = std::numeric_limits<std::int64_t>::max();

    std::int64_t min = noMin;
    std::int64_t max = noMax;
    /// Used when the option isn't given.
    std::optional<std::int64_t> defaultValue{};
};

struct ValueDescription {
    ValueKind kind = ValueKind::flag;
    /// What stands for it in a synopsis, without angle brackets; the unit of a number that has one.
    std::string_view name{};
    /// What holds when it isn't given, in a few words; a number has that in its range.
    std::string_view defaultText{};
    std::span<const std::string_view> choices{};
    NumberRange range{};
};

/// What all options have. Two with one word mean different things to different commands.
struct Option {
    /// With its dashes.
    std::string_view word;
    ValueDescription value{};
    /// One line without a full stop, as are all summaries here.
    std::string_view summary;
    /// The option that contradicts this one. Only one option of a pair names the other.
    const Option* opposite = nullptr;

    /// Throws `notANumber` when no command can make anything of the text: a number that is none, a
    /// list with a piece that is no choice. What is one of several choices, or JSON, only its
    /// parser looks at.
    void validate(const std::string& text) const;
};

// NOLINTEND(readability-redundant-member-init)

/// An option that was taken off a command line, with its value; a flag's is empty.
struct TakenOption {
    const Option* option;
    std::string value;
};

struct Flag : Option {
    constexpr Flag(std::string_view name, std::string_view meaning,
                   const Option* contrary = nullptr)
        : Option{name, {}, meaning, contrary} {}
};

/// A text that is sent as it was typed.
struct Text : Option {
    using Value = std::string;
    constexpr Text(std::string_view name, ValueDescription form, std::string_view meaning)
        : Option{name, form, meaning, {}} {}
    [[nodiscard]] static std::string read(const std::string& text) { return text; }
};

/// A text that is sent as a resolved path.
struct Path : Option {
    constexpr Path(std::string_view name, ValueDescription form, std::string_view meaning)
        : Option{name, form, meaning, {}} {}
};

/// An optional sign and ASCII digits, within 64 bits; brought into its range.
struct WholeNumber : Option {
    using Value = std::int64_t;
    constexpr WholeNumber(std::string_view name, std::string_view unit, NumberRange range,
                          std::string_view meaning)
        : Option{name, {ValueKind::wholeNumber, unit, {}, {}, range}, meaning, {}} {}
    [[nodiscard]] std::int64_t read(const std::string& text) const;
    /// What holds when it isn't given; 0 for one that has no such number.
    [[nodiscard]] constexpr std::int64_t defaultValue() const {
        return value.range.defaultValue.value_or(0);
    }
};

/// A decimal number, "inf" and "nan" included, brought into its range: beyond the range of a double
/// it is infinite, and "nan" becomes the least where there is one.
struct Decimal : Option {
    using Value = double;
    constexpr Decimal(std::string_view name, std::string_view unit, NumberRange range,
                      std::string_view meaning)
        : Option{name, {ValueKind::decimal, unit, {}, {}, range}, meaning, {}} {}
    [[nodiscard]] double read(const std::string& text) const;
    /// What holds when it isn't given; 0 for one that has no such number.
    [[nodiscard]] constexpr double defaultValue() const {
        return static_cast<double>(value.range.defaultValue.value_or(0));
    }
};

/// A place in the log: a whole number that is not negative.
struct Cursor : Option {
    using Value = std::uint64_t;
    constexpr Cursor(std::string_view name, std::string_view meaning,
                     std::string_view defaultText = {})
        : Option{name, {ValueKind::logCursor, "cursor", defaultText}, meaning, {}} {}
    [[nodiscard]] std::uint64_t read(const std::string& text) const;
};

/// The places among the option's choices of those that a text names, separated by commas and
/// perhaps blanks; none in an empty text. Throws `notANumber` of a piece that names none, as it was
/// typed.
std::vector<std::size_t> choicesIn(const Option& option, const std::string& text);

/// The place of the one that the whole text names, matched exactly; else throws `notANumber`.
std::size_t choiceIn(const Option& option, const std::string& text);

template <WireEnum Enumeration>
constexpr ValueDescription choiceOf(std::string_view name, std::string_view defaultText = {}) {
    return {ValueKind::choice, name, defaultText, wireNames<Enumeration>};
}

/// One case of an enumeration.
template <WireEnum Enumeration>
struct Choice : Option {
    using Value = Enumeration;
    constexpr Choice(std::string_view name, std::string_view meaning,
                     std::string_view defaultText = {})
        : Option{name, choiceOf<Enumeration>("name", defaultText), meaning, {}} {}
    [[nodiscard]] Enumeration read(const std::string& text) const {
        return static_cast<Enumeration>(choiceIn(*this, text));
    }
};

/// Any cases of an enumeration, in the order in which they are named.
template <WireEnum Enumeration>
struct ChoiceList : Option {
    using Value = std::vector<Enumeration>;
    constexpr ChoiceList(std::string_view name, std::string_view meaning,
                         std::string_view defaultText)
        : Option{name,
                 {ValueKind::choiceList, "lists", defaultText, wireNames<Enumeration>},
                 meaning,
                 {}} {}
    [[nodiscard]] Value read(const std::string& text) const {
        Value cases;
        for (const std::size_t place : choicesIn(*this, text)) {
            cases.push_back(static_cast<Enumeration>(place));
        }
        return cases;
    }
};

} // namespace fernlow

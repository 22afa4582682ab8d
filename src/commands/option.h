#pragma once

#include "commands/wire_names.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Options as typed constants. A parser asks for a constant and receives a value of the constant's
/// type. Completion and the tests of the pages read its description.
namespace fernlow {

/// The meaning of an option's value, or of an operand.
enum class ValueKind {
    /// The option is a flag: it has no value.
    flag,
    wholeNumber,
    decimal,
    /// Free text, which completion cannot offer.
    text,
    /// One of the choices.
    choice,
    /// Any of the choices, separated by commas. May be empty.
    choiceList,
    json,
    file,
    folder,
    // Only the application knows the values of the following kinds.
    project,
    /// A project that is not a framework, which has a fixed group.
    movableProject,
    /// A group that a project can be moved to.
    group,
    /// A group that a person made, so that it can be changed.
    userGroup,
    language,
    /// The file extension of a user-defined language.
    extension,
    /// key=value, where the key is the name of a setting: of a project, of the defaults, of a file,
    /// or of a row of a collection.
    setting,
    defaultSetting,
    fileSetting,
    rowSetting,
    rowId,
    logCursor,
};

/// Returns whether only the application knows the values of the kind.
constexpr bool isKnownOnlyToApplication(ValueKind kind) {
    return kind >= ValueKind::project;
}

// The empty initialisers let tables leave members out without a warning.
// NOLINTBEGIN(readability-redundant-member-init)

/// The range a number is clamped to. A missing bound leaves that side unclamped.
struct NumberRange {
    std::optional<std::int32_t> min{};
    std::optional<std::int32_t> max{};
    /// The number used when the option is not given.
    std::optional<std::int32_t> defaultValue{};
};

/// Describes the value of an option, or an operand.
struct ValueDescription {
    ValueKind kind = ValueKind::flag;
    /// The placeholder in a synopsis, without angle brackets; for a number with a unit, the unit.
    std::string_view name{};
    /// The default in a few words. Numbers use range.defaultValue instead.
    std::string_view defaultText{};
    std::span<const std::string_view> choices{};
    NumberRange range{};
};

/// The members that all types of option share. Several commands may have different options with the
/// same word, so an option is identified by its address.
struct Option {
    /// The word on the command line, with its dashes.
    std::string_view word;
    ValueDescription value{};
    /// One line without a full stop.
    std::string_view summary;
    /// The option that contradicts this one. Only one option of a pair names the other.
    const Option* opposite = nullptr;

    /// Throws AgentCLIUsageError `notANumber` for a malformed number, or for a list with an unknown
    /// choice. Does not validate a single choice or a JSON text: a parser does so when it reads
    /// them, because other mistakes are reported first.
    void validate(const std::string& text) const;
};

// NOLINTEND(readability-redundant-member-init)

/// An option taken from a command line, with its value. A flag's value is empty.
struct TakenOption {
    const Option* option;
    std::string value;
};

struct Flag : Option {
    constexpr Flag(std::string_view name, std::string_view meaning,
                   const Option* oppositeFlag = nullptr)
        : Option{name, {}, meaning, oppositeFlag} {}
};

/// Returns a copy of the option with another summary and another text for its default.
template <std::derived_from<Option> Type>
constexpr Type describedAs(Type option, std::string_view summary,
                           std::string_view defaultText = {}) {
    option.summary = summary;
    option.value.defaultText = defaultText;
    return option;
}

/// A text that is sent as typed.
struct Text : Option {
    using Value = std::string;
    constexpr Text(std::string_view name, ValueDescription description, std::string_view meaning)
        : Option{name, description, meaning} {}
    [[nodiscard]] static std::string read(const std::string& text) { return text; }

    /// Returns this option with values of another kind.
    [[nodiscard]] constexpr Text ofKind(ValueKind kind) const {
        Text variant = *this;
        variant.value.kind = kind;
        return variant;
    }
};

/// A text that is sent as a resolved path (see resolvePath()).
struct Path : Option {
    constexpr Path(std::string_view name, ValueDescription description, std::string_view meaning)
        : Option{name, description, meaning} {}

    /// Returns the option whose value is sent as typed.
    [[nodiscard]] constexpr Text asTyped() const { return {word, value, summary}; }
};

/// An optional sign and ASCII digits, within 64 bits. Clamped to the range.
struct WholeNumber : Option {
    using Value = std::int64_t;
    constexpr WholeNumber(std::string_view name, std::string_view unit, NumberRange range,
                          std::string_view meaning)
        : Option{name, {ValueKind::wholeNumber, unit, {}, {}, range}, meaning} {}
    [[nodiscard]] std::int64_t read(const std::string& text) const;
    /// Returns the number used when the option is not given, or 0 if there is none.
    [[nodiscard]] constexpr std::int64_t defaultValue() const {
        return value.range.defaultValue.value_or(0);
    }
};

/// A decimal number, "inf" or "nan". Clamped to the range: "nan" becomes the minimum, if there is
/// one. A number beyond the range of a double is infinite.
struct Decimal : Option {
    using Value = double;
    constexpr Decimal(std::string_view name, std::string_view unit, NumberRange range,
                      std::string_view meaning)
        : Option{name, {ValueKind::decimal, unit, {}, {}, range}, meaning} {}
    [[nodiscard]] double read(const std::string& text) const;
    /// Returns the number used when the option is not given, or 0 if there is none.
    [[nodiscard]] constexpr double defaultValue() const {
        return value.range.defaultValue.value_or(0);
    }

    /// Returns this option with the same default but without a minimum and a maximum.
    [[nodiscard]] constexpr Decimal unbounded() const {
        return {word, value.name, {.defaultValue = value.range.defaultValue}, summary};
    }
};

/// A position in the log: a whole number that is not negative.
struct Cursor : Option {
    using Value = std::uint64_t;
    constexpr Cursor(std::string_view name, std::string_view meaning)
        : Option{name, {ValueKind::logCursor, "cursor"}, meaning} {}
    [[nodiscard]] std::uint64_t read(const std::string& text) const;
};

/// Returns the index of the choice that equals the text. Throws `notANumber` if there is none.
std::size_t indexOfChoice(const Option& option, const std::string& text);

/// Returns the indexes of the choices that the text lists, separated by commas with optional blanks
/// around them. An empty text lists none. Throws `notANumber` with the first unknown piece, as
/// typed.
std::vector<std::size_t> indexesOfChoices(const Option& option, const std::string& text);

/// Describes a value that is one case of the enumeration.
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
        : Option{name, choiceOf<Enumeration>("name", defaultText), meaning} {}
    [[nodiscard]] Enumeration read(const std::string& text) const {
        return static_cast<Enumeration>(indexOfChoice(*this, text));
    }
};

/// Any cases of an enumeration, in the order in which they are typed.
template <WireEnum Enumeration>
struct ChoiceList : Option {
    using Value = std::vector<Enumeration>;
    constexpr ChoiceList(std::string_view name, std::string_view meaning,
                         std::string_view defaultText)
        : Option{name,
                 {ValueKind::choiceList, "lists", defaultText, wireNames<Enumeration>},
                 meaning} {}
    [[nodiscard]] Value read(const std::string& text) const {
        Value cases;
        for (const std::size_t index : indexesOfChoices(*this, text)) {
            cases.push_back(static_cast<Enumeration>(index));
        }
        return cases;
    }
};

} // namespace fernlow

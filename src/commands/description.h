#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <span>
#include <string_view>

/// The command line as data: which commands there are, what each takes, and what the words mean.
/// Completions and the manual page are made from it, and tests hold it to the parsers.
namespace fernlow {

/// What the value of an option, or a word that is no option, stands for.
enum class ValueKind {
    /// A flag: no value follows.
    none,
    number,
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
    group,
    language,
    /// The file extension of a language that a person has defined.
    extension,
    /// key=value, with a setting's name as the key.
    setting,
    rowId,
    logCursor,
};

// The empty initialisers let tables leave members out without a warning.
// NOLINTBEGIN(readability-redundant-member-init)

/// What a number is brought into, where the program doesn't send it as typed.
struct NumberRange {
    static constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    static constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();

    std::int64_t least = lowest;
    std::int64_t most = highest;
    /// Used when the option isn't given.
    std::optional<std::int64_t> usual{};
};

struct ValueDescription {
    ValueKind kind = ValueKind::none;
    /// What stands for it in a synopsis, without angle brackets; the unit of a number that has one.
    std::string_view name{};
    /// What holds when it isn't given, in a few words; a number has that in its range.
    std::string_view usually{};
    std::span<const std::string_view> choices{};
    NumberRange range{};
};

struct OptionDescription {
    /// With its dashes.
    std::string_view word;
    ValueDescription value;
    /// One line without a full stop, as are all summaries here.
    std::string_view summary;
    /// The option that says the contrary.
    std::string_view opposite{};
};

/// A word that is no option.
struct OperandDescription {
    ValueDescription value;
    bool isRequired = false;
    /// Whether any number of them may follow each other. Never so for an operand before the last.
    bool repeats = false;
};

/// A list with room for `capacity` elements, so that tables of tables can be written in place.
template <class Element, std::size_t capacity>
class ShortList {
public:
    constexpr ShortList() = default;
    constexpr ShortList(std::initializer_list<Element> elements) {
        for (const Element& element : elements) {
            elements_.at(size_++) = element;
        }
    }
    [[nodiscard]] constexpr const Element* begin() const { return elements_.data(); }
    [[nodiscard]] constexpr const Element* end() const { return elements_.data() + size_; }
    [[nodiscard]] constexpr std::size_t size() const { return size_; }
    [[nodiscard]] constexpr bool empty() const { return size_ == 0; }

private:
    std::array<Element, capacity> elements_{};
    std::size_t size_ = 0;
};

using OptionList = ShortList<const OptionDescription*, 11>;

/// One form of a command line: a command alone, or a subcommand of one.
struct CommandDescription {
    std::string_view command;
    /// Empty for the command alone. A command with subcommands has such a form only where it may
    /// stand without one.
    std::string_view subcommand{};
    std::string_view summary;
    ShortList<OperandDescription, 2> operands{};
    OptionList required{};
    OptionList options{};
    /// Other words for the command.
    ShortList<std::string_view, 2> aliases{};
    /// Whether words that it has no use for, options included, are passed over in silence.
    bool ignoresOtherWords = false;
};

// NOLINTEND(readability-redundant-member-init)

/// Every form, in the order of the help text.
std::span<const CommandDescription> commandDescriptions();

/// The options that may stand anywhere, before the command too.
std::span<const OptionDescription* const> globalOptions();

/// The options that every form of a command takes, before its subcommand too. A form that lists one
/// uses it; any other drops it. Empty for a command without subcommands.
std::span<const OptionDescription* const> sharedOptions(std::string_view command);

} // namespace fernlow

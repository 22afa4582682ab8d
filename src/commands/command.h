#pragma once

#include "commands/action.h"
#include "commands/option.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace fernlow {

class CommandLine;

// The empty initialisers let tables leave members out without a warning.
// NOLINTBEGIN(readability-redundant-member-init)

/// A word that is no option.
struct Operand {
    ValueDescription value;
    bool isRequired = false;
    /// Whether any number of them may follow each other. Never so for an operand before the last.
    bool repeats = false;
    /// The option that may give it instead.
    const Option* option = nullptr;
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

using OptionList = ShortList<const Option*, 11>;

/// One command, or one subcommand: all that is to be known of it.
struct Command {
    std::string_view word;
    /// Empty for the command alone.
    std::string_view subcommand{};
    std::string_view summary;
    ShortList<const Operand*, 2> operands{};
    /// What it takes, in the order in which it is taken: what it can't do without first. That order
    /// decides which of two mistakes is reported, and who gets a word that could be an option or
    /// another one's value.
    ShortList<const Option*, 3> required{};
    OptionList options{};
    /// Of a command with subcommands: the options that may stand in front of them, taken first. A
    /// subcommand that doesn't list one drops it.
    const OptionList* shared = nullptr;
    /// Other words for the command.
    ShortList<std::string_view, 2> aliases{};
    /// Whether words that it has no use for, options included, are passed over in silence.
    bool ignoresOtherWords = false;
    /// Makes a request of the line. Throws AgentCLIUsageError, json::EncodingError or
    /// CurrentDirectoryError.
    AgentCLIAction (*parse)(CommandLine& line);

    /// As a person types it: "files set".
    [[nodiscard]] std::string name() const;

    /// The required ones and the others.
    [[nodiscard]] std::vector<const Option*> allOptions() const;
};

// NOLINTEND(readability-redundant-member-init)

} // namespace fernlow

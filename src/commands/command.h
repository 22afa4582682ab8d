#pragma once

#include "commands/action.h"
#include "commands/option.h"

#include <array>
#include <cstddef>
#include <span>
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

/// The array that a row's list of options refers to: `.options = optionList<noWait, timeout>`. Rows
/// with equal lists share one array.
template <const auto&... options>
inline constexpr std::array<const Option*, sizeof...(options)> optionList{&options...};

/// The same for operands.
template <const auto&... operands>
inline constexpr std::array<const Operand*, sizeof...(operands)> operandList{&operands...};

/// One command, or one subcommand: all that is to be known of it.
struct Command {
    std::string_view word;
    /// Empty for the command alone.
    std::string_view subcommand{};
    std::string_view summary;
    std::span<const Operand* const> operands{};
    /// What it takes, in the order in which it is taken: what it can't do without first. That order
    /// decides which of two mistakes is reported, and who gets a word that could be an option or
    /// another one's value.
    std::span<const Option* const> required{};
    std::span<const Option* const> options{};
    /// Of a command with subcommands: the options that may stand in front of them, taken first. A
    /// subcommand that doesn't list one drops it.
    std::span<const Option* const> beforeSubcommand{};
    /// Other words for the command.
    std::span<const std::string_view> aliases{};
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

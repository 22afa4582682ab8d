#pragma once

#include "commands/action.h"
#include "commands/option.h"

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace fernlow {

class CommandLine;

// The empty initialisers let tables leave members out without a warning.
// NOLINTBEGIN(readability-redundant-member-init)

/// A word of a command line that does not belong to an option.
struct Operand {
    ValueDescription value;
    bool isRequired = false;
    /// Whether the operand may be given more than once. Only the last operand of a command may.
    bool repeats = false;
    /// The option that can be given instead of this operand, or null.
    const Option* alternative = nullptr;
};

/// The array for a row's list of options: `.options = optionList<noWait, timeout>`. Equal lists
/// share one array, because the start of the program takes longer with each pointer in a table.
template <const auto&... options>
inline constexpr std::array<const Option*, sizeof...(options)> optionList{&options...};

/// The array for a row's list of operands.
template <const auto&... operands>
inline constexpr std::array<const Operand*, sizeof...(operands)> operandList{&operands...};

/// A row of the command table: the whole description of a command or of a subcommand. A command
/// with subcommands also has a row with an empty subcommand, for a line without a subcommand.
struct Command {
    std::string_view word;
    std::string_view subcommand{};
    /// One line without a full stop.
    std::string_view summary;
    std::span<const Operand* const> operands{};
    /// The options that the command needs, and the options that may be left out. They are taken
    /// in this order. The order decides which of two mistakes is reported, and to which option a
    /// word belongs that could be an option or another option's value.
    std::span<const Option* const> required{};
    std::span<const Option* const> options{};
    /// The options that may stand before a subcommand, in the row with an empty subcommand. They
    /// are taken first, in this order. A subcommand ignores options that its own row does not list.
    std::span<const Option* const> beforeSubcommand{};
    /// Other words for the command.
    std::span<const std::string_view> aliases{};
    /// Whether the command ignores words and options that it does not use.
    bool ignoresOtherWords = false;
    /// Returns the action for a line of this command. Throws AgentCLIUsageError,
    /// json::EncodingError or CurrentDirectoryError.
    AgentCLIAction (*parse)(CommandLine& line);

    /// Returns the word and the subcommand as a user types them: "files set".
    [[nodiscard]] std::string name() const;

    /// Returns the required options, followed by the optional ones.
    [[nodiscard]] std::vector<const Option*> allOptions() const;
};

// NOLINTEND(readability-redundant-member-init)

} // namespace fernlow

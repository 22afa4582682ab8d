#pragma once

#include "commands/command_line.h"
#include "commands/global_options.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace fernlow::completion {

/// A line that is being typed. The words before the cursor are read as the command itself reads
/// them, and decide what the word at the cursor may be.
class TypedLine {
public:
    /// `index` is the index of the word being typed. If it is beyond the last word, the word being
    /// typed is empty. Throws AgentCLIUsageError if the words before it contain a mistake. Keeps a
    /// reference to the current directory.
    TypedLine(std::vector<std::string> words, std::size_t index,
              const CurrentDirectory& currentDirectory);

    /// Returns the word being typed, up to the cursor.
    [[nodiscard]] const std::string& current() const { return current_; }

    /// Returns the option whose value is being typed, or null.
    [[nodiscard]] const Option* awaiting() const { return awaiting_; }

    /// Returns the line before the word being typed. Null while the command is being typed.
    [[nodiscard]] const CommandLine* before() const { return before_ ? &*before_ : nullptr; }

    /// Returns the whole line, for the options and operands that are already given. It lacks the
    /// word being typed, unless that word is the value of an option. Null if before() is null.
    [[nodiscard]] const CommandLine* whole() const { return whole_ ? &*whole_ : nullptr; }

    [[nodiscard]] const GlobalOptions& globals() const { return globals_; }

    /// Returns whether the word being typed may be the command's subcommand.
    [[nodiscard]] bool mayBeSubcommand() const;

private:
    std::string current_;
    const Option* awaiting_ = nullptr;
    GlobalOptions globals_;
    std::optional<CommandLine> before_;
    std::optional<CommandLine> whole_;
};

} // namespace fernlow::completion

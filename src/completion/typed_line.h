#pragma once

#include "commands/command_line.h"
#include "commands/global_options.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace fernlow::completion {

/// A line that is being typed. What the word at the cursor may be follows from the words in front
/// of it, read as the command itself would read them.
class TypedLine {
public:
    /// `index` is that of the word being typed; beyond the last word it is an empty one. Throws
    /// AgentCLIUsageError where the words in front of it are no beginning of any command line.
    /// Keeps a reference to the folder.
    TypedLine(std::vector<std::string> words, std::size_t index,
              const CurrentDirectory& currentDirectory);

    /// The word being typed, as far as it has been typed.
    [[nodiscard]] const std::string& current() const { return current_; }

    /// The option whose value that word is, or null.
    [[nodiscard]] const Option* awaiting() const { return awaiting_; }

    /// The line in front of that word; null while the command is being typed.
    [[nodiscard]] const CommandLine* before() const { return before_ ? &*before_ : nullptr; }

    /// The whole line but for that word, as far as it can be understood; for what has been given
    /// already. Null where before() is.
    [[nodiscard]] const CommandLine* whole() const { return whole_ ? &*whole_ : nullptr; }

    [[nodiscard]] const GlobalOptions& globals() const { return globals_; }

    /// Whether that word may be the command's subcommand.
    [[nodiscard]] bool mayBeSubcommand() const;

private:
    std::string current_;
    const Option* awaiting_ = nullptr;
    GlobalOptions globals_;
    std::optional<CommandLine> before_;
    std::optional<CommandLine> whole_;
};

} // namespace fernlow::completion

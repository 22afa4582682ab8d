#pragma once

#include "commands/command_line.h"
#include "commands/global_options.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace fernlow::completion {

/// A line that is being typed. The words in front of the cursor, read as the command itself would
/// read them, tell what the word at the cursor may be.
class TypedLine {
public:
    /// `index` is the index of the word being typed; beyond the last word, that word is empty.
    /// Throws AgentCLIUsageError where no command line begins with the words in front of it. Keeps
    /// a reference to the folder.
    TypedLine(std::vector<std::string> words, std::size_t index,
              const CurrentDirectory& currentDirectory);

    /// The word being typed, up to the cursor.
    [[nodiscard]] const std::string& current() const { return current_; }

    /// The option whose value is being typed, or null.
    [[nodiscard]] const Option* awaiting() const { return awaiting_; }

    /// The words in front of the word being typed; null while the command is being typed.
    [[nodiscard]] const CommandLine* before() const { return before_ ? &*before_ : nullptr; }

    /// The whole line, which tells the values that are already given. It lacks the word being
    /// typed, unless an option awaits that word. Null where before() is null.
    [[nodiscard]] const CommandLine* whole() const { return whole_ ? &*whole_ : nullptr; }

    [[nodiscard]] const GlobalOptions& globals() const { return globals_; }

    /// Whether the word being typed may be the command's subcommand.
    [[nodiscard]] bool mayBeSubcommand() const;

private:
    std::string current_;
    const Option* awaiting_ = nullptr;
    GlobalOptions globals_;
    std::optional<CommandLine> before_;
    std::optional<CommandLine> whole_;
};

} // namespace fernlow::completion

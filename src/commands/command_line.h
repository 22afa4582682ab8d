#pragma once

#include "commands/command.h"
#include "commands/paths.h"
#include "commands/usage_error.h"
#include "commands/words.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace fernlow {

/// A command line without its global options, read as far as its command's own rules say what the
/// words mean; the words left are for the command's parser. Parsing and completing both read it in
/// three steps: the constructor, takeSubcommand(), and what is made of the rest. What a parser asks
/// for throws AgentCLIUsageError where the line lacks it.
class CommandLine : public WordList {
public:
    /// Finds the command and takes the options that may stand in front of a subcommand. Throws
    /// AgentCLIUsageError `noCommand` or `unknownCommand`. Keeps a reference to the folder.
    CommandLine(std::vector<std::string> words, const CurrentDirectory& currentDirectory);

    /// Takes the subcommand, if there is one, and the options that are left. Throws
    /// `unknownCommand`.
    ///
    /// The subcommand is the first word that doesn't begin with "-". But where the command alone
    /// takes a path, all that is left may read as paths (the first word and every other one that
    /// doesn't begin with "-", by looksLikePath()): then there is none. So "settings ./site" lists
    /// a project, a bare folder name has to be written "./name", and a mistyped or forgotten
    /// subcommand is still reported.
    void takeSubcommand();

    /// Reports the first of the options taken so far that nobody could read: see Option.
    void validateValues() const;

    /// What the line is for; before takeSubcommand() the command alone.
    [[nodiscard]] const Command& command() const { return *command_; }

    /// The text that was given with an option of that word, or null. Any option may be asked for;
    /// what follows is for those that the command lists.
    [[nodiscard]] const std::string* find(const Option& option) const;

    [[nodiscard]] bool has(const Option& option) const { return listed(option) != nullptr; }

    /// What was given with the option, if it was given.
    template <class Type>
    [[nodiscard]] std::optional<typename Type::Value> value(const Type& option) const {
        const std::string* text = listed(option);
        return text == nullptr ? std::nullopt : std::optional(option.read(*text));
    }
    [[nodiscard]] std::optional<std::string> value(const Path& option) const;

    /// The same for a number that has one it defaultText is.
    [[nodiscard]] std::int64_t value(const WholeNumber& option) const;
    [[nodiscard]] double value(const Decimal& option) const;

    /// What was given with the option; else throws `missingValue` of it.
    template <class Type>
    [[nodiscard]] typename Type::Value require(const Type& option) const {
        return option.read(requireText(option));
    }

    /// The path that the option names, or the current directory.
    [[nodiscard]] std::string pathOrCurrentDirectory(const Path& option) const;

    /// The first word that doesn't begin with "-"; `missingValue` of the command when there is
    /// none.
    std::string takeRequiredWord();

    /// The case that such a word names; else throws `unknownCommand` of the command and the word.
    template <WireEnum Enumeration>
    [[nodiscard]] Enumeration subcommandNamed(const std::string& word) const {
        const auto named = fromWireName<Enumeration>(word);
        return named ? *named : throw unknownSubcommand(word);
    }

    /// All words left as resolved paths, those that begin with a single dash included:
    /// `unknownOption` when one begins with "--". May be empty.
    std::vector<std::string> takePaths();

    /// The same, but `missingPath` of the command when there is none.
    std::vector<std::string> takeRequiredPaths();

    /// The first of takePaths(), or the current directory when there is none. Further paths are
    /// ignored.
    std::string takePathOrCurrentDirectory();

    /// The option that is the last word and so lacks its value, or null.
    [[nodiscard]] const Option* unfinishedOption() const;

    [[nodiscard]] const CurrentDirectory& currentDirectory() const { return *currentDirectory_; }

private:
    void take(std::span<const Option* const> options);
    [[nodiscard]] AgentCLIUsageError unknownSubcommand(const std::string& word) const;
    [[nodiscard]] const std::string* listed(const Option& option) const;
    [[nodiscard]] const std::string& requireText(const Option& option) const;

    const Command* command_ = nullptr;
    const CurrentDirectory* currentDirectory_;
    std::vector<TakenOption> taken_;
};

/// What a command line without its global options asks for. Throws AgentCLIUsageError,
/// json::EncodingError or CurrentDirectoryError.
AgentCLIAction parseCommand(std::vector<std::string> words,
                            const CurrentDirectory& currentDirectory);

} // namespace fernlow

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

/// Whether the values of options are validated when the options are taken. Completion does not
/// validate values, because it reads lines that are still being typed.
enum class Validation { whenTaken, none };

/// A command line without its global options. It is read in three steps, both for parsing and for
/// completion: the constructor finds the command, takeSubcommand() finds the subcommand and takes
/// the options, and the command's parser takes the remaining words.
///
/// A parser may only ask for options in its command's row; any other option throws
/// std::logic_error. All functions that take or require something throw AgentCLIUsageError if the
/// line does not contain it.
class CommandLine : public WordList {
public:
    /// Finds the command and takes the options that may stand before a subcommand. Throws
    /// AgentCLIUsageError `noCommand` or `unknownCommand`, or the error of a value that does not
    /// validate. Keeps a reference to the current directory.
    CommandLine(std::vector<std::string> words, const CurrentDirectory& currentDirectory,
                Validation validation = Validation::whenTaken);

    /// Takes the subcommand, if there is one, and the options of its row. Throws `unknownCommand`,
    /// or the error of a value that does not validate.
    ///
    /// The first word that does not begin with "-" is the subcommand. There is one exception. If
    /// the command alone takes a path, and that word and every other word that does not begin with
    /// "-" look like paths (see looksLikePath()), then all of them are paths. So "settings ./site"
    /// lists a project, a bare folder name must be typed as "./name", and a mistyped or forgotten
    /// subcommand is still reported.
    void takeSubcommand();

    /// Returns the row of the subcommand, or of the command alone before takeSubcommand().
    [[nodiscard]] const Command& command() const { return *command_; }

    /// Returns the text given with the option, or with any other option of the same word, or null.
    /// Completion may ask for options that are not in the command's row.
    [[nodiscard]] const std::string* find(const Option& option) const;

    /// Returns whether the option was given.
    [[nodiscard]] bool has(const Option& option) const { return givenText(option) != nullptr; }

    /// Returns the value given with the option, if it was given.
    template <class Type>
    [[nodiscard]] std::optional<typename Type::Value> optionalValue(const Type& option) const {
        const std::string* const text = givenText(option);
        return text == nullptr ? std::nullopt : std::optional(option.read(*text));
    }

    /// Returns the value given with the option, or the option's default.
    template <class Type>
    [[nodiscard]] typename Type::Value valueOrDefault(const Type& option) const {
        return optionalValue(option).value_or(option.defaultValue());
    }

    /// Returns the value given with the option. Throws `missingValue` with the option's word if it
    /// was not given.
    template <class Type>
    [[nodiscard]] typename Type::Value requiredValue(const Type& option) const {
        return option.read(requiredText(option));
    }

    /// Returns the resolved path given with the option, if it was given.
    [[nodiscard]] std::optional<std::string> optionalPath(const Path& option) const;

    /// Returns the resolved path given with the option, or the current directory.
    [[nodiscard]] std::string pathOrCurrentDirectory(const Path& option) const;

    /// Takes the first word that does not begin with "-". Throws `missingValue` with the command's
    /// name if there is none.
    std::string takeRequiredWord();

    /// Returns the case with this word. Throws `unknownCommand` with the command's name and the
    /// word if there is none.
    template <WireEnum Enumeration>
    [[nodiscard]] Enumeration subcommandNamed(const std::string& word) const {
        const auto named = fromWireName<Enumeration>(word);
        if (!named) {
            throw unknownSubcommand(word);
        }
        return *named;
    }

    /// Takes all remaining words as resolved paths, also words that begin with a single dash.
    /// Throws `unknownOption` for a word that begins with "--". The result may be empty.
    std::vector<std::string> takePaths();

    /// Like takePaths(), but throws `missingPath` with the command's name if there is no word.
    std::vector<std::string> takeRequiredPaths();

    /// Returns the first of takePaths(), or the current directory if there is none. Ignores further
    /// paths.
    std::string takePathOrCurrentDirectory();

    /// Returns the option that is the last word and therefore lacks its value, or null.
    [[nodiscard]] const Option* unfinishedOption() const;

    [[nodiscard]] const CurrentDirectory& currentDirectory() const { return *currentDirectory_; }

private:
    void take(std::span<const Option* const> options);
    void takeOption(const Option& option);
    [[nodiscard]] AgentCLIUsageError unknownSubcommand(const std::string& word) const;
    [[nodiscard]] const std::string* givenText(const Option& option) const;
    [[nodiscard]] const std::string& requiredText(const Option& option) const;

    const Command* command_ = nullptr;
    const CurrentDirectory* currentDirectory_;
    Validation validation_;
    std::vector<TakenOption> taken_;
};

/// Returns the action that a command line without its global options asks for. Throws
/// AgentCLIUsageError, json::EncodingError or CurrentDirectoryError.
AgentCLIAction parseCommand(std::vector<std::string> words,
                            const CurrentDirectory& currentDirectory);

} // namespace fernlow

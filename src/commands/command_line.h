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
/// std::logic_error. The functions below throw AgentCLIUsageError. Their comments give its case,
/// for example `missingValue`.
class CommandLine : public WordList {
public:
    /// Finds the command and takes the options that may stand before a subcommand. Throws
    /// `noCommand` or `unknownCommand`, or like Option::validate(). Keeps a reference to the
    /// current directory.
    CommandLine(std::vector<std::string> words, const CurrentDirectory& currentDirectory,
                Validation validation = Validation::whenTaken);

    /// Takes the subcommand, if there is one, and the options of its row. Throws `unknownCommand`,
    /// or like Option::validate().
    ///
    /// The first operand is the subcommand, with one exception: a line without a subcommand may
    /// contain paths, if the command takes operands without a subcommand. All operands must then
    /// look like paths (see looksLikePath()), and the first one must be the first remaining word.
    /// So "settings ./site" lists a project, a bare folder name must be typed as "./name", and a
    /// mistyped or forgotten subcommand is still reported.
    void takeSubcommand();

    /// Returns the row of the subcommand; before takeSubcommand(), the row without a subcommand.
    [[nodiscard]] const Command& command() const { return *command_; }

    /// Returns the text given with the option, or with another option of the same word, or null.
    /// Unlike in the other functions, the option need not be in the command's row.
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

    /// Takes the first operand. Throws `missingValue` with the command's name if there is none.
    std::string takeRequiredOperand();

    /// Returns the enumeration's case with this name. Throws `unknownCommand` with the command's
    /// name and the word if there is none.
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

    /// Takes all remaining words like takePaths(). Returns the first path, or the current directory
    /// if there is none. Ignores further paths.
    std::string takePathOrCurrentDirectory();

    /// Returns the option that is the last word and therefore lacks its value, or null.
    [[nodiscard]] const Option* unfinishedOption() const;

    [[nodiscard]] const CurrentDirectory& currentDirectory() const { return *currentDirectory_; }

private:
    void takeOptions(std::span<const Option* const> options);
    void takeOption(const Option& option);
    [[nodiscard]] AgentCLIUsageError unknownSubcommand(const std::string& word) const;
    [[nodiscard]] const std::string* givenText(const Option& option) const;
    [[nodiscard]] const std::string& requiredText(const Option& option) const;

    const Command* command_ = nullptr;
    const CurrentDirectory* currentDirectory_;
    Validation validation_;
    std::vector<TakenOption> taken_;
};

/// Returns the action that gets the path. Throws if a word is left, like rejectLeftoverWords().
AgentCLIAction get(const CommandLine& line, const char* path);

/// Returns the action that a command line without its global options asks for. Throws
/// AgentCLIUsageError, json::EncodingError or CurrentDirectoryError.
AgentCLIAction parseCommand(std::vector<std::string> words,
                            const CurrentDirectory& currentDirectory);

} // namespace fernlow

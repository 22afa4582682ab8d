#pragma once

#include "commands/description.h"

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace fernlow::completion {

/// A line that is being typed, read by the parsers' rules as far as they say what it means: the
/// global options are taken wherever they stand, the value of an option is the next word whatever
/// it looks like, and the options of all subcommands may stand before the subcommand.
class TypedLine {
public:
    /// `index` is that of the word being typed; beyond the last word it is an empty one.
    TypedLine(const std::vector<std::string>& words, std::size_t index);

    /// The word being typed, as far as it has been typed.
    [[nodiscard]] const std::string& current() const { return current_; }
    /// The option whose value that word is.
    [[nodiscard]] const OptionDescription* optionBeforeCurrent() const { return awaiting_; }
    /// Empty while the command is being typed.
    [[nodiscard]] const std::string& command() const { return command_; }
    /// The form of the command, as far as it is clear. Null when there is none.
    [[nodiscard]] const CommandDescription* form() const { return form_; }
    /// Whether the word being typed may be the command's subcommand.
    [[nodiscard]] bool mayBeSubcommand() const { return mayBeSubcommand_; }
    /// The words that are no options, without the one being typed; `operandsBefore` of them stand
    /// in front of it.
    [[nodiscard]] const std::vector<std::string>& operands() const { return operands_; }
    [[nodiscard]] std::size_t operandsBefore() const { return operandsBefore_; }

    /// Whether the option, or its opposite, is on the line.
    [[nodiscard]] bool has(const OptionDescription& option) const;
    /// The value that was given with an option, or null.
    [[nodiscard]] const std::string* valueOf(std::string_view option) const;

private:
    struct Word {
        std::string text;
        bool isCurrent = false;
    };

    void take(std::span<const OptionDescription* const> options);
    void takeCommand();
    void chooseForm();

    std::vector<Word> words_;
    std::string current_;
    const OptionDescription* awaiting_ = nullptr;
    std::string command_;
    const CommandDescription* form_ = nullptr;
    bool mayBeSubcommand_ = false;
    std::vector<std::string> operands_;
    std::size_t operandsBefore_ = 0;
    std::map<std::string, std::string, std::less<>> taken_;
};

} // namespace fernlow::completion

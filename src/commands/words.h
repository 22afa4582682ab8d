#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fernlow {

/// The words of a command line that no operation has taken yet. Each operation removes the words
/// that it takes. The last operation of a command reports a word that is left over.
///
/// Words are matched as a whole. The value of an option is the next word, whatever it looks like.
/// An operation takes only the first occurrence of an option. An option that is the last word
/// counts as not given. In both cases a word is left over.
class WordList {
public:
    explicit WordList(std::vector<std::string> words) : words_(std::move(words)) {}

    [[nodiscard]] const std::vector<std::string>& remaining() const { return words_; }

    /// Takes the first word, whatever it looks like.
    std::optional<std::string> takeNextWord();

    /// Takes the flag and returns whether it was there.
    bool takeFlag(std::string_view flag);

    /// Takes the option and the word after it, and returns the word.
    std::optional<std::string> takeOptionValue(std::string_view option);

    /// Takes the first operand: the first word that does not begin with "-", wherever it stands.
    std::optional<std::string> takeOperand();

    /// Takes all words. Throws AgentCLIUsageError `unknownOption` if a word begins with "--".
    std::vector<std::string> takeRemainingWords();

    /// Throws AgentCLIUsageError if a word is left: `unknownOption` if the first word begins with
    /// "-", otherwise `unexpectedArgument`.
    void rejectLeftoverWords() const;

private:
    std::vector<std::string> words_;
};

} // namespace fernlow

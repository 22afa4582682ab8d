#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fernlow {

/// The words of a command line that are still to be understood. Each operation removes what it
/// takes; a command's last one reports whatever nobody has taken.
///
/// Words are matched whole. An option's value is the next word, whatever it looks like. Only the
/// first occurrence of an option is taken, and one that is the last word counts as not given: both
/// leave a word behind for that last operation to report.
class WordList {
public:
    explicit WordList(std::vector<std::string> words) : words_(std::move(words)) {}

    [[nodiscard]] const std::vector<std::string>& remaining() const { return words_; }

    /// The next word, whatever it looks like.
    std::optional<std::string> takeNextWord();

    /// Whether the flag is there.
    bool takeFlag(std::string_view flag);

    std::optional<std::string> takeOptionValue(std::string_view option);

    /// The first word that doesn't begin with "-", wherever it stands.
    std::optional<std::string> takeFirstWord();

    /// All words; AgentCLIUsageError `unknownOption` when one begins with "--".
    std::vector<std::string> takeRemainingWords();

    /// The first word left is an AgentCLIUsageError: `unknownOption` when it begins with "-", else
    /// `unexpectedArgument`.
    void rejectLeftoverWords() const;

private:
    std::vector<std::string> words_;
};

} // namespace fernlow

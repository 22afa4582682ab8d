#pragma once

#include "commands/paths.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fernlow {

/// Whether a command may be given without any path.
enum class Paths { required, optional };

/// The words of a command line that are still to be understood. Each operation removes what it
/// takes; a command's last one reports whatever nobody has taken. All throw AgentCLIUsageError.
///
/// Words are matched whole. An option's value is the next word, whatever it looks like. Only the
/// first occurrence of an option is taken, and one that is the last word counts as not given: both
/// leave a word behind for that last operation to report.
class WordList {
public:
    explicit WordList(std::vector<std::string> words) : words_(std::move(words)) {}

    [[nodiscard]] const std::vector<std::string>& left() const { return words_; }

    /// Whether the flag is there.
    bool takeFlag(std::string_view flag);

    std::optional<std::string> takeOptionValue(std::string_view option);

    /// An optional sign and ASCII digits, within 64 bits; else `notANumber`.
    std::optional<std::int64_t> takeWholeNumber(std::string_view option);

    /// A whole number that is not negative; else `notANumber`.
    std::optional<std::uint64_t> takeCursor(std::string_view option);

    /// A decimal number, "inf" and "nan" included; else `notANumber`. Beyond the range of a double
    /// it is infinite.
    std::optional<double> takeDecimalNumber(std::string_view option);

    /// The first word that doesn't begin with "-", wherever it stands.
    std::optional<std::string> takeFirstWord();

    /// All words; `unknownOption` when one begins with "--".
    std::vector<std::string> takeRemainingWords();

    /// All words as resolved paths, single-dash words included; `unknownOption` when one begins
    /// with "--", `missingPath` of the description when paths are required and there is none.
    std::vector<std::string> takePaths(const CurrentDirectory& currentDirectory,
                                       std::string_view description, Paths need);

    /// The first of takePaths(), or the current directory when there is none. Further paths are
    /// ignored.
    std::string takePathOrCurrentDirectory(const CurrentDirectory& currentDirectory);

    /// The first word left is an `unknownOption` when it begins with "-", else an
    /// `unexpectedArgument`.
    void rejectLeftoverWords() const;

private:
    template <class Number>
    std::optional<Number> takeNumber(std::string_view option,
                                     std::optional<Number> (*read)(const std::string& text));
    void rejectUnknownOptions() const;

    std::vector<std::string> words_;
};

} // namespace fernlow

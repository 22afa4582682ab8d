#pragma once

#include "cli/words.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace fernlow {

/// The value of a setting as JSON types it: boolean, integer, decimal, text, list of texts, or
/// absent (null).
using AgentSettingValue =
    std::variant<bool, std::int64_t, double, std::string, std::vector<std::string>, std::monostate>;

using SettingValues = std::map<std::string, AgentSettingValue>;
using SettingLiterals = std::map<std::string, std::string>;

/// The two ways in which new values are given. Neither is looked at here: which keys exist, what a
/// literal means and which map prevails is the application's affair.
struct SettingChanges {
    /// Typed, from --values.
    SettingValues values;
    /// As typed after the "=", from key=value words.
    SettingLiterals literals;
};

/// Reads key=value words, split at the first "="; the last word for a key wins. Throws
/// `unexpectedArgument` of the first word without "=" or without a key.
SettingLiterals parseLiteralWords(const std::vector<std::string>& words);

/// Reads the value of --values: a JSON object whose members are booleans, numbers, texts, lists of
/// texts or null. Not given, it is an empty map. Throws `notANumber` of the whole text.
SettingValues decodeValuesOption(const std::optional<std::string>& text);

/// All the words left and --values together; throws `missingValue` of the command when they change
/// nothing.
SettingChanges takeChanges(WordList& words, const std::optional<std::string>& values,
                           const char* command);

} // namespace fernlow

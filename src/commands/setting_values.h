#pragma once

#include "commands/words.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace fernlow {

/// The value of a setting as JSON types it.
struct AgentSettingValue {
    struct boolean {
        bool value = false;
        bool operator==(const boolean&) const = default;
    };
    struct integer {
        std::int64_t value = 0;
        bool operator==(const integer&) const = default;
    };
    struct decimal {
        double value = 0;
        bool operator==(const decimal&) const = default;
    };
    struct text {
        std::string value;
        bool operator==(const text&) const = default;
    };
    struct list {
        std::vector<std::string> value;
        bool operator==(const list&) const = default;
    };
    /// JSON's null.
    struct absent {
        bool operator==(const absent&) const = default;
    };

    std::variant<boolean, integer, decimal, text, list, absent> kind;

    bool operator==(const AgentSettingValue&) const = default;
};

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

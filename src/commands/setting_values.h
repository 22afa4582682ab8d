#pragma once

#include "commands/command_line.h"

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
    };
    struct integer {
        std::int64_t value = 0;
    };
    struct decimal {
        double value = 0;
    };
    struct text {
        std::string value;
    };
    struct list {
        std::vector<std::string> value;
    };
    /// JSON's null.
    struct absent {};

    std::variant<boolean, integer, decimal, text, list, absent> kind;
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

/// A JSON object whose members are booleans, numbers, texts, lists of texts or null. Reading throws
/// `notANumber` of the whole text.
struct SettingsObject : Option {
    using Value = SettingValues;
    constexpr SettingsObject(std::string_view name, std::string_view meaning)
        : Option{name, {ValueKind::json, "json"}, meaning, {}} {}
    [[nodiscard]] SettingValues read(const std::string& text) const;
};

namespace options {

inline constexpr SettingsObject values{"--values",
                                       "Settings as a JSON object, for lists or explicit types"};

} // namespace options

/// All the words left and --values together; throws `missingValue` of the command when they change
/// nothing.
SettingChanges takeChanges(CommandLine& line);

} // namespace fernlow

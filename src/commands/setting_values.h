#pragma once

#include "commands/command_line.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace fernlow {

/// The value of a setting, with the type that it has in JSON. `absent` is null.
struct AgentSettingValue {
    using boolean = bool;
    using integer = std::int64_t;
    using decimal = double;
    using text = std::string;
    using list = std::vector<std::string>;
    using absent = std::monostate;

    std::variant<boolean, integer, decimal, text, list, absent> kind;

    bool operator==(const AgentSettingValue&) const = default;
};

using SettingValues = std::map<std::string, AgentSettingValue>;
using SettingLiterals = std::map<std::string, std::string>;

/// New values for settings, given in two ways. The application decides which keys exist, what a
/// literal means, and which map prevails.
struct SettingChanges {
    /// Typed values, from --values.
    SettingValues values;
    /// The texts after "=" as typed, from key=value words.
    SettingLiterals literals;
};

/// Returns whether the word contains "=". A command that changes settings reads this word as a
/// setting.
bool isSettingWord(std::string_view word);

/// Reads key=value words. The first "=" ends the key. The last word for a key prevails. Throws
/// `unexpectedArgument` with the first word that has no "=" or no key.
SettingLiterals parseLiteralWords(const std::vector<std::string>& words);

/// A JSON object whose members are booleans, numbers, texts, lists of texts or null. Reading any
/// other text throws `notANumber` with the whole text.
struct SettingsObject : Option {
    using Value = SettingValues;
    constexpr SettingsObject(std::string_view name, std::string_view meaning)
        : Option{name, {ValueKind::json, "json"}, meaning} {}
    [[nodiscard]] SettingValues read(const std::string& text) const;
    /// Returns no values.
    [[nodiscard]] static SettingValues defaultValue() { return {}; }
};

namespace options {

inline constexpr SettingsObject values{"--values",
                                       "Settings as a JSON object, for lists or explicit types"};

} // namespace options

/// Takes all remaining words as key=value words and reads --values. Throws `missingValue` with the
/// command's name if both are empty.
SettingChanges takeChanges(CommandLine& line);

} // namespace fernlow

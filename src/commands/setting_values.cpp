#include "commands/setting_values.h"

#include "bytes/number.h"
#include "commands/usage_error.h"
#include "json/document.h"

#include <cstdint>
#include <string_view>
#include <utility>

namespace fernlow {

namespace {

/// Returns nothing for an object, or for an array with an element that is not a text.
std::optional<AgentSettingValue> decodeSettingValue(const json::Value& value) {
    if (value.isNull()) {
        return AgentSettingValue{AgentSettingValue::absent()};
    }
    if (const auto texts = value.texts()) {
        AgentSettingValue::list list;
        for (const std::string_view each : *texts) {
            list.emplace_back(each);
        }
        return AgentSettingValue{std::move(list)};
    }
    if (const auto boolean = value.strictBoolean()) {
        return AgentSettingValue{*boolean};
    }
    if (const auto integer = value.integer()) {
        return AgentSettingValue{*integer};
    }
    if (const auto literal = value.numberLiteral()) {
        return AgentSettingValue{number::nearestDouble(*literal)};
    }
    if (const auto text = value.text()) {
        return AgentSettingValue{std::string(*text)};
    }
    return std::nullopt;
}

std::optional<SettingValues> decodeSettingValues(std::string_view text) {
    const auto document = json::Document::parse(text);
    const auto object = document ? document->root().object() : std::nullopt;
    if (!object) {
        return std::nullopt;
    }
    SettingValues values;
    for (const auto [key, value] : object->sortedMembers()) {
        const auto decoded = decodeSettingValue(value);
        if (!decoded) {
            return std::nullopt;
        }
        values.emplace(key, *decoded);
    }
    return values;
}

} // namespace

bool isSettingWord(std::string_view word) {
    return word.find('=') != std::string_view::npos;
}

SettingLiterals parseLiteralWords(const std::vector<std::string>& words) {
    SettingLiterals literals;
    for (const std::string& word : words) {
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos || equals == 0) {
            throw AgentCLIUsageError(AgentCLIUsageError::unexpectedArgument{word});
        }
        literals.insert_or_assign(word.substr(0, equals), word.substr(equals + 1));
    }
    return literals;
}

SettingValues SettingsObject::read(const std::string& text) const {
    auto values = decodeSettingValues(text);
    if (!values) {
        throw AgentCLIUsageError(AgentCLIUsageError::notANumber{std::string(word), text});
    }
    return *std::move(values);
}

SettingChanges takeChanges(CommandLine& line) {
    SettingChanges changes;
    changes.literals = parseLiteralWords(line.takeRemainingWords());
    changes.values = line.valueOrDefault(options::values);
    if (changes.literals.empty() && changes.values.empty()) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingValue{line.command().name()});
    }
    return changes;
}

} // namespace fernlow

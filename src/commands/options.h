#pragma once

#include "commands/usage_error.h"
#include "commands/wire_words.h"
#include "commands/words.h"

#include <optional>
#include <string>
#include <string_view>

namespace fernlow {

/// An option's value as a resolved path.
inline std::optional<std::string> takePathOption(WordList& words, std::string_view option,
                                                 const CurrentDirectory& currentDirectory) {
    const auto value = words.takeOptionValue(option);
    return value ? std::optional(resolvePath(*value, currentDirectory)) : std::nullopt;
}

/// The project that --path names, or the current directory.
inline std::string takeProjectOption(WordList& words, const CurrentDirectory& currentDirectory) {
    auto project = takePathOption(words, "--path", currentDirectory);
    return project ? *std::move(project) : currentDirectory.path();
}

/// The value of an option that a command cannot do without; throws `missingValue` of its name.
inline const std::string& required(std::string_view option,
                                   const std::optional<std::string>& value) {
    if (!value) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingValue{std::string(option)});
    }
    return *value;
}

/// The case that an option's value names, matched exactly; throws `notANumber` otherwise.
template <Worded Enumeration>
Enumeration namedCase(std::string_view option, std::string_view value) {
    const auto named = fromWireWord<Enumeration>(value);
    if (!named) {
        throw AgentCLIUsageError(
            AgentCLIUsageError::notANumber{std::string(option), std::string(value)});
    }
    return *named;
}

/// The same for an option that may be missing.
template <Worded Enumeration>
std::optional<Enumeration> namedCase(std::string_view option,
                                     const std::optional<std::string>& value) {
    return value ? std::optional(namedCase<Enumeration>(option, std::string_view(*value)))
                 : std::nullopt;
}

} // namespace fernlow

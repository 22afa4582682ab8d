#pragma once

#include "commands/encode.h"
#include "commands/ranges.h"
#include "commands/setting_values.h"

#include <optional>
#include <string>

/// The settings of one project ("settings"), and those that a project added later starts with
/// ("defaults").
namespace fernlow {

struct AgentSettingsPatch {
    std::string path;
    /// Absent means the project-wide settings.
    std::optional<std::string> language;
    /// Names a user-defined language.
    std::optional<std::string> fileExtension;
    /// A row of a list that the application ships. No option of the command line names one.
    std::optional<std::string> group;
    std::optional<std::string> row;
    SettingValues values;
    SettingLiterals literals;
    FERNLOW_WIRE_RECORD(AgentSettingsPatch, path, language, fileExtension, group, row, values,
                        literals)
};

struct AgentSettingsSchemaRequest {
    std::string path;
    std::optional<std::string> language;
    FERNLOW_WIRE_RECORD(AgentSettingsSchemaRequest, path, language)
};

struct AgentApplyOutputPathsRequest {
    std::string path;
    std::string language;
    std::optional<std::string> fileExtension;
    double timeoutSeconds = defaultTimeoutSeconds;
    FERNLOW_WIRE_RECORD(AgentApplyOutputPathsRequest, path, language, fileExtension, timeoutSeconds)
};

struct AgentDefaultsPatch {
    std::optional<std::string> language;
    SettingValues values;
    SettingLiterals literals;
    FERNLOW_WIRE_RECORD(AgentDefaultsPatch, language, values, literals)
};

struct AgentDefaultsSchemaRequest {
    std::optional<std::string> language;
    FERNLOW_WIRE_RECORD(AgentDefaultsSchemaRequest, language)
};

AgentCLIAction parseSettings(WordList& words, const CurrentDirectory& currentDirectory);
AgentCLIAction parseDefaults(WordList& words, const CurrentDirectory& currentDirectory);

} // namespace fernlow

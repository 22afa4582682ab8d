#pragma once

#include "commands/command.h"
#include "commands/encode.h"

#include <optional>
#include <span>
#include <string>

/// The settings of one project ("settings"), and those that a project added later starts with
/// ("defaults").
namespace fernlow {

struct AgentSettingsSchemaRequest {
    std::string path;
    std::optional<std::string> language;
    FERNLOW_WIRE_FIELDS(path, language)
};

struct AgentDefaultsSchemaRequest {
    std::optional<std::string> language;
    FERNLOW_WIRE_FIELDS(language)
};

std::span<const Command> settingsCommands();

} // namespace fernlow

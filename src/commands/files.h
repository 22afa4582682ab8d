#pragma once

#include "commands/command.h"
#include "commands/encode.h"

#include <optional>
#include <span>
#include <string>

/// The application's index of one project's files.
namespace fernlow {

/// A file, or every file of a language.
struct AgentFileSchemaRequest {
    std::optional<std::string> path;
    std::optional<std::string> language;
    FERNLOW_WIRE_FIELDS(path, language)
};

std::span<const Command> filesCommands();

} // namespace fernlow

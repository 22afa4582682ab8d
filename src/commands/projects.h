#pragma once

#include "commands/command.h"
#include "commands/encode.h"

#include <span>
#include <string>

/// The commands that change which folders are projects, whether they are watched, and how the
/// sidebar arranges them.
namespace fernlow {

struct AgentPathRequest {
    std::string path;
    FERNLOW_WIRE_FIELDS(path)
};

std::span<const Command> projectCommands();

} // namespace fernlow

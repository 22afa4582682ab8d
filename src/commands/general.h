#pragma once

#include "commands/command.h"

#include <span>

/// The commands that are nothing but their own word.
namespace fernlow {

std::span<const Command> generalCommands();

} // namespace fernlow

#pragma once

#include "commands/command.h"

#include <span>

/// The commands that make the application compile, build, re-read, optimise or check files, and
/// that ask it what has happened.
namespace fernlow {

std::span<const Command> workCommands();

} // namespace fernlow

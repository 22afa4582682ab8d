#pragma once

#include "commands/command.h"

#include <span>

/// One npm operation in a project, and opening the preview in a browser.
namespace fernlow {

std::span<const Command> packageCommands();

} // namespace fernlow

#pragma once

#include "commands/command.h"

#include <string_view>
#include <vector>

namespace fernlow {

/// Every command, family by family in the order of the help text; a command alone stands in front
/// of its subcommands.
std::vector<const Command*> allCommands();

/// The command with that word or alias and that subcommand (empty for the command alone), or null.
const Command* findCommand(std::string_view word, std::string_view subcommand);

/// Whether the command has subcommands.
bool hasSubcommands(const Command& command);

} // namespace fernlow

#pragma once

#include "commands/command.h"

#include <string_view>
#include <vector>

namespace fernlow {

/// Returns the rows of all commands, one family after the other. A command's row with an empty
/// subcommand stands before the rows of its subcommands.
std::vector<const Command*> allCommands();

/// Returns the row of the command with this word or alias, or null.
const Command* findCommand(std::string_view word);

/// Returns the row of the command's subcommand with this word, or null.
const Command* findSubcommand(const Command& command, std::string_view word);

bool hasSubcommands(const Command& command);

} // namespace fernlow

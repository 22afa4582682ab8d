#pragma once

#include "commands/command.h"

#include <span>

/// The rows of each command family. Each function is defined in the family's own file.
namespace fernlow {

/// The program itself, the application's status and its API (general.cpp).
std::span<const Command> generalCommands();
/// Compiling and checking files, and what has happened (work.cpp).
std::span<const Command> workCommands();
/// npm operations and the preview (packages.cpp).
std::span<const Command> packageCommands();
/// Projects, groups and watching (projects.cpp).
std::span<const Command> projectCommands();
/// The settings of a project, and the defaults for new projects (settings.cpp).
std::span<const Command> settingsCommands();
/// The files of a project (files.cpp).
std::span<const Command> filesCommands();
/// The hooks, build steps, WebP presets and user-defined languages of a project (collections.cpp).
std::span<const Command> collectionCommands();

} // namespace fernlow

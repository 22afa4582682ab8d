#include "commands/command_table.h"

#include "commands/collections.h"
#include "commands/files.h"
#include "commands/general.h"
#include "commands/packages.h"
#include "commands/projects.h"
#include "commands/settings.h"
#include "commands/work.h"

#include <algorithm>
#include <array>
#include <span>

namespace fernlow {

namespace {

using Family = std::span<const Command> (*)();

constexpr std::array<Family, 7> families{generalCommands,   workCommands,     packageCommands,
                                         projectCommands,   settingsCommands, filesCommands,
                                         collectionCommands};

/// The first command of which the condition holds, or null.
template <class Condition>
const Command* firstCommand(Condition condition) {
    for (const Family family : families) {
        const auto commands = family();
        const auto found = std::find_if(commands.begin(), commands.end(), condition);
        if (found != commands.end()) {
            return &*found;
        }
    }
    return nullptr;
}

} // namespace

std::vector<const Command*> allCommands() {
    std::vector<const Command*> all;
    for (const Family family : families) {
        for (const Command& command : family()) {
            all.push_back(&command);
        }
    }
    return all;
}

const Command* findCommand(std::string_view word, std::string_view subcommand) {
    return firstCommand([=](const Command& command) {
        const bool isAlias = std::count(command.aliases.begin(), command.aliases.end(), word) > 0;
        return (command.word == word || isAlias) && command.subcommand == subcommand;
    });
}

bool hasSubcommands(const Command& command) {
    return firstCommand([&](const Command& other) {
               return other.word == command.word && !other.subcommand.empty();
           }) != nullptr;
}

} // namespace fernlow

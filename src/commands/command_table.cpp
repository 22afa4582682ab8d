#include "commands/command_table.h"

#include "commands/families.h"

#include <algorithm>
#include <array>
#include <span>

namespace fernlow {

namespace {

using Family = std::span<const Command> (*)();

constexpr std::array<Family, 7> families{generalCommands,   workCommands,     packageCommands,
                                         projectCommands,   settingsCommands, filesCommands,
                                         collectionCommands};

/// Returns the first row for which the condition holds, or null.
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

bool isSubcommandOf(const Command& other, const Command& command) {
    return other.word == command.word && !other.subcommand.empty();
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

const Command* findCommand(std::string_view word) {
    return firstCommand([=](const Command& command) {
        const auto& aliases = command.aliases;
        const bool isAlias = std::find(aliases.begin(), aliases.end(), word) != aliases.end();
        return (command.word == word || isAlias) && command.subcommand.empty();
    });
}

const Command* findSubcommand(const Command& command, std::string_view word) {
    return firstCommand([&](const Command& other) {
        return isSubcommandOf(other, command) && other.subcommand == word;
    });
}

bool hasSubcommands(const Command& command) {
    return firstCommand([&](const Command& other) { return isSubcommandOf(other, command); }) !=
           nullptr;
}

} // namespace fernlow

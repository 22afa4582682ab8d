#include "commands/command_line.h"
#include "commands/families.h"

#include <array>

namespace fernlow {

namespace {

AgentCLIAction parseStatus(CommandLine& line) {
    return get(line, "/v1/status");
}

AgentCLIAction parseSchema(CommandLine& line) {
    return get(line, "/v1/schema");
}

AgentCLIAction parseHelp(CommandLine& /*line*/) {
    return {AgentCLIAction::help{}};
}

AgentCLIAction parseVersion(CommandLine& /*line*/) {
    return {AgentCLIAction::version{}};
}

constexpr auto helpAliases = std::to_array<std::string_view>({"--help", "-h"});
constexpr auto versionAliases = std::to_array<std::string_view>({"--version", "-v"});

constexpr auto commands = std::to_array<Command>({
    {.word = "status",
     .summary = "What Fernlow is doing, and the current log cursor",
     .parse = parseStatus},
    {.word = "schema", .summary = "The whole API, with notes", .parse = parseSchema},
    {.word = "help",
     .summary = "The whole manual",
     .aliases = helpAliases,
     .ignoresOtherWords = true,
     .parse = parseHelp},
    {.word = "version",
     .summary = "The version of this program",
     .aliases = versionAliases,
     .ignoresOtherWords = true,
     .parse = parseVersion},
});

} // namespace

std::span<const Command> generalCommands() {
    return commands;
}

} // namespace fernlow

#include "cli/invocation.h"

#include "commands/collections.h"
#include "commands/files.h"
#include "commands/packages.h"
#include "commands/projects.h"
#include "commands/settings.h"
#include "commands/usage_error.h"
#include "commands/work.h"
#include "transport/socket_location.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace fernlow {

namespace {

using Parser = AgentCLIAction (*)(WordList& words, const CurrentDirectory& currentDirectory);

struct Command {
    std::string_view word;
    Parser parse;
};

AgentCLIAction help(WordList& /*words*/, const CurrentDirectory& /*currentDirectory*/) {
    return {AgentCLIAction::help{}};
}

AgentCLIAction version(WordList& /*words*/, const CurrentDirectory& /*currentDirectory*/) {
    return {AgentCLIAction::version{}};
}

/// A command that is nothing but its own word.
AgentCLIAction getAlone(WordList& words, const char* path) {
    words.rejectLeftoverWords();
    return {AgentCLIAction::get{path}};
}

AgentCLIAction status(WordList& words, const CurrentDirectory& /*currentDirectory*/) {
    return getAlone(words, "/v1/status");
}

AgentCLIAction projects(WordList& words, const CurrentDirectory& /*currentDirectory*/) {
    return getAlone(words, "/v1/projects");
}

AgentCLIAction schema(WordList& words, const CurrentDirectory& /*currentDirectory*/) {
    return getAlone(words, "/v1/schema");
}

constexpr auto commands = std::to_array<Command>({
    {"--help", help},
    {"-h", help},
    {"help", help},
    {"--version", version},
    {"-v", version},
    {"version", version},
    {"status", status},
    {"projects", projects},
    {"groups", parseGroups},
    {"move", parseMove},
    {"rename", parseRename},
    {"schema", schema},
    {"log", parseLog},
    {"process", parseProcess},
    {"wait", parseWait},
    {"build", parseBuild},
    {"refresh", parseRefresh},
    {"add", parseAdd},
    {"remove", parseRemove},
    {"enable", parseEnable},
    {"disable", parseDisable},
    {"watch", parseWatch},
    {"settings", parseSettings},
    {"defaults", parseDefaults},
    {"files", parseFiles},
    {"collections", parseCollections},
    {"optimize", parseOptimize},
    {"check", parseCheck},
    {"packages", parsePackages},
    {"preview", parsePreview},
});

AgentCLIAction parseCommand(std::vector<std::string> words,
                            const CurrentDirectory& currentDirectory) {
    if (words.empty()) {
        throw AgentCLIUsageError(AgentCLIUsageError::noCommand{});
    }
    const std::string word = std::move(words.front());
    words.erase(words.begin());
    const auto* const command =
        std::find_if(commands.begin(), commands.end(),
                     [&word](const Command& candidate) { return candidate.word == word; });
    if (command == commands.end()) {
        throw AgentCLIUsageError(AgentCLIUsageError::unknownCommand{word});
    }
    WordList remaining(std::move(words));
    return command->parse(remaining, currentDirectory);
}

} // namespace

AgentCLIInvocation parseInvocation(const std::vector<std::string>& arguments,
                                   const CurrentDirectory& currentDirectory,
                                   bool standardOutputIsTerminal) {
    AgentCLIInvocation invocation;
    invocation.wantsJSON = !standardOutputIsTerminal;

    std::vector<std::string> words;
    std::optional<std::string> socketPath;
    for (auto word = arguments.begin(); word != arguments.end(); ++word) {
        if (*word == "--json") {
            invocation.wantsJSON = true;
        } else if (*word == "--no-launch") {
            invocation.launchIfNeeded = false;
        } else if (*word == "--socket") {
            if (++word == arguments.end()) {
                throw AgentCLIUsageError(AgentCLIUsageError::missingValue{"--socket"});
            }
            socketPath = *word;
        } else {
            words.push_back(*word);
        }
    }
    // Asking the user database costs more than all the rest, so only where the answer is used.
    invocation.socketPath = socketPath ? *socketPath : defaultSocketPath();
    invocation.action = parseCommand(std::move(words), currentDirectory);
    return invocation;
}

} // namespace fernlow

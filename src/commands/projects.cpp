#include "commands/projects.h"

#include "commands/options.h"

namespace fernlow {

AgentCLIAction parseAdd(WordList& words, const CurrentDirectory& currentDirectory) {
    AgentAddProjectRequest request;
    request.asFramework = words.takeFlag("--framework");
    request.path = words.takePathOrCurrentDirectory(currentDirectory);
    return post("/v1/projects/add", request);
}

AgentCLIAction parseRemove(WordList& words, const CurrentDirectory& currentDirectory) {
    const auto paths = words.takePaths(currentDirectory, "remove", Paths::required);
    return post("/v1/projects/remove", AgentPathRequest{paths.front()});
}

AgentCLIAction parseEnable(WordList& words, const CurrentDirectory& currentDirectory) {
    return post("/v1/projects/enabled",
                AgentEnabledRequest{words.takePathOrCurrentDirectory(currentDirectory), true});
}

AgentCLIAction parseDisable(WordList& words, const CurrentDirectory& currentDirectory) {
    return post("/v1/projects/enabled",
                AgentEnabledRequest{words.takePathOrCurrentDirectory(currentDirectory), false});
}

AgentCLIAction parseWatch(WordList& words, const CurrentDirectory& /*currentDirectory*/) {
    const auto word = words.takeFirstWord();
    if (!word) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingValue{"watch"});
    }
    words.rejectLeftoverWords();
    if (*word != "pause" && *word != "resume") {
        throw AgentCLIUsageError(AgentCLIUsageError::unknownCommand{"watch " + *word});
    }
    return post("/v1/watching", AgentWatchingRequest{*word == "pause"});
}

namespace {

/// The group that --name or else the next word names; neither may be empty.
std::string takeGroupName(WordList& words, const std::optional<std::string>& nameOption,
                          const std::string& command) {
    if (nameOption && !nameOption->empty()) {
        return *nameOption;
    }
    auto name = words.takeFirstWord();
    if (!name || name->empty()) {
        throw AgentCLIUsageError(
            AgentCLIUsageError::missingValue{"a group name for \"" + command + "\""});
    }
    return *std::move(name);
}

AgentCLIAction parseGroupRename(WordList& words, const std::optional<std::string>& nameOption) {
    AgentGroupRenameRequest request;
    request.name = takeGroupName(words, nameOption, "groups rename");
    request.newName = words.takeFirstWord().value_or("");
    if (request.newName.empty()) {
        throw AgentCLIUsageError(
            AgentCLIUsageError::missingValue{"a new name for \"" + request.name + "\""});
    }
    return post("/v1/groups/rename", request);
}

} // namespace

AgentCLIAction parseGroups(WordList& words, const CurrentDirectory& /*currentDirectory*/) {
    const auto nameOption = words.takeOptionValue("--name");
    const auto subcommand = words.takeFirstWord();
    if (!subcommand) {
        words.rejectLeftoverWords();
        return {AgentCLIAction::get{"/v1/groups"}};
    }
    // Unlike everywhere else, words left over behind a group's name are ignored.
    if (*subcommand == "add") {
        return post("/v1/groups/add",
                    AgentGroupAddRequest{takeGroupName(words, nameOption, "groups add")});
    }
    if (*subcommand == "remove") {
        return post("/v1/groups/remove",
                    AgentGroupRemoveRequest{takeGroupName(words, nameOption, "groups remove")});
    }
    if (*subcommand == "rename") {
        return parseGroupRename(words, nameOption);
    }
    throw AgentCLIUsageError(AgentCLIUsageError::unknownCommand{"groups " + *subcommand});
}

AgentCLIAction parseMove(WordList& words, const CurrentDirectory& currentDirectory) {
    AgentProjectMoveRequest request;
    request.group = words.takeOptionValue("--group");
    request.path = words.takePathOrCurrentDirectory(currentDirectory);
    return post("/v1/projects/move", request);
}

AgentCLIAction parseRename(WordList& words, const CurrentDirectory& currentDirectory) {
    AgentProjectRenameRequest request;
    request.name = required("--name", words.takeOptionValue("--name"));
    request.path = words.takePathOrCurrentDirectory(currentDirectory);
    return post("/v1/projects/rename", request);
}

} // namespace fernlow

#include "commands/command_line.h"
#include "commands/families.h"
#include "commands/options.h"
#include "commands/requests.h"
#include "commands/usage_error.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace fernlow {

/// The change that "watch" makes.
enum class WatchChange { pause, resume };
template <>
inline constexpr auto wireNames<WatchChange> = std::to_array<std::string_view>({"pause", "resume"});

namespace {

using namespace options;
using namespace operands;

AgentCLIAction parseProjects(CommandLine& line) {
    return get(line, "/v1/projects");
}

constexpr Operand newProject{.value = {ValueKind::folder, "path", "this directory"}};
constexpr Flag framework{"--framework", "Add it as a framework"};

struct AgentAddProjectRequest {
    std::string path;
    bool asFramework = false;
    double timeoutSeconds = timeout.defaultValue();
    FERNLOW_WIRE_FIELDS(path, asFramework, timeoutSeconds)
};

AgentCLIAction parseAdd(CommandLine& line) {
    AgentAddProjectRequest request;
    request.asFramework = line.has(framework);
    request.path = line.takePathOrCurrentDirectory();
    return post("/v1/projects/add", request);
}

constexpr Operand oneProject{.value = {ValueKind::project, "path"}, .isRequired = true};

AgentCLIAction parseRemove(CommandLine& line) {
    return post("/v1/projects/remove", AgentPathRequest{line.takeRequiredPaths().front()});
}

struct AgentEnabledRequest {
    std::string path;
    bool enabled = false;
    FERNLOW_WIRE_FIELDS(path, enabled)
};

AgentCLIAction parseEnable(CommandLine& line) {
    return post("/v1/projects/enabled",
                AgentEnabledRequest{line.takePathOrCurrentDirectory(), true});
}

AgentCLIAction parseDisable(CommandLine& line) {
    return post("/v1/projects/enabled",
                AgentEnabledRequest{line.takePathOrCurrentDirectory(), false});
}

constexpr Operand watchChange{.value = choiceOf<WatchChange>("change"), .isRequired = true};

struct AgentWatchingRequest {
    bool paused = false;
    FERNLOW_WIRE_FIELDS(paused)
};

AgentCLIAction parseWatch(CommandLine& line) {
    const std::string word = line.takeRequiredOperand();
    line.rejectLeftoverWords();
    const auto change = line.subcommandNamed<WatchChange>(word);
    return post("/v1/watching", AgentWatchingRequest{change == WatchChange::pause});
}

constexpr Text newGroup{"--name", {ValueKind::text, "text"}, "The group, instead of the word"};
constexpr auto oldGroup = newGroup.ofKind(ValueKind::userGroup);
constexpr Operand newGroupName{
    .value = {ValueKind::text, "name"}, .isRequired = true, .alternative = &newGroup};
constexpr Operand oldGroupName{
    .value = {ValueKind::userGroup, "name"}, .isRequired = true, .alternative = &oldGroup};
constexpr Operand otherGroupName{.value = {ValueKind::text, "to"}, .isRequired = true};

AgentCLIAction parseGroupList(CommandLine& line) {
    return get(line, "/v1/groups");
}

/// Returns the name given with the option, or else takes the next operand. An empty name counts as
/// missing. Leaves the words after the name, which the commands for groups ignore.
std::string takeGroupName(CommandLine& line, const Text& nameOption) {
    std::string name = line.optionalValue(nameOption).value_or("");
    if (name.empty()) {
        name = line.takeOperand().value_or("");
    }
    if (name.empty()) {
        throw AgentCLIUsageError(
            AgentCLIUsageError::missingValue{"a group name for \"" + line.command().name() + "\""});
    }
    return name;
}

struct AgentGroupAddRequest {
    std::string name;
    FERNLOW_WIRE_FIELDS(name)
};

AgentCLIAction parseGroupAdd(CommandLine& line) {
    return post("/v1/groups/add", AgentGroupAddRequest{takeGroupName(line, newGroup)});
}

struct AgentGroupRemoveRequest {
    std::string name;
    FERNLOW_WIRE_FIELDS(name)
};

AgentCLIAction parseGroupRemove(CommandLine& line) {
    return post("/v1/groups/remove", AgentGroupRemoveRequest{takeGroupName(line, oldGroup)});
}

struct AgentGroupRenameRequest {
    std::string name;
    std::string newName;
    FERNLOW_WIRE_FIELDS(name, newName)
};

AgentCLIAction parseGroupRename(CommandLine& line) {
    AgentGroupRenameRequest request;
    request.name = takeGroupName(line, oldGroup);
    request.newName = line.takeOperand().value_or("");
    if (request.newName.empty()) {
        throw AgentCLIUsageError(
            AgentCLIUsageError::missingValue{"a new name for \"" + request.name + "\""});
    }
    return post("/v1/groups/rename", request);
}

constexpr Operand movableProject{.value = {ValueKind::movableProject, "path", "this directory"}};
constexpr Text toGroup{
    "--group", {ValueKind::group, "name", "the permanent Projects group"}, "Which group"};

struct AgentProjectMoveRequest {
    std::string path;
    /// Absent means the permanent Projects group.
    std::optional<std::string> group;
    FERNLOW_WIRE_FIELDS(path, group)
};

AgentCLIAction parseMove(CommandLine& line) {
    AgentProjectMoveRequest request;
    request.group = line.optionalValue(toGroup);
    request.path = line.takePathOrCurrentDirectory();
    return post("/v1/projects/move", request);
}

constexpr auto projectName = describedAs(newGroup, "What to call the project");

struct AgentProjectRenameRequest {
    std::string path;
    std::string name;
    FERNLOW_WIRE_FIELDS(path, name)
};

AgentCLIAction parseRename(CommandLine& line) {
    AgentProjectRenameRequest request;
    request.name = line.requiredValue(projectName);
    request.path = line.takePathOrCurrentDirectory();
    return post("/v1/projects/rename", request);
}

constexpr std::string_view groups = "groups";
constexpr auto commands = std::to_array<Command>({
    {.word = "projects", .summary = "Every project and framework", .parse = parseProjects},
    {.word = "add",
     .summary = "Add a folder as a project",
     .operands = operandList<newProject>,
     .options = optionList<framework>,
     .parse = parseAdd},
    {.word = "remove",
     .summary = "Remove a project",
     .operands = operandList<oneProject>,
     .parse = parseRemove},
    {.word = "enable",
     .summary = "Switch a project on, and refresh it",
     .operands = operandList<anyProject>,
     .parse = parseEnable},
    {.word = "disable",
     .summary = "Switch a project off; Fernlow stops watching it",
     .operands = operandList<anyProject>,
     .parse = parseDisable},
    {.word = "watch",
     .summary = "Stop or resume watching every project",
     .operands = operandList<watchChange>,
     .parse = parseWatch},

    {.word = groups,
     .summary = "Every sidebar group, and what is in each",
     .beforeSubcommand = optionList<oldGroup>,
     .parse = parseGroupList},
    {.word = groups,
     .subcommand = "add",
     .summary = "Make a group",
     .operands = operandList<newGroupName>,
     .options = optionList<newGroup>,
     .ignoresOtherWords = true,
     .parse = parseGroupAdd},
    {.word = groups,
     .subcommand = "remove",
     .summary = "Delete a group; its projects go back to Projects",
     .operands = operandList<oldGroupName>,
     .options = optionList<oldGroup>,
     .ignoresOtherWords = true,
     .parse = parseGroupRemove},
    {.word = groups,
     .subcommand = "rename",
     .summary = "Rename a group",
     .operands = operandList<oldGroupName, otherGroupName>,
     .options = optionList<oldGroup>,
     .ignoresOtherWords = true,
     .parse = parseGroupRename},
    {.word = "move",
     .summary = "Move a project into a group",
     .operands = operandList<movableProject>,
     .options = optionList<toGroup>,
     .parse = parseMove},
    {.word = "rename",
     .summary = "Change what Fernlow calls a project, not the folder",
     .operands = operandList<anyProject>,
     .required = optionList<projectName>,
     .parse = parseRename},
});

} // namespace

std::span<const Command> projectCommands() {
    return commands;
}

} // namespace fernlow

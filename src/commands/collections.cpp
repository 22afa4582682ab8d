#include "commands/command_line.h"
#include "commands/families.h"
#include "commands/options.h"
#include "commands/requests.h"
#include "commands/setting_values.h"
#include "commands/usage_error.h"

#include <cstdint>
#include <string_view>
#include <utility>

namespace fernlow {

enum class AgentBuildStepType { processItems, processRemainingItems, runScript };
template <>
inline constexpr auto wireNames<AgentBuildStepType> =
    std::to_array<std::string_view>({"processItems", "processRemainingItems", "runScript"});

namespace {

using namespace options;
using namespace operands;

constexpr auto onlyKind = describedAs(kind, "Only this kind of row", "every kind");

AgentCLIAction parseCollections(CommandLine& line) {
    AgentCollectionListRequest request;
    request.path = line.takePathOrCurrentDirectory();
    request.kind = line.optionalValue(onlyKind);
    return post("/v1/collections", request);
}

constexpr Choice<AgentBuildStepType> type{"--type",
                                          "The type of a new build step, which needs one"};
constexpr auto newExtension =
    describedAs(extension.ofKind(ValueKind::text), "The extension of a new user-defined language");

struct AgentCollectionAddRequest {
    std::string path;
    AgentCollectionKind kind = AgentCollectionKind::hooks;
    std::optional<AgentBuildStepType> buildStepType;
    std::optional<std::string> fileExtension;
    SettingValues values;
    /// Always empty, because this command takes no key=value words.
    SettingLiterals literals;
    FERNLOW_WIRE_FIELDS(path, kind, buildStepType, fileExtension, values, literals)
};

AgentCLIAction parseCollectionAdd(CommandLine& line) {
    AgentCollectionAddRequest request;
    request.path = line.takePathOrCurrentDirectory();
    request.kind = line.requiredValue(kind);
    request.buildStepType = line.optionalValue(type);
    request.fileExtension = line.optionalValue(newExtension);
    request.values = line.valueOrDefault(values);
    return post("/v1/collections/add", request);
}

constexpr Text id{"--id", {ValueKind::rowId, "id"}, "Which row, as the listing reports it"};

/// Returns the row's identifier. An empty identifier counts as missing.
std::string requiredId(const CommandLine& line) {
    std::string given = line.requiredValue(id);
    if (given.empty()) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingValue{std::string(id.word)});
    }
    return given;
}

struct AgentCollectionRemoveRequest {
    std::string path;
    AgentCollectionKind kind = AgentCollectionKind::hooks;
    std::string id;
    FERNLOW_WIRE_FIELDS(path, kind, id)
};

AgentCLIAction parseCollectionRemove(CommandLine& line) {
    AgentCollectionRemoveRequest request;
    request.path = line.takePathOrCurrentDirectory();
    request.kind = line.requiredValue(kind);
    request.id = requiredId(line);
    return post("/v1/collections/remove", request);
}

constexpr WholeNumber position{
    "--position", "n", {.min = 0}, "Where to put it, counting from zero"};

struct AgentCollectionReorderRequest {
    std::string path;
    AgentCollectionKind kind = AgentCollectionKind::buildSteps;
    std::string id;
    /// The new index of the row.
    std::int64_t position = 0;
    FERNLOW_WIRE_FIELDS(path, kind, id, position)
};

AgentCLIAction parseCollectionMove(CommandLine& line) {
    AgentCollectionReorderRequest request;
    request.position = line.requiredValue(position);
    request.path = line.takePathOrCurrentDirectory();
    request.kind = line.requiredValue(kind);
    request.id = requiredId(line);
    return post("/v1/collections/reorder", request);
}

constexpr Operand rowChanges{.value = {ValueKind::rowSetting, "key=value"}, .repeats = true};

struct AgentCollectionPatch {
    std::string path;
    AgentCollectionKind kind = AgentCollectionKind::hooks;
    std::string id;
    SettingValues values;
    SettingLiterals literals;
    FERNLOW_WIRE_FIELDS(path, kind, id, values, literals)
};

AgentCLIAction parseCollectionSet(CommandLine& line) {
    AgentCollectionPatch patch;
    SettingChanges changes = takeChanges(line);
    patch.values = std::move(changes.values);
    patch.literals = std::move(changes.literals);
    patch.kind = line.requiredValue(kind);
    patch.id = requiredId(line);
    patch.path = line.currentDirectory().path();
    return post("/v1/collections/set", patch);
}

AgentCLIAction parseCollectionSchema(CommandLine& line) {
    line.rejectLeftoverWords();
    return post("/v1/collections/schema",
                AgentCollectionSchemaRequest{line.optionalValue(onlyKind)});
}

constexpr std::string_view collections = "collections";
constexpr auto commands = std::to_array<Command>({
    {.word = collections,
     .summary = "Hooks, build steps, WebP presets, custom extensions",
     .operands = operandList<anyProject>,
     .options = optionList<onlyKind>,
     .beforeSubcommand = optionList<kind, id, type, newExtension, values, position>,
     .parse = parseCollections},
    {.word = collections,
     .subcommand = "add",
     .summary = "Make a row",
     .operands = operandList<anyProject>,
     .required = optionList<kind>,
     .options = optionList<type, newExtension, values>,
     .parse = parseCollectionAdd},
    {.word = collections,
     .subcommand = "remove",
     .summary = "Delete a row",
     .operands = operandList<anyProject>,
     .required = optionList<kind, id>,
     .parse = parseCollectionRemove},
    {.word = collections,
     .subcommand = "move",
     .summary = "Put a build step elsewhere",
     .operands = operandList<anyProject>,
     .required = optionList<kind, id, position>,
     .parse = parseCollectionMove},
    {.word = collections,
     .subcommand = "set",
     .summary = "Change a row, wholly or not at all",
     .operands = operandList<rowChanges>,
     .required = optionList<kind, id>,
     .options = optionList<values>,
     .parse = parseCollectionSet},
    {.word = collections,
     .subcommand = "schema",
     .summary = "What a row of each kind holds",
     .options = optionList<onlyKind>,
     .parse = parseCollectionSchema},
});

} // namespace

std::span<const Command> collectionCommands() {
    return commands;
}

} // namespace fernlow

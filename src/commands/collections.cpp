#include "commands/collections.h"

#include "commands/command_line.h"
#include "commands/options.h"
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

constexpr Choice<AgentCollectionKind> onlyKind{kind.word, "Only this kind of row", "every kind"};

AgentCLIAction parseCollections(CommandLine& line) {
    AgentCollectionListRequest request;
    request.path = line.takePathOrCurrentDirectory();
    request.kind = line.value(onlyKind);
    return post("/v1/collections", request);
}

constexpr Choice<AgentBuildStepType> type{"--type",
                                          "The type of a new build step, which needs one"};
constexpr Text newExtension{
    ofExtension.word, {ValueKind::text, "ext"}, "The extension of a new user-defined language"};

struct AgentCollectionAddRequest {
    std::string path;
    AgentCollectionKind kind = AgentCollectionKind::hooks;
    std::optional<AgentBuildStepType> buildStepType;
    std::optional<std::string> fileExtension;
    SettingValues values;
    /// Always empty: a new row's settings are given through --values.
    SettingLiterals literals;
    FERNLOW_WIRE_FIELDS(path, kind, buildStepType, fileExtension, values, literals)
};

AgentCLIAction parseCollectionAdd(CommandLine& line) {
    AgentCollectionAddRequest request;
    request.path = line.takePathOrCurrentDirectory();
    request.kind = line.require(kind);
    request.buildStepType = line.value(type);
    request.fileExtension = line.value(newExtension);
    request.values = line.value(values).value_or(SettingValues());
    return post("/v1/collections/add", request);
}

constexpr Text id{"--id", {ValueKind::rowId, "id"}, "Which row, as the listing reports it"};

/// Unlike other texts it may not be empty.
std::string requireId(const CommandLine& line) {
    std::string given = line.require(id);
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
    request.kind = line.require(kind);
    request.id = requireId(line);
    return post("/v1/collections/remove", request);
}

constexpr WholeNumber position{
    "--position", "n", {.min = 0}, "Where to put it, counting from zero"};

struct AgentCollectionReorderRequest {
    std::string path;
    AgentCollectionKind kind = AgentCollectionKind::buildSteps;
    std::string id;
    /// The new place, counting from zero.
    std::int64_t position = 0;
    FERNLOW_WIRE_FIELDS(path, kind, id, position)
};

AgentCLIAction parseCollectionMove(CommandLine& line) {
    AgentCollectionReorderRequest request;
    request.position = line.require(position);
    request.path = line.takePathOrCurrentDirectory();
    request.kind = line.require(kind);
    request.id = requireId(line);
    return post("/v1/collections/reorder", request);
}

constexpr Operand rowChanges{{ValueKind::rowSetting, "key=value"}, false, true};

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
    patch.kind = line.require(kind);
    patch.id = requireId(line);
    patch.path = line.currentDirectory().path();
    return post("/v1/collections/set", patch);
}

AgentCLIAction parseCollectionSchema(CommandLine& line) {
    line.rejectLeftoverWords();
    return post("/v1/collections/schema", AgentCollectionSchemaRequest{line.value(onlyKind)});
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

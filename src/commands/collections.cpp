#include "commands/collections.h"

#include "commands/options.h"
#include "commands/subcommand.h"

#include <algorithm>

namespace fernlow {

namespace {

/// The options that all of "collections" knows; what a subcommand has no use for is dropped.
struct CollectionOptions {
    std::optional<std::string> kind;
    std::optional<std::string> id;
    std::optional<std::string> type;
    std::optional<std::string> fileExtension;
    std::optional<std::string> values;
    std::optional<std::int64_t> position;

    [[nodiscard]] AgentCollectionKind requiredKind() const {
        return namedCase<AgentCollectionKind>("--kind", std::string_view(required("--kind", kind)));
    }

    [[nodiscard]] std::optional<AgentCollectionKind> optionalKind() const {
        return namedCase<AgentCollectionKind>("--kind", kind);
    }

    [[nodiscard]] const std::string& requiredId() const {
        const std::string& given = required("--id", id);
        if (given.empty()) {
            throw AgentCLIUsageError(AgentCLIUsageError::missingValue{"--id"});
        }
        return given;
    }
};

CollectionOptions takeCollectionOptions(WordList& words) {
    CollectionOptions options;
    options.kind = words.takeOptionValue("--kind");
    options.id = words.takeOptionValue("--id");
    options.type = words.takeOptionValue("--type");
    options.fileExtension = words.takeOptionValue("--extension");
    options.values = words.takeOptionValue("--values");
    options.position = words.takeWholeNumber("--position");
    return options;
}

AgentCLIAction parseCollectionAdd(WordList& words, const CollectionOptions& options,
                                  const CurrentDirectory& currentDirectory) {
    AgentCollectionAddRequest request;
    request.path = words.takePathOrCurrentDirectory(currentDirectory);
    request.kind = options.requiredKind();
    request.buildStepType = namedCase<AgentBuildStepType>("--type", options.type);
    request.fileExtension = options.fileExtension;
    request.values = decodeValuesOption(options.values);
    return post("/v1/collections/add", request);
}

AgentCLIAction parseCollectionRemove(WordList& words, const CollectionOptions& options,
                                     const CurrentDirectory& currentDirectory) {
    AgentCollectionRemoveRequest request;
    request.path = words.takePathOrCurrentDirectory(currentDirectory);
    request.kind = options.requiredKind();
    request.id = options.requiredId();
    return post("/v1/collections/remove", request);
}

AgentCLIAction parseCollectionMove(WordList& words, const CollectionOptions& options,
                                   const CurrentDirectory& currentDirectory) {
    if (!options.position) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingValue{"--position"});
    }
    AgentCollectionReorderRequest request;
    request.path = words.takePathOrCurrentDirectory(currentDirectory);
    request.kind = options.requiredKind();
    request.id = options.requiredId();
    request.position = std::max<std::int64_t>(*options.position, 0);
    return post("/v1/collections/reorder", request);
}

AgentCLIAction parseCollectionSet(WordList& words, const CollectionOptions& options,
                                  const CurrentDirectory& currentDirectory) {
    AgentCollectionPatch patch;
    SettingChanges changes = takeChanges(words, options.values, "collections set");
    patch.values = std::move(changes.values);
    patch.literals = std::move(changes.literals);
    patch.kind = options.requiredKind();
    patch.id = options.requiredId();
    patch.path = currentDirectory.path();
    return post("/v1/collections/set", patch);
}

} // namespace

AgentCLIAction parseCollections(WordList& words, const CurrentDirectory& currentDirectory) {
    const CollectionOptions options = takeCollectionOptions(words);
    const auto subcommand = takeSubcommand(words);
    if (!subcommand) {
        AgentCollectionListRequest request;
        request.path = words.takePathOrCurrentDirectory(currentDirectory);
        request.kind = options.optionalKind();
        return post("/v1/collections", request);
    }
    if (*subcommand == "add") {
        return parseCollectionAdd(words, options, currentDirectory);
    }
    if (*subcommand == "remove") {
        return parseCollectionRemove(words, options, currentDirectory);
    }
    if (*subcommand == "move") {
        return parseCollectionMove(words, options, currentDirectory);
    }
    if (*subcommand == "set") {
        return parseCollectionSet(words, options, currentDirectory);
    }
    if (*subcommand == "schema") {
        words.rejectLeftoverWords();
        return post("/v1/collections/schema", AgentCollectionSchemaRequest{options.optionalKind()});
    }
    throw AgentCLIUsageError(AgentCLIUsageError::unknownCommand{"collections " + *subcommand});
}

} // namespace fernlow

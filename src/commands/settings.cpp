#include "commands/settings.h"

#include "commands/options.h"
#include "commands/projects.h"
#include "commands/subcommand.h"

namespace fernlow {

namespace {

/// The options that all of "settings" knows; what a subcommand has no use for is dropped.
struct SettingsOptions {
    std::optional<std::string> language;
    std::optional<std::string> fileExtension;
    std::optional<std::string> values;
};

AgentCLIAction parseSettingsSet(WordList& words, const SettingsOptions& options,
                                const CurrentDirectory& currentDirectory) {
    AgentSettingsPatch patch;
    patch.path = takeProjectOption(words, currentDirectory);
    patch.language = options.language;
    patch.fileExtension = options.fileExtension;
    SettingChanges changes = takeChanges(words, options.values, "settings set");
    patch.values = std::move(changes.values);
    patch.literals = std::move(changes.literals);
    return post("/v1/settings/set", patch);
}

AgentCLIAction parseSettingsSchema(WordList& words, const SettingsOptions& options,
                                   const CurrentDirectory& currentDirectory) {
    AgentSettingsSchemaRequest request;
    request.path = words.takePathOrCurrentDirectory(currentDirectory);
    request.language = options.language;
    return post("/v1/settings/schema", request);
}

AgentCLIAction parseApplyOutputPaths(WordList& words, const SettingsOptions& options,
                                     const CurrentDirectory& currentDirectory) {
    AgentApplyOutputPathsRequest request;
    request.language = required("--language", options.language);
    request.path = words.takePathOrCurrentDirectory(currentDirectory);
    request.fileExtension = options.fileExtension;
    return post("/v1/settings/apply-output-paths", request);
}

AgentCLIAction parseDefaultsSet(WordList& words, const std::optional<std::string>& language,
                                const std::optional<std::string>& values) {
    AgentDefaultsPatch patch;
    patch.language = language;
    SettingChanges changes = takeChanges(words, values, "defaults set");
    patch.values = std::move(changes.values);
    patch.literals = std::move(changes.literals);
    return post("/v1/defaults/set", patch);
}

} // namespace

AgentCLIAction parseSettings(WordList& words, const CurrentDirectory& currentDirectory) {
    SettingsOptions options;
    options.language = words.takeOptionValue("--language");
    options.fileExtension = words.takeOptionValue("--extension");
    options.values = words.takeOptionValue("--values");
    const auto subcommand = takeSubcommand(words);
    if (!subcommand) {
        return post("/v1/settings",
                    AgentPathRequest{words.takePathOrCurrentDirectory(currentDirectory)});
    }
    if (*subcommand == "set") {
        return parseSettingsSet(words, options, currentDirectory);
    }
    if (*subcommand == "schema") {
        return parseSettingsSchema(words, options, currentDirectory);
    }
    if (*subcommand == "apply-output-paths") {
        return parseApplyOutputPaths(words, options, currentDirectory);
    }
    throw AgentCLIUsageError(AgentCLIUsageError::unknownCommand{"settings " + *subcommand});
}

AgentCLIAction parseDefaults(WordList& words, const CurrentDirectory& /*currentDirectory*/) {
    const auto language = words.takeOptionValue("--language");
    const auto values = words.takeOptionValue("--values");
    const auto subcommand = words.takeFirstWord();
    if (!subcommand) {
        words.rejectLeftoverWords();
        return {AgentCLIAction::get{"/v1/defaults"}};
    }
    if (*subcommand == "set") {
        return parseDefaultsSet(words, language, values);
    }
    if (*subcommand == "schema") {
        words.rejectLeftoverWords();
        return post("/v1/defaults/schema", AgentDefaultsSchemaRequest{language});
    }
    throw AgentCLIUsageError(AgentCLIUsageError::unknownCommand{"defaults " + *subcommand});
}

} // namespace fernlow

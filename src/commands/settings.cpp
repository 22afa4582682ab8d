#include "commands/command_line.h"
#include "commands/families.h"
#include "commands/options.h"
#include "commands/requests.h"
#include "commands/setting_values.h"

#include <array>
#include <string_view>
#include <utility>

namespace fernlow {

namespace {

using namespace options;
using namespace operands;

AgentCLIAction parseSettings(CommandLine& line) {
    return post("/v1/settings", AgentPathRequest{line.takePathOrCurrentDirectory()});
}

constexpr Operand projectChanges{.value = {ValueKind::setting, "key=value"}, .repeats = true};

struct AgentSettingsPatch {
    std::string path;
    /// Absent means the project-wide settings.
    std::optional<std::string> language;
    /// Names a user-defined language.
    std::optional<std::string> fileExtension;
    /// A row of a list that the application ships. No option fills these two fields.
    std::optional<std::string> group;
    std::optional<std::string> row;
    SettingValues values;
    SettingLiterals literals;
    FERNLOW_WIRE_FIELDS(path, language, fileExtension, group, row, values, literals)
};

AgentCLIAction parseSettingsSet(CommandLine& line) {
    AgentSettingsPatch patch;
    patch.path = line.pathOrCurrentDirectory(project);
    patch.language = line.optionalValue(language);
    patch.fileExtension = line.optionalValue(extension);
    SettingChanges changes = takeChanges(line);
    patch.values = std::move(changes.values);
    patch.literals = std::move(changes.literals);
    return post("/v1/settings/set", patch);
}

AgentCLIAction parseSettingsSchema(CommandLine& line) {
    AgentSettingsSchemaRequest request;
    request.path = line.takePathOrCurrentDirectory();
    request.language = line.optionalValue(language);
    return post("/v1/settings/schema", request);
}

constexpr auto requiredLanguage = describedAs(language, "Which language's output paths");

struct AgentApplyOutputPathsRequest {
    std::string path;
    std::string language;
    std::optional<std::string> fileExtension;
    double timeoutSeconds = timeout.defaultValue();
    FERNLOW_WIRE_FIELDS(path, language, fileExtension, timeoutSeconds)
};

AgentCLIAction parseApplyOutputPaths(CommandLine& line) {
    AgentApplyOutputPathsRequest request;
    request.language = line.requiredValue(requiredLanguage);
    request.path = line.takePathOrCurrentDirectory();
    request.fileExtension = line.optionalValue(extension);
    return post("/v1/settings/apply-output-paths", request);
}

AgentCLIAction parseDefaults(CommandLine& line) {
    return get(line, "/v1/defaults");
}

constexpr Operand defaultChanges{.value = {ValueKind::defaultSetting, "key=value"},
                                 .repeats = true};

struct AgentDefaultsPatch {
    std::optional<std::string> language;
    SettingValues values;
    SettingLiterals literals;
    FERNLOW_WIRE_FIELDS(language, values, literals)
};

AgentCLIAction parseDefaultsSet(CommandLine& line) {
    AgentDefaultsPatch patch;
    patch.language = line.optionalValue(language);
    SettingChanges changes = takeChanges(line);
    patch.values = std::move(changes.values);
    patch.literals = std::move(changes.literals);
    return post("/v1/defaults/set", patch);
}

AgentCLIAction parseDefaultsSchema(CommandLine& line) {
    line.rejectLeftoverWords();
    return post("/v1/defaults/schema", AgentDefaultsSchemaRequest{line.optionalValue(language)});
}

constexpr std::string_view settings = "settings";
constexpr std::string_view defaults = "defaults";
constexpr auto commands = std::to_array<Command>({
    {.word = settings,
     .summary = "Every setting a project holds",
     .operands = operandList<anyProject>,
     .beforeSubcommand = optionList<language, extension, values>,
     .parse = parseSettings},
    {.word = settings,
     .subcommand = "set",
     .summary = "Change settings, wholly or not at all",
     .operands = operandList<projectChanges>,
     .options = optionList<language, extension, project, values>,
     .parse = parseSettingsSet},
    {.word = settings,
     .subcommand = "schema",
     .summary = "What settings exist, and what changing each one does",
     .operands = operandList<anyProject>,
     .options = optionList<language>,
     .parse = parseSettingsSchema},
    {.word = settings,
     .subcommand = "apply-output-paths",
     .summary = "Recalculate the output paths of existing files",
     .operands = operandList<anyProject>,
     .required = optionList<requiredLanguage>,
     .options = optionList<extension>,
     .parse = parseApplyOutputPaths},

    {.word = defaults,
     .summary = "The settings a project added later will start with",
     .beforeSubcommand = optionList<language, values>,
     .parse = parseDefaults},
    {.word = defaults,
     .subcommand = "set",
     .summary = "Change the defaults, wholly or not at all",
     .operands = operandList<defaultChanges>,
     .options = optionList<language, values>,
     .parse = parseDefaultsSet},
    {.word = defaults,
     .subcommand = "schema",
     .summary = "Which of those settings exist",
     .options = optionList<language>,
     .parse = parseDefaultsSchema},
});

} // namespace

std::span<const Command> settingsCommands() {
    return commands;
}

} // namespace fernlow

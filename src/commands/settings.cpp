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

constexpr Operand projectChanges{{ValueKind::setting, "key=value"}, false, true};

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
    patch.path = line.pathOrCurrentDirectory(inProject);
    patch.language = line.optionalValue(ofLanguage);
    patch.fileExtension = line.optionalValue(ofExtension);
    SettingChanges changes = takeChanges(line);
    patch.values = std::move(changes.values);
    patch.literals = std::move(changes.literals);
    return post("/v1/settings/set", patch);
}

AgentCLIAction parseSettingsSchema(CommandLine& line) {
    AgentSettingsSchemaRequest request;
    request.path = line.takePathOrCurrentDirectory();
    request.language = line.optionalValue(ofLanguage);
    return post("/v1/settings/schema", request);
}

constexpr auto theLanguage = ofLanguage.describedAs("Which language's output paths");

struct AgentApplyOutputPathsRequest {
    std::string path;
    std::string language;
    std::optional<std::string> fileExtension;
    double timeoutSeconds = timeout.defaultValue();
    FERNLOW_WIRE_FIELDS(path, language, fileExtension, timeoutSeconds)
};

AgentCLIAction parseApplyOutputPaths(CommandLine& line) {
    AgentApplyOutputPathsRequest request;
    request.language = line.requiredValue(theLanguage);
    request.path = line.takePathOrCurrentDirectory();
    request.fileExtension = line.optionalValue(ofExtension);
    return post("/v1/settings/apply-output-paths", request);
}

AgentCLIAction parseDefaults(CommandLine& line) {
    line.rejectLeftoverWords();
    return {AgentCLIAction::get{"/v1/defaults"}};
}

constexpr Operand defaultChanges{{ValueKind::defaultSetting, "key=value"}, false, true};

struct AgentDefaultsPatch {
    std::optional<std::string> language;
    SettingValues values;
    SettingLiterals literals;
    FERNLOW_WIRE_FIELDS(language, values, literals)
};

AgentCLIAction parseDefaultsSet(CommandLine& line) {
    AgentDefaultsPatch patch;
    patch.language = line.optionalValue(ofLanguage);
    SettingChanges changes = takeChanges(line);
    patch.values = std::move(changes.values);
    patch.literals = std::move(changes.literals);
    return post("/v1/defaults/set", patch);
}

AgentCLIAction parseDefaultsSchema(CommandLine& line) {
    line.rejectLeftoverWords();
    return post("/v1/defaults/schema", AgentDefaultsSchemaRequest{line.optionalValue(ofLanguage)});
}

constexpr std::string_view settings = "settings";
constexpr std::string_view defaults = "defaults";
constexpr auto commands = std::to_array<Command>({
    {.word = settings,
     .summary = "Every setting a project holds",
     .operands = operandList<anyProject>,
     .beforeSubcommand = optionList<ofLanguage, ofExtension, values>,
     .parse = parseSettings},
    {.word = settings,
     .subcommand = "set",
     .summary = "Change settings, wholly or not at all",
     .operands = operandList<projectChanges>,
     .options = optionList<ofLanguage, ofExtension, inProject, values>,
     .parse = parseSettingsSet},
    {.word = settings,
     .subcommand = "schema",
     .summary = "What settings exist, and what changing each one does",
     .operands = operandList<anyProject>,
     .options = optionList<ofLanguage>,
     .parse = parseSettingsSchema},
    {.word = settings,
     .subcommand = "apply-output-paths",
     .summary = "Recalculate the output paths of existing files",
     .operands = operandList<anyProject>,
     .required = optionList<theLanguage>,
     .options = optionList<ofExtension>,
     .parse = parseApplyOutputPaths},

    {.word = defaults,
     .summary = "The settings a project added later will start with",
     .beforeSubcommand = optionList<ofLanguage, values>,
     .parse = parseDefaults},
    {.word = defaults,
     .subcommand = "set",
     .summary = "Change the defaults, wholly or not at all",
     .operands = operandList<defaultChanges>,
     .options = optionList<ofLanguage, values>,
     .parse = parseDefaultsSet},
    {.word = defaults,
     .subcommand = "schema",
     .summary = "Which of those settings exist",
     .options = optionList<ofLanguage>,
     .parse = parseDefaultsSchema},
});

} // namespace

std::span<const Command> settingsCommands() {
    return commands;
}

} // namespace fernlow

#include "commands/command_line.h"
#include "commands/families.h"
#include "commands/options.h"
#include "commands/requests.h"
#include "commands/setting_values.h"
#include "commands/usage_error.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace fernlow {

/// What the application does with a file.
enum class AgentOutputAction { compile, ignore, copy };
template <>
inline constexpr auto wireNames<AgentOutputAction> =
    std::to_array<std::string_view>({"compile", "ignore", "copy"});

namespace {

using namespace options;
using namespace operands;

constexpr auto onlyLanguage =
    describedAs(language, "Only files of this language", "every language");
constexpr Choice<AgentOutputAction> onlyAction{"--action", "Only files with this output action"};
constexpr Flag folders{"--folders", "Include folders"};
constexpr Flag shadowItems{"--shadow-items", "Include files imported from outside the project"};
constexpr WholeNumber offset{
    "--offset", "n", {.min = 0, .defaultValue = 0}, "Pass over this many rows first"};

struct AgentFileListRequest {
    std::string path;
    std::optional<std::string> language;
    std::optional<AgentOutputAction> outputAction;
    bool includeFolders = false;
    /// Files imported from outside the project.
    bool includeShadowItems = false;
    std::int64_t limit = 0;
    std::int64_t offset = 0;
    FERNLOW_WIRE_FIELDS(path, language, outputAction, includeFolders, includeShadowItems, limit,
                        offset)
};

AgentCLIAction parseFiles(CommandLine& line) {
    AgentFileListRequest request;
    request.path = line.takePathOrCurrentDirectory();
    request.language = line.optionalValue(onlyLanguage);
    request.outputAction = line.optionalValue(onlyAction);
    request.includeFolders = line.has(folders);
    request.includeShadowItems = line.has(shadowItems);
    request.limit = line.valueOrDefault(limit);
    request.offset = line.valueOrDefault(offset);
    return post("/v1/files", request);
}

AgentCLIAction parseFileSettings(CommandLine& line) {
    return post("/v1/files/settings", AgentPathRequest{line.takeRequiredPaths().front()});
}

constexpr Operand fileChanges{.value = {ValueKind::fileSetting, "key=value"}, .repeats = true};
constexpr auto setAction = describedAs(onlyAction, "What becomes of the file");
constexpr Path outputFolder{
    "--output-folder", {ValueKind::folder, "path"}, "Write the file's output into this folder"};
constexpr Text outputName{
    "--output-name", {ValueKind::text, "name"}, "What to call the output; needs --output-folder"};

struct AgentFilePatch {
    std::string path;
    std::optional<AgentOutputAction> outputAction;
    /// An absolute path.
    std::optional<std::string> outputFolder;
    std::optional<std::string> outputFilename;
    SettingValues values;
    SettingLiterals literals;
    FERNLOW_WIRE_FIELDS(path, outputAction, outputFolder, outputFilename, values, literals)
};

/// Takes the only file from the words of "files set" and leaves the settings. A file with "=" in
/// its name would be read as a setting.
std::string takeFileWord(std::vector<std::string>& words, const Command& command) {
    const auto file = std::find_if_not(words.begin(), words.end(), isSettingWord);
    if (file == words.end()) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingPath{command.name()});
    }
    const auto another = std::find_if_not(file + 1, words.end(), isSettingWord);
    if (another != words.end()) {
        throw AgentCLIUsageError(AgentCLIUsageError::unexpectedArgument{*another});
    }
    std::string path = std::move(*file);
    words.erase(file);
    return path;
}

AgentCLIAction parseFileSet(CommandLine& line) {
    AgentFilePatch patch;
    auto settings = line.takeRemainingWords();
    const std::string file = takeFileWord(settings, line.command());
    patch.literals = parseLiteralWords(settings);
    patch.values = line.valueOrDefault(values);
    // An output name alone changes nothing, because the application only uses it with a folder.
    if (patch.literals.empty() && patch.values.empty() && !line.has(setAction) &&
        !line.has(outputFolder)) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingValue{line.command().name()});
    }
    patch.path = resolvePath(file, line.currentDirectory());
    patch.outputAction = line.optionalValue(setAction);
    patch.outputFolder = line.optionalPath(outputFolder);
    patch.outputFilename = line.optionalValue(outputName);
    return post("/v1/files/set", patch);
}

constexpr Operand anyFile{.value = {ValueKind::file, "file"}};
constexpr auto fileLanguage = describedAs(language, "What the files of this language have");

AgentCLIAction parseFileSchema(CommandLine& line) {
    AgentFileSchemaRequest request;
    const auto paths = line.takePaths();
    request.language = line.optionalValue(fileLanguage);
    if (!paths.empty()) {
        request.path = paths.front();
    } else if (!request.language) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingValue{line.command().name()});
    }
    return post("/v1/files/schema", request);
}

constexpr Operand someFolders{
    .value = {ValueKind::folder, "folder"}, .isRequired = true, .repeats = true};
// Unlike the other timeouts, this timeout is sent as typed, whatever its size.
constexpr auto unboundedTimeout = timeout.unbounded();

struct AgentSkipFoldersRequest {
    std::vector<std::string> paths;
    bool skipped = false;
    bool wait = true;
    double timeoutSeconds = timeout.defaultValue();
    FERNLOW_WIRE_FIELDS(paths, skipped, wait, timeoutSeconds)
};

AgentCLIAction postSkip(CommandLine& line, bool skipped) {
    AgentSkipFoldersRequest request;
    request.paths = line.takeRequiredPaths();
    request.skipped = skipped;
    request.wait = !line.has(noWait);
    request.timeoutSeconds = line.valueOrDefault(unboundedTimeout);
    if (!std::isfinite(request.timeoutSeconds)) {
        // The encoder would name the field of the record instead of the option.
        throw json::EncodingError("\"" + std::string(timeout.word) + json::notFinite);
    }
    return post("/v1/files/skip", request);
}

AgentCLIAction parseFolderSkip(CommandLine& line) {
    return postSkip(line, true);
}

AgentCLIAction parseFolderUnskip(CommandLine& line) {
    return postSkip(line, false);
}

constexpr std::string_view files = "files";
constexpr auto commands = std::to_array<Command>({
    {.word = files,
     .summary = "Every file Fernlow is watching in a project",
     .operands = operandList<anyProject>,
     .options = optionList<onlyLanguage, onlyAction, folders, shadowItems, limit, offset>,
     .beforeSubcommand = optionList<fileLanguage, values, setAction, outputFolder, outputName,
                                    limit, offset, noWait, unboundedTimeout, folders, shadowItems>,
     .parse = parseFiles},
    {.word = files,
     .subcommand = "settings",
     .summary = "One file's own settings",
     .operands = operandList<oneFile>,
     .parse = parseFileSettings},
    {.word = files,
     .subcommand = "set",
     .summary = "Change one file, wholly or not at all",
     .operands = operandList<oneFile, fileChanges>,
     .options = optionList<setAction, outputFolder, outputName, values>,
     .parse = parseFileSet},
    {.word = files,
     .subcommand = "schema",
     .summary = "What settings a file has",
     .operands = operandList<anyFile>,
     .options = optionList<fileLanguage>,
     .parse = parseFileSchema},
    {.word = files,
     .subcommand = "skip",
     .summary = "Stop indexing folders; not the same as ignoring",
     .operands = operandList<someFolders>,
     .options = optionList<noWait, unboundedTimeout>,
     .parse = parseFolderSkip},
    {.word = files,
     .subcommand = "unskip",
     .summary = "Index folders again",
     .operands = operandList<someFolders>,
     .options = optionList<noWait, unboundedTimeout>,
     .parse = parseFolderUnskip},
});

} // namespace

std::span<const Command> filesCommands() {
    return commands;
}

} // namespace fernlow

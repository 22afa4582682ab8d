#include "commands/files.h"

#include "commands/options.h"
#include "commands/projects.h"
#include "commands/subcommand.h"

#include <algorithm>
#include <iterator>

namespace fernlow {

namespace {

/// The options that all of "files" knows; what a subcommand has no use for is dropped.
struct FilesOptions {
    std::optional<std::string> language;
    std::optional<std::string> values;
    std::optional<std::string> action;
    std::optional<std::string> outputFolder;
    std::optional<std::string> outputName;
    std::int64_t limit = 0;
    std::int64_t offset = 0;
    bool wait = true;
    double timeoutSeconds = 0;
    bool folders = false;
    bool shadowItems = false;
};

FilesOptions takeFilesOptions(WordList& words) {
    FilesOptions options;
    options.language = words.takeOptionValue("--language");
    options.values = words.takeOptionValue("--values");
    options.action = words.takeOptionValue("--action");
    options.outputFolder = words.takeOptionValue("--output-folder");
    options.outputName = words.takeOptionValue("--output-name");
    options.limit = takePageSize(words);
    options.offset = std::max<std::int64_t>(words.takeWholeNumber("--offset").value_or(0), 0);
    options.wait = !words.takeFlag("--no-wait");
    // Unlike the other timeouts this one travels as typed, whatever its size.
    options.timeoutSeconds =
        words.takeDecimalNumber("--timeout").value_or(static_cast<double>(defaultTimeoutSeconds));
    options.folders = words.takeFlag("--folders");
    options.shadowItems = words.takeFlag("--shadow-items");
    return options;
}

AgentCLIAction parseFileList(WordList& words, const FilesOptions& options,
                             const CurrentDirectory& currentDirectory) {
    AgentFileListRequest request;
    request.path = words.takePathOrCurrentDirectory(currentDirectory);
    request.language = options.language;
    request.outputAction = namedCase<AgentOutputAction>("--action", options.action);
    request.includeFolders = options.folders;
    request.includeShadowItems = options.shadowItems;
    request.limit = options.limit;
    request.offset = options.offset;
    return post("/v1/files", request);
}

/// Takes the one file from the words of "files set" and leaves its settings: a word with a "=" is a
/// setting, so a file with one in its name cannot be named.
std::string takeFileWord(std::vector<std::string>& words) {
    const auto isSetting = [](const std::string& word) {
        return word.find('=') != std::string::npos;
    };
    const auto file = std::find_if_not(words.begin(), words.end(), isSetting);
    if (file == words.end()) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingPath{"files set"});
    }
    const auto another = std::find_if_not(file + 1, words.end(), isSetting);
    if (another != words.end()) {
        throw AgentCLIUsageError(AgentCLIUsageError::unexpectedArgument{*another});
    }
    std::string path = std::move(*file);
    words.erase(file);
    return path;
}

AgentCLIAction parseFileSet(WordList& words, const FilesOptions& options,
                            const CurrentDirectory& currentDirectory) {
    AgentFilePatch patch;
    auto settings = words.takeRemainingWords();
    const std::string file = takeFileWord(settings);
    patch.literals = parseLiteralWords(settings);
    patch.values = decodeValuesOption(options.values);
    // A name alone changes nothing: without a folder the application has nowhere to apply it.
    if (patch.literals.empty() && patch.values.empty() && !options.action &&
        !options.outputFolder) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingValue{"files set"});
    }
    patch.path = resolvePath(file, currentDirectory);
    patch.outputAction = namedCase<AgentOutputAction>("--action", options.action);
    if (options.outputFolder) {
        patch.outputFolder = resolvePath(*options.outputFolder, currentDirectory);
    }
    patch.outputFilename = options.outputName;
    return post("/v1/files/set", patch);
}

AgentCLIAction parseFileSchema(WordList& words, const FilesOptions& options,
                               const CurrentDirectory& currentDirectory) {
    AgentFileSchemaRequest request;
    const auto paths = words.takePaths(currentDirectory, "files schema", Paths::optional);
    if (!paths.empty()) {
        request.path = paths.front();
    } else if (!options.language) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingValue{"files schema"});
    }
    request.language = options.language;
    return post("/v1/files/schema", request);
}

AgentCLIAction parseFolderSkip(WordList& words, const FilesOptions& options,
                               const CurrentDirectory& currentDirectory,
                               const std::string& subcommand) {
    AgentSkipFoldersRequest request;
    request.paths = words.takePaths(currentDirectory, "files " + subcommand, Paths::required);
    request.skipped = subcommand == "skip";
    request.wait = options.wait;
    request.timeoutSeconds = options.timeoutSeconds;
    return post("/v1/files/skip", request);
}

} // namespace

AgentCLIAction parseFiles(WordList& words, const CurrentDirectory& currentDirectory) {
    const FilesOptions options = takeFilesOptions(words);
    const auto subcommand = takeSubcommand(words);
    if (!subcommand) {
        return parseFileList(words, options, currentDirectory);
    }
    if (*subcommand == "settings") {
        const auto paths = words.takePaths(currentDirectory, "files settings", Paths::required);
        return post("/v1/files/settings", AgentPathRequest{paths.front()});
    }
    if (*subcommand == "set") {
        return parseFileSet(words, options, currentDirectory);
    }
    if (*subcommand == "skip" || *subcommand == "unskip") {
        return parseFolderSkip(words, options, currentDirectory, *subcommand);
    }
    if (*subcommand == "schema") {
        return parseFileSchema(words, options, currentDirectory);
    }
    throw AgentCLIUsageError(AgentCLIUsageError::unknownCommand{"files " + *subcommand});
}

} // namespace fernlow

#pragma once

#include "commands/encode.h"
#include "commands/ranges.h"
#include "commands/setting_values.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The application's index of one project's files.
namespace fernlow {

/// What becomes of a file.
enum class AgentOutputAction { compile, ignore, copy };
template <>
inline constexpr auto wireWords<AgentOutputAction> =
    std::to_array<std::string_view>({"compile", "ignore", "copy"});

struct AgentFileListRequest {
    std::string path;
    std::optional<std::string> language;
    std::optional<AgentOutputAction> outputAction;
    bool includeFolders = false;
    /// Files imported from outside the project.
    bool includeShadowItems = false;
    std::int64_t limit = 0;
    std::int64_t offset = 0;
    FERNLOW_WIRE_RECORD(AgentFileListRequest, path, language, outputAction, includeFolders,
                        includeShadowItems, limit, offset)
};

struct AgentFilePatch {
    std::string path;
    std::optional<AgentOutputAction> outputAction;
    /// An absolute path.
    std::optional<std::string> outputFolder;
    std::optional<std::string> outputFilename;
    SettingValues values;
    SettingLiterals literals;
    FERNLOW_WIRE_RECORD(AgentFilePatch, path, outputAction, outputFolder, outputFilename, values,
                        literals)
};

/// A file, or every file of a language.
struct AgentFileSchemaRequest {
    std::optional<std::string> path;
    std::optional<std::string> language;
    FERNLOW_WIRE_RECORD(AgentFileSchemaRequest, path, language)
};

struct AgentSkipFoldersRequest {
    std::vector<std::string> paths;
    bool skipped = false;
    bool wait = true;
    double timeoutSeconds = defaultTimeoutSeconds;
    FERNLOW_WIRE_RECORD(AgentSkipFoldersRequest, paths, skipped, wait, timeoutSeconds)
};

AgentCLIAction parseFiles(WordList& words, const CurrentDirectory& currentDirectory);

} // namespace fernlow

#pragma once

#include "commands/encode.h"
#include "commands/setting_values.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The collections of a project whose rows are the user's to make and unmake.
namespace fernlow {

enum class AgentCollectionKind { hooks, buildSteps, webpPresets, userLanguages };
template <>
inline constexpr auto wireWords<AgentCollectionKind> =
    std::to_array<std::string_view>({"hooks", "buildSteps", "webpPresets", "userLanguages"});

enum class AgentBuildStepType { processItems, processRemainingItems, runScript };
template <>
inline constexpr auto wireWords<AgentBuildStepType> =
    std::to_array<std::string_view>({"processItems", "processRemainingItems", "runScript"});

struct AgentCollectionListRequest {
    std::string path;
    /// Absent means every kind.
    std::optional<AgentCollectionKind> kind;
    FERNLOW_WIRE_RECORD(AgentCollectionListRequest, path, kind)
};

struct AgentCollectionAddRequest {
    std::string path;
    AgentCollectionKind kind = AgentCollectionKind::hooks;
    std::optional<AgentBuildStepType> buildStepType;
    std::optional<std::string> fileExtension;
    SettingValues values;
    /// Always empty: a new row's settings are given through --values.
    SettingLiterals literals;
    FERNLOW_WIRE_RECORD(AgentCollectionAddRequest, path, kind, buildStepType, fileExtension, values,
                        literals)
};

struct AgentCollectionRemoveRequest {
    std::string path;
    AgentCollectionKind kind = AgentCollectionKind::hooks;
    std::string id;
    FERNLOW_WIRE_RECORD(AgentCollectionRemoveRequest, path, kind, id)
};

struct AgentCollectionReorderRequest {
    std::string path;
    AgentCollectionKind kind = AgentCollectionKind::buildSteps;
    std::string id;
    /// The new place, counting from zero.
    std::int64_t position = 0;
    FERNLOW_WIRE_RECORD(AgentCollectionReorderRequest, path, kind, id, position)
};

struct AgentCollectionPatch {
    std::string path;
    AgentCollectionKind kind = AgentCollectionKind::hooks;
    std::string id;
    SettingValues values;
    SettingLiterals literals;
    FERNLOW_WIRE_RECORD(AgentCollectionPatch, path, kind, id, values, literals)
};

struct AgentCollectionSchemaRequest {
    /// Absent means every kind.
    std::optional<AgentCollectionKind> kind;
    FERNLOW_WIRE_RECORD(AgentCollectionSchemaRequest, kind)
};

AgentCLIAction parseCollections(WordList& words, const CurrentDirectory& currentDirectory);

} // namespace fernlow

#pragma once

#include "commands/encode.h"
#include "commands/option.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

/// The request records that more than one file sends: several command families, or a command family
/// and completion.
namespace fernlow {

/// Names a project or a file.
struct AgentPathRequest {
    std::string path;
    FERNLOW_WIRE_FIELDS(path)
};

enum class AgentCollectionKind { hooks, buildSteps, webpPresets, userLanguages };
template <>
inline constexpr auto wireNames<AgentCollectionKind> =
    std::to_array<std::string_view>({"hooks", "buildSteps", "webpPresets", "userLanguages"});

namespace options {

inline constexpr Choice<AgentCollectionKind> kind{"--kind", "Which kind of row"};

} // namespace options

struct AgentCollectionListRequest {
    std::string path;
    /// Absent means every kind.
    std::optional<AgentCollectionKind> kind;
    FERNLOW_WIRE_FIELDS(path, kind)
};

struct AgentCollectionSchemaRequest {
    /// Absent means every kind.
    std::optional<AgentCollectionKind> kind;
    FERNLOW_WIRE_FIELDS(kind)
};

struct AgentSettingsSchemaRequest {
    std::string path;
    std::optional<std::string> language;
    FERNLOW_WIRE_FIELDS(path, language)
};

struct AgentDefaultsSchemaRequest {
    std::optional<std::string> language;
    FERNLOW_WIRE_FIELDS(language)
};

/// Names a file, or all files of a language.
struct AgentFileSchemaRequest {
    std::optional<std::string> path;
    std::optional<std::string> language;
    FERNLOW_WIRE_FIELDS(path, language)
};

} // namespace fernlow

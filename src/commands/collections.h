#pragma once

#include "commands/command.h"
#include "commands/encode.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The collections of a project whose rows are the user's to make and unmake.
namespace fernlow {

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

std::span<const Command> collectionCommands();

} // namespace fernlow

#pragma once

#include "commands/encode.h"
#include "commands/ranges.h"

#include <optional>
#include <string>

/// The commands that change which folders are projects, whether they are watched, and how the
/// sidebar arranges them.
namespace fernlow {

struct AgentPathRequest {
    std::string path;
    FERNLOW_WIRE_RECORD(AgentPathRequest, path)
};

struct AgentEnabledRequest {
    std::string path;
    bool enabled = false;
    FERNLOW_WIRE_RECORD(AgentEnabledRequest, path, enabled)
};

struct AgentAddProjectRequest {
    std::string path;
    bool asFramework = false;
    double timeoutSeconds = defaultTimeoutSeconds;
    FERNLOW_WIRE_RECORD(AgentAddProjectRequest, path, asFramework, timeoutSeconds)
};

struct AgentWatchingRequest {
    bool paused = false;
    FERNLOW_WIRE_RECORD(AgentWatchingRequest, paused)
};

struct AgentGroupAddRequest {
    std::string name;
    FERNLOW_WIRE_RECORD(AgentGroupAddRequest, name)
};

struct AgentGroupRemoveRequest {
    std::string name;
    FERNLOW_WIRE_RECORD(AgentGroupRemoveRequest, name)
};

struct AgentGroupRenameRequest {
    std::string name;
    std::string newName;
    FERNLOW_WIRE_RECORD(AgentGroupRenameRequest, name, newName)
};

struct AgentProjectMoveRequest {
    std::string path;
    /// Absent means the permanent Projects group.
    std::optional<std::string> group;
    FERNLOW_WIRE_RECORD(AgentProjectMoveRequest, path, group)
};

struct AgentProjectRenameRequest {
    std::string path;
    std::string name;
    FERNLOW_WIRE_RECORD(AgentProjectRenameRequest, path, name)
};

AgentCLIAction parseAdd(WordList& words, const CurrentDirectory& currentDirectory);
AgentCLIAction parseRemove(WordList& words, const CurrentDirectory& currentDirectory);
AgentCLIAction parseEnable(WordList& words, const CurrentDirectory& currentDirectory);
AgentCLIAction parseDisable(WordList& words, const CurrentDirectory& currentDirectory);
AgentCLIAction parseWatch(WordList& words, const CurrentDirectory& currentDirectory);
AgentCLIAction parseGroups(WordList& words, const CurrentDirectory& currentDirectory);
AgentCLIAction parseMove(WordList& words, const CurrentDirectory& currentDirectory);
AgentCLIAction parseRename(WordList& words, const CurrentDirectory& currentDirectory);

} // namespace fernlow

#pragma once

#include "commands/encode.h"
#include "commands/ranges.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// One npm operation in a project, and opening the preview in a browser.
namespace fernlow {

enum class AgentPackageAction { install, forceInstall, uninstall, update, prune };
template <>
inline constexpr auto wireWords<AgentPackageAction> =
    std::to_array<std::string_view>({"install", "forceInstall", "uninstall", "update", "prune"});

/// The lists of a package.json that hold dependencies.
enum class AgentDependencyList { production, development, optional, bundle };
template <>
inline constexpr auto wireWords<AgentDependencyList> =
    std::to_array<std::string_view>({"production", "development", "optional", "bundle"});

/// Which of the preview server's addresses to open.
enum class AgentPreviewAddress { preferred, bonjour, lan, loopback, localhost };
template <>
inline constexpr auto wireWords<AgentPreviewAddress> =
    std::to_array<std::string_view>({"preferred", "bonjour", "lan", "loopback", "localhost"});

/// Whatever is absent, the application takes from the project's own npm settings.
struct AgentPackageRequest {
    std::string path;
    AgentPackageAction action = AgentPackageAction::install;
    std::vector<std::string> packages;
    std::optional<std::vector<AgentDependencyList>> install;
    std::optional<std::vector<AgentDependencyList>> saveTo;
    std::optional<bool> exactVersions;
    std::optional<bool> updatePackageLock;
    bool raiseVersionLimits = false;
    bool wait = true;
    double timeoutSeconds = defaultTimeoutSeconds;
    FERNLOW_WIRE_RECORD(AgentPackageRequest, path, action, packages, install, saveTo, exactVersions,
                        updatePackageLock, raiseVersionLimits, wait, timeoutSeconds)
};

struct AgentPreviewRequest {
    AgentPreviewAddress address = AgentPreviewAddress::preferred;
    std::optional<std::string> browserBundleID;
    /// Below the preview root.
    std::optional<std::string> relativePath;
    FERNLOW_WIRE_RECORD(AgentPreviewRequest, address, browserBundleID, relativePath)
};

AgentCLIAction parsePackages(WordList& words, const CurrentDirectory& currentDirectory);
AgentCLIAction parsePreview(WordList& words, const CurrentDirectory& currentDirectory);

} // namespace fernlow

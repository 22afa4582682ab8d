#include "commands/packages.h"

#include "commands/command_line.h"
#include "commands/encode.h"
#include "commands/options.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fernlow {

enum class AgentPackageAction { install, forceInstall, uninstall, update, prune };
template <>
inline constexpr auto wireNames<AgentPackageAction> =
    std::to_array<std::string_view>({"install", "forceInstall", "uninstall", "update", "prune"});

/// The lists of a package.json that hold dependencies.
enum class AgentDependencyList { production, development, optional, bundle };
template <>
inline constexpr auto wireNames<AgentDependencyList> =
    std::to_array<std::string_view>({"production", "development", "optional", "bundle"});

/// Which of the preview server's addresses to open.
enum class AgentPreviewAddress { preferred, bonjour, lan, loopback, localhost };
template <>
inline constexpr auto wireNames<AgentPreviewAddress> =
    std::to_array<std::string_view>({"preferred", "bonjour", "lan", "loopback", "localhost"});

namespace {

using namespace options;

constexpr std::string_view projectsChoice = "the project's own npm settings";
constexpr ChoiceList<AgentDependencyList> install{"--install", "Which lists to install from",
                                                  projectsChoice};
constexpr ChoiceList<AgentDependencyList> saveTo{
    "--save-to", "Which lists to record in; empty for none", projectsChoice};
constexpr Flag exact{"--exact", "Record the exact version"};
constexpr Flag noExact{"--no-exact", "Record a range of versions", &exact};
constexpr Flag packageLock{"--package-lock", "Write package-lock.json"};
constexpr Flag noPackageLock{"--no-package-lock", "Do not write package-lock.json", &packageLock};
constexpr Flag raiseLimits{"--raise-limits", "With update: allow a breaking version"};

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
    double timeoutSeconds = timeout.defaultValue();
    FERNLOW_WIRE_FIELDS(path, action, packages, install, saveTo, exactVersions, updatePackageLock,
                        raiseVersionLimits, wait, timeoutSeconds)
};

/// The flag wins over its opposite; neither leaves the choice to the project.
std::optional<bool> choice(const CommandLine& line, const Flag& flag, const Flag& opposite) {
    return line.has(flag) || line.has(opposite) ? std::optional(line.has(flag)) : std::nullopt;
}

AgentCLIAction parsePackages(CommandLine& line) {
    AgentPackageRequest request;
    request.install = line.value(install);
    request.saveTo = line.value(saveTo);
    request.exactVersions = choice(line, exact, noExact);
    request.updatePackageLock = choice(line, packageLock, noPackageLock);
    request.raiseVersionLimits = line.has(raiseLimits);
    request.wait = !line.has(noWait);
    request.timeoutSeconds = line.value(timeout);
    request.path = line.pathOrCurrentDirectory(inProject);
    request.action = line.subcommandNamed<AgentPackageAction>(line.takeRequiredWord());
    request.packages = line.takeRemainingWords();
    return post("/v1/packages", request);
}

struct AgentPreviewRequest {
    AgentPreviewAddress address = AgentPreviewAddress::preferred;
    std::optional<std::string> browserBundleID;
    /// Below the preview root.
    std::optional<std::string> relativePath;
    FERNLOW_WIRE_FIELDS(address, browserBundleID, relativePath)
};

constexpr Choice<AgentPreviewAddress> address{"--address",
                                              "Which of the preview server's addresses",
                                              wireName(AgentPreviewRequest().address)};
constexpr Text browser{"--browser",
                       {ValueKind::text, "bundleID", "Fernlow's choice"},
                       "Which browser, such as com.apple.Safari"};
constexpr Text page{"--page", {ValueKind::text, "path"}, "A path below the preview root"};

AgentCLIAction parsePreview(CommandLine& line) {
    AgentPreviewRequest request;
    line.rejectLeftoverWords();
    request.address = line.value(address).value_or(request.address);
    request.browserBundleID = line.value(browser);
    request.relativePath = line.value(page);
    return post("/v1/preview", request);
}

constexpr Operand action{choiceOf<AgentPackageAction>("action"), true};
constexpr Operand packageNames{{ValueKind::text, "pkg"}, false, true};

constexpr auto commands = std::to_array<Command>({
    {.word = "packages",
     .summary = "Run one npm operation in a project",
     .operands = operandList<action, packageNames>,
     .options = optionList<install, saveTo, exact, noExact, packageLock, noPackageLock, raiseLimits,
                           noWait, timeout, inProject>,
     .parse = parsePackages},
    {.word = "preview",
     .summary = "Open the preview address in a browser",
     .options = optionList<address, browser, page>,
     .parse = parsePreview},
});

} // namespace

std::span<const Command> packageCommands() {
    return commands;
}

} // namespace fernlow

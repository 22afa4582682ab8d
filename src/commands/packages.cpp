#include "commands/command_line.h"
#include "commands/encode.h"
#include "commands/families.h"
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

/// The lists of dependencies in a package.json.
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

constexpr std::string_view projectSettings = "the project's own npm settings";
constexpr ChoiceList<AgentDependencyList> install{"--install", "Which lists to install from",
                                                  projectSettings};
constexpr ChoiceList<AgentDependencyList> saveTo{
    "--save-to", "Which lists to record in; empty for none", projectSettings};
constexpr Flag exact{"--exact", "Record the exact version"};
constexpr Flag noExact{"--no-exact", "Record a range of versions", &exact};
constexpr Flag packageLock{"--package-lock", "Write package-lock.json"};
constexpr Flag noPackageLock{"--no-package-lock", "Do not write package-lock.json", &packageLock};
constexpr Flag raiseLimits{"--raise-limits", "With update: allow a breaking version"};

/// For an absent field, the application uses the project's own npm settings.
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

/// Returns whether the flag was given, or nothing if neither the flag nor its opposite was given.
/// If both were given, the flag prevails.
std::optional<bool> optionalFlag(const CommandLine& line, const Flag& flag, const Flag& opposite) {
    if (line.has(flag)) {
        return true;
    }
    return line.has(opposite) ? std::optional(false) : std::nullopt;
}

AgentCLIAction parsePackages(CommandLine& line) {
    AgentPackageRequest request;
    request.install = line.optionalValue(install);
    request.saveTo = line.optionalValue(saveTo);
    request.exactVersions = optionalFlag(line, exact, noExact);
    request.updatePackageLock = optionalFlag(line, packageLock, noPackageLock);
    request.raiseVersionLimits = line.has(raiseLimits);
    request.wait = !line.has(noWait);
    request.timeoutSeconds = line.valueOrDefault(timeout);
    request.path = line.pathOrCurrentDirectory(project);
    request.action = line.subcommandNamed<AgentPackageAction>(line.takeRequiredOperand());
    request.packages = line.takeRemainingWords();
    return post("/v1/packages", request);
}

constexpr auto defaultAddress = AgentPreviewAddress::preferred;

struct AgentPreviewRequest {
    AgentPreviewAddress address = defaultAddress;
    std::optional<std::string> browserBundleID;
    /// A path below the preview root.
    std::optional<std::string> relativePath;
    FERNLOW_WIRE_FIELDS(address, browserBundleID, relativePath)
};

constexpr Choice<AgentPreviewAddress> address{
    "--address", "Which of the preview server's addresses", wireName(defaultAddress)};
constexpr Text browser{"--browser",
                       {ValueKind::text, "bundleID", "Fernlow's choice"},
                       "Which browser, such as com.apple.Safari"};
constexpr Text page{"--page", {ValueKind::text, "path"}, "A path below the preview root"};

AgentCLIAction parsePreview(CommandLine& line) {
    AgentPreviewRequest request;
    line.rejectLeftoverWords();
    request.address = line.optionalValue(address).value_or(defaultAddress);
    request.browserBundleID = line.optionalValue(browser);
    request.relativePath = line.optionalValue(page);
    return post("/v1/preview", request);
}

constexpr Operand action{.value = choiceOf<AgentPackageAction>("action"), .isRequired = true};
constexpr Operand packageNames{.value = {ValueKind::text, "pkg"}, .repeats = true};

constexpr auto commands = std::to_array<Command>({
    {.word = "packages",
     .summary = "Run one npm operation in a project",
     .operands = operandList<action, packageNames>,
     .options = optionList<install, saveTo, exact, noExact, packageLock, noPackageLock, raiseLimits,
                           noWait, timeout, project>,
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

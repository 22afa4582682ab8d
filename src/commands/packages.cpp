#include "commands/packages.h"

#include "commands/options.h"

#include <algorithm>

namespace fernlow {

namespace {

std::string_view trimmed(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of(" \t"), text.size());
    text.remove_prefix(first);
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

/// Comma-separated names of lists; an empty value is no list at all. A piece that names none is
/// reported as it was typed, untrimmed.
std::optional<std::vector<AgentDependencyList>> takeDependencyLists(WordList& words,
                                                                    std::string_view option) {
    const auto value = words.takeOptionValue(option);
    if (!value) {
        return std::nullopt;
    }
    std::vector<AgentDependencyList> lists;
    for (std::size_t begin = 0; !value->empty() && begin <= value->size();) {
        const std::size_t end = std::min(value->find(',', begin), value->size());
        const auto piece = std::string_view(*value).substr(begin, end - begin);
        const auto list = fromWireWord<AgentDependencyList>(trimmed(piece));
        if (!list) {
            throw AgentCLIUsageError(
                AgentCLIUsageError::notANumber{std::string(option), std::string(piece)});
        }
        lists.push_back(*list);
        begin = end + 1;
    }
    return lists;
}

/// Takes a flag and its opposite: the flag wins over the opposite, and neither leaves the choice to
/// the project.
std::optional<bool> takeChoice(WordList& words, std::string_view flag, std::string_view opposite) {
    const bool chosen = words.takeFlag(flag);
    const bool opposed = words.takeFlag(opposite);
    return chosen || opposed ? std::optional(chosen) : std::nullopt;
}

AgentPackageAction takePackageAction(WordList& words) {
    const auto word = words.takeFirstWord();
    if (!word) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingValue{"packages"});
    }
    const auto action = fromWireWord<AgentPackageAction>(*word);
    if (!action) {
        throw AgentCLIUsageError(AgentCLIUsageError::unknownCommand{"packages " + *word});
    }
    return *action;
}

} // namespace

AgentCLIAction parsePackages(WordList& words, const CurrentDirectory& currentDirectory) {
    AgentPackageRequest request;
    request.install = takeDependencyLists(words, "--install");
    request.saveTo = takeDependencyLists(words, "--save-to");
    request.exactVersions = takeChoice(words, "--exact", "--no-exact");
    request.updatePackageLock = takeChoice(words, "--package-lock", "--no-package-lock");
    request.raiseVersionLimits = words.takeFlag("--raise-limits");
    request.wait = !words.takeFlag("--no-wait");
    request.timeoutSeconds = takeTimeout(words);
    request.path = takeProjectOption(words, currentDirectory);
    request.action = takePackageAction(words);
    request.packages = words.takeRemainingWords();
    return post("/v1/packages", request);
}

AgentCLIAction parsePreview(WordList& words, const CurrentDirectory& /*currentDirectory*/) {
    AgentPreviewRequest request;
    const auto address = words.takeOptionValue("--address");
    request.browserBundleID = words.takeOptionValue("--browser");
    request.relativePath = words.takeOptionValue("--page");
    words.rejectLeftoverWords();
    request.address = namedCase<AgentPreviewAddress>("--address", address)
                          .value_or(AgentPreviewAddress::preferred);
    return post("/v1/preview", request);
}

} // namespace fernlow

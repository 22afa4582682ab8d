#include "transport/socket_location.h"

#include "platform/platform.h"

#include <optional>

namespace fernlow {

std::string defaultSocketPath() {
    const std::string support = platform::applicationSupportFolder();
    const bool needsHome = !support.starts_with('/');
    return socketPathIn(support, needsHome ? platform::homeFolder() : std::nullopt);
}

std::string socketPathIn(const std::string& support, const std::optional<std::string>& home) {
    std::string folder = home.value_or("") + "/Library/Application Support";
    if (support.starts_with('/')) {
        folder = support;
    } else if (home && (support == "~" || support.starts_with("~/"))) {
        folder = *home + support.substr(1);
    }
    return folder + "/" + applicationBundleIdentifier + "/agent.sock";
}

} // namespace fernlow

#include "transport/socket_location.h"

#include "platform/platform.h"

#include <optional>

namespace fernlow {

std::string defaultSocketPath() {
    const std::string support = platform::applicationSupportFolder();
    // Asking the user database takes longer than all the rest.
    return socketPathIn(support, support.starts_with('/') ? std::nullopt : platform::homeFolder());
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

#include "transport/socket_location.h"

#include "platform/platform.h"

namespace fernlow {

std::string defaultSocketPath() {
    auto folder = platform::applicationSupportFolder();
    if (!folder) {
        folder = platform::homeFolder().value_or("") + "/Library/Application Support";
    }
    return *folder + "/" + applicationBundleIdentifier + "/agent.sock";
}

} // namespace fernlow

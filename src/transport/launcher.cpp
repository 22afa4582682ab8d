#include "transport/launcher.h"

#include "platform/platform.h"
#include "transport/socket_location.h"

#include <chrono>
#include <thread>

namespace fernlow {

void launchApplication(const std::string& socketPath, const LaunchSettings& settings,
                       SocketProbe somebodyListens) {
    platform::runProgram(settings.program, {"-g", "-b", applicationBundleIdentifier});
    const auto deadline = std::chrono::steady_clock::now() + settings.patience;
    while (std::chrono::steady_clock::now() < deadline && !somebodyListens(socketPath)) {
        std::this_thread::sleep_for(settings.pollInterval);
    }
}

} // namespace fernlow

#include "transport/launcher.h"

#include "platform/platform.h"
#include "transport/socket_client.h"
#include "transport/socket_location.h"

#include <thread>

namespace fernlow {

namespace {

bool somebodyListens(const std::string& socketPath) {
    try {
        AgentSocketClient::connect(socketPath, 0);
        return true;
    } catch (const AgentSocketClientError&) {
        return false;
    }
}

} // namespace

void launchApplication(const std::string& socketPath, const LaunchSettings& settings) {
    platform::runProgram(settings.program, {"-g", "-b", applicationBundleIdentifier});
    const auto deadline = std::chrono::steady_clock::now() + settings.patience;
    while (std::chrono::steady_clock::now() < deadline && !somebodyListens(socketPath)) {
        std::this_thread::sleep_for(settings.pollInterval);
    }
}

} // namespace fernlow

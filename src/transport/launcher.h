#pragma once

#include <chrono>
#include <string>

namespace fernlow {

/// How the application is started.
struct LaunchSettings {
    /// Run as `program -g -b <bundle identifier>`.
    std::string program = "/usr/bin/open";
    std::chrono::milliseconds pollInterval{200};
    /// How long to wait for the application to listen, once the program has ended.
    std::chrono::milliseconds patience{25000};
};

/// Tells whether connections to the socket at a path are accepted.
using SocketProbe = bool (*)(const std::string& socketPath);

/// Has the system start the application in the background, and waits until its socket accepts a
/// connection or patience runs out. Never fails: whoever connects next finds out.
void launchApplication(const std::string& socketPath, const LaunchSettings& settings,
                       SocketProbe somebodyListens);

} // namespace fernlow

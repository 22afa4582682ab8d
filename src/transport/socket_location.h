#pragma once

#include <string>

namespace fernlow {

/// Names the application to the system, and its folder among the support files.
inline constexpr const char* applicationBundleIdentifier = "com.tarnwick.Fernlow3";

/// Where the application listens: "agent.sock" in its own support folder. Nothing is created or
/// tested for. Never fails.
std::string defaultSocketPath();

} // namespace fernlow

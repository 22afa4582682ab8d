#pragma once

#include <optional>
#include <string>

namespace fernlow {

/// Names the application to the system, and its folder among the support files.
inline constexpr const char* applicationBundleIdentifier = "com.tarnwick.Fernlow3";

/// Where the application listens: "agent.sock" in its own support folder. Nothing is created or
/// tested for. Never fails.
std::string defaultSocketPath();

/// The same for a system that names `support` as the folder of support files and a user whose home
/// folder is `home`. A "~" in front of `support` stands for `home`; where no absolute path comes of
/// it, the folder is the usual one below `home`.
std::string socketPathIn(const std::string& support, const std::optional<std::string>& home);

} // namespace fernlow

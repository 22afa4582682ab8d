#pragma once

#include <optional>
#include <string>

namespace fernlow {

/// Identifies the application to the system. It is also the name of the application's folder below
/// the system's folder for support files.
inline constexpr const char* applicationBundleIdentifier = "com.tarnwick.Fernlow3";

/// Returns the path of the socket on which the application listens: "agent.sock" in its own support
/// folder. The socket need not exist. Never fails.
std::string defaultSocketPath();

/// Returns the same path for a given support folder of the system and a given home folder. A "~" at
/// the beginning of `support` stands for `home`. If `support` is not absolute even then, the folder
/// is "Library/Application Support" below `home`.
std::string socketPathIn(const std::string& support, const std::optional<std::string>& home);

} // namespace fernlow

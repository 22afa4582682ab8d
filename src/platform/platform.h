#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// The operating system calls that differ between macOS and Linux.
namespace fernlow::platform {

/// Makes the relocated data of a static program read-only (RELRO) on the systems whose start-up
/// code does not. Call it first in main().
void protectRelocations();

/// Returns the home folder of the user who runs this process. It comes from the user database,
/// never from the environment. Returns nothing if the database has no entry for the user.
std::optional<std::string> homeFolder();

/// Returns the home folder of the named user, or nothing if there is no such user.
std::optional<std::string> homeFolderOf(const std::string& user);

/// Returns the system's folder for the support files of the user's applications. On macOS the path
/// begins with "~" for the home folder. Returns "" on systems that define no such folder.
std::string applicationSupportFolder();

/// Starts a program and waits until it has ended. Reports neither the program's exit status nor a
/// failure to start it.
///
/// The program's standard streams are the null device. It inherits no other descriptor, so it
/// cannot hold a pipe of our caller open. It starts with no signal ignored or blocked, except
/// those that the C library reserves. If the system refuses any of this, no program is started.
void runProgram(const std::string& path, const std::vector<std::string>& arguments);

/// Prepares a new socket for sendWithoutSignal() and marks it as close-on-exec. Returns false if
/// the system refuses; the socket must not be used then.
[[nodiscard]] bool prepareSocket(int socket);

/// Works like write() for a socket, but never raises SIGPIPE: if the peer has closed the
/// connection, the call fails with EPIPE.
ssize_t sendWithoutSignal(int socket, const char* bytes, std::size_t count);

} // namespace fernlow::platform

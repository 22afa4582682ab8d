#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// The few questions asked of the operating system that macOS and Linux answer differently.
namespace fernlow::platform {

/// To be called first: makes what the start of the program has put in place read-only where the
/// system leaves that to the program.
void protectRelocations();

/// The home folder of the user who runs this process, from the user database and never from the
/// environment. Absent when the database doesn't know the user.
std::optional<std::string> homeFolder();

/// The home folder of the user with that name. Absent when there is no such user.
std::optional<std::string> homeFolderOf(const std::string& user);

/// The folder in which applications keep the user's support files, as the system names it: macOS
/// puts "~" for the home folder. Empty where the system names none.
std::string applicationSupportFolder();

/// Starts a program and waits until it has ended; how it ended is not told, and neither is that it
/// could not be started. Its standard streams are the null device and it inherits no other
/// descriptor, so it never holds a pipe of our caller open; no signal is ignored or blocked for it,
/// but for those that the C library keeps to itself.
void runProgram(const std::string& path, const std::vector<std::string>& arguments);

/// Prepares a new socket so that sendWithoutSignal() holds and no started program inherits it.
void prepareSocket(int socket);

/// write() for a socket, but a peer that has gone is EPIPE alone and never the SIGPIPE signal.
ssize_t sendWithoutSignal(int socket, const char* bytes, std::size_t count);

} // namespace fernlow::platform

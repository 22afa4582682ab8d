#pragma once

#include "commands/paths.h"
#include "transport/socket_client.h"

#include <unistd.h>

#include <string>
#include <vector>

namespace fernlow {

/// What a run says when memory has run out.
inline constexpr const char* outOfMemory = "There is not enough memory for this.";
/// The exit status when nothing was sent, and when the application gave no answer.
inline constexpr int badArguments = 2;
inline constexpr int notReached = 3;

/// What a run uses of the world around it; the defaults are the real ones.
struct RunEnvironment {
    int standardOutput = STDOUT_FILENO;
    int standardError = STDERR_FILENO;
    LaunchSettings launch{};
};

/// One whole run: understands the arguments (those after the program's name), has the request
/// carried out, writes one text to standard output or standard error, and gives the exit status.
/// Never throws.
///
/// 0 finished; 1 finished, but something failed (or the text could not be written); 2 bad
/// arguments; 3 the application could not be reached or answered badly; 4 the wait expired;
/// 5 refused.
int runAgentCLI(const std::vector<std::string>& arguments, const CurrentDirectory& currentDirectory,
                bool standardOutputIsTerminal, const RunEnvironment& environment = {});

} // namespace fernlow

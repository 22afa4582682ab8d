#pragma once

#include "bytes/byte_buffer.h"
#include "commands/paths.h"
#include "transport/socket_client.h"

#include <unistd.h>

#include <string>
#include <vector>

namespace fernlow {

inline constexpr const char* outOfMemoryMessage = "There is not enough memory for this.";
inline constexpr int badArgumentsStatus = 2;
inline constexpr int unreachableStatus = 3;

/// The descriptors and settings of a run. The defaults are those of the program; tests set others.
struct RunEnvironment {
    int standardOutput = STDOUT_FILENO;
    int standardError = STDERR_FILENO;
    ExchangeSettings exchange{};
    /// If not null, receives the text of a reply after it was written to standard output. A program
    /// that is about to exit should keep it: the system frees all memory of a process faster than
    /// the program unmaps one buffer.
    ByteBuffer* writtenText = nullptr;
};

/// Runs the program: parses the arguments (without the program's name), sends the request, and
/// writes one text to standard output or standard error. Returns the exit status. Never throws.
///
/// The exit statuses are:
/// - 0: finished;
/// - 1: finished, but something failed, or the text could not be written;
/// - 2: bad arguments;
/// - 3: the application could not be reached, or its reply is malformed;
/// - 4: the wait expired;
/// - 5: refused, or the reply could not be read.
int runAgentCLI(const std::vector<std::string>& arguments, const CurrentDirectory& currentDirectory,
                bool standardOutputIsTerminal, const RunEnvironment& environment = {});

} // namespace fernlow

#include "cli/run.h"
#include "commands/paths.h"
#include "platform/platform.h"
#include "terminal/output.h"

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <vector>

namespace {

const std::terminate_handler defaultTerminate = std::get_terminate();

/// Ends the program if an exception cannot be thrown because no memory is left for it. The C++
/// library reserves memory for exceptions at start-up; if that failed, a throw calls this handler
/// and there is no current exception. The status is `unreachableStatus`, because the request may
/// already have been sent.
void terminateWithoutMemory() {
    if (std::current_exception() != nullptr) {
        defaultTerminate();
    }
    static_cast<void>(fernlow::writeLine(STDERR_FILENO, fernlow::outOfMemoryMessage));
    ::_exit(fernlow::unreachableStatus);
}

} // namespace

int main(int argc, char** argv) {
    fernlow::platform::protectRelocations();
    std::set_terminate(&terminateWithoutMemory);
    const bool standardOutputIsTerminal = ::isatty(STDOUT_FILENO) == 1;
    try {
        const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
        const auto currentDirectory = fernlow::CurrentDirectory::ofProcess();
        fernlow::ByteBuffer writtenText;
        fernlow::RunEnvironment environment;
        environment.writtenText = &writtenText;
        const int status = fernlow::runAgentCLI(arguments, currentDirectory,
                                                standardOutputIsTerminal, environment);
        // Unlike return, this spends no time on destroying the local variables.
        std::exit(status & 0xFF);
    } catch (const std::bad_alloc&) {
        static_cast<void>(fernlow::writeLine(STDERR_FILENO, fernlow::outOfMemoryMessage));
        return fernlow::badArgumentsStatus;
    }
}

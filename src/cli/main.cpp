#include "cli/run.h"
#include "commands/paths.h"
#include "platform/platform.h"
#include "terminal/output.h"

#include <unistd.h>

#include <exception>
#include <new>
#include <string>
#include <vector>

namespace {

const std::terminate_handler defaultTerminate = std::get_terminate();

/// A terminate handler. Throwing an exception takes memory. The C++ library reserves some when the
/// program starts; if it could not, a throw ends here without an exception. A request may have been
/// sent by then.
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
        return fernlow::runAgentCLI(arguments, currentDirectory, standardOutputIsTerminal) & 0xFF;
    } catch (const std::bad_alloc&) {
        static_cast<void>(fernlow::writeLine(STDERR_FILENO, fernlow::outOfMemoryMessage));
        return fernlow::badArgumentsStatus;
    }
}

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

const std::terminate_handler usualEnd = std::get_terminate();

/// Throwing takes memory too. The C++ library sets some aside for it as the program starts; without
/// even that, a throw ends here, whether or not a request was sent.
void endWithoutException() {
    if (std::current_exception() != nullptr) {
        usualEnd();
    }
    static_cast<void>(fernlow::writeLine(STDERR_FILENO, fernlow::outOfMemory));
    ::_exit(fernlow::notReached);
}

} // namespace

int main(int argc, char** argv) {
    fernlow::platform::protectRelocations();
    std::set_terminate(&endWithoutException);
    const bool standardOutputIsTerminal = ::isatty(STDOUT_FILENO) == 1;
    try {
        const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
        const auto currentDirectory = fernlow::CurrentDirectory::ofProcess();
        return fernlow::runAgentCLI(arguments, currentDirectory, standardOutputIsTerminal) & 0xFF;
    } catch (const std::bad_alloc&) {
        static_cast<void>(fernlow::writeLine(STDERR_FILENO, fernlow::outOfMemory));
        return fernlow::badArguments;
    }
}

#include "cli/output.h"
#include "cli/run.h"
#include "cli/words.h"

#include <unistd.h>

#include <new>
#include <string>
#include <vector>

int main(int argc, char** argv) {
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

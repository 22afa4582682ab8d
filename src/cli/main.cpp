#include "cli/run.h"
#include "cli/words.h"

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    const bool standardOutputIsTerminal = ::isatty(STDOUT_FILENO) == 1;
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    const auto currentDirectory = fernlow::CurrentDirectory::ofProcess();
    const int status = fernlow::runAgentCLI(arguments, currentDirectory, standardOutputIsTerminal);
    return status & 0xFF;
}

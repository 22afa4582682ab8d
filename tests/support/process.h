#pragma once

#include "cli/run.h"

#include <functional>
#include <string>
#include <vector>

namespace fernlow::test {

/// The output and the exit status of a run.
struct Outcome {
    std::string standardOutput;
    std::string standardError;
    /// The exit status, or the negative of the signal that ended the process.
    int status = 0;

    bool operator==(const Outcome&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

/// Returns the path of a program that is installed as `name`, such as "bin/fernlow". The
/// environment variable FERNLOW_PREFIX names the folder of an installation to test. Without it, the
/// programs that were built with the tests are tested.
std::string program(const std::string& name);

/// Calls runAgentCLI() in this process with the words of a line (see splitWords()), as if standard
/// output were a terminal, and with files as the standard streams. If FERNLOW_PREFIX is set, runs
/// the installed program instead. It uses another current directory and its own timeouts, and
/// /usr/bin/open must run the program that FERNLOW_OPEN names.
Outcome runLine(std::string_view line, ExchangeSettings settings = {});

/// A run of the built program.
struct ProgramRun {
    std::vector<std::string> arguments;
    std::string folder = "/";
    /// Called in the new process before the program starts. Must not allocate memory.
    std::function<void()> prepare{};
    /// Whether standard output and standard error are a pseudo-terminal instead of two files. The
    /// outcome's standardOutput then contains the text of both.
    bool inTerminal = false;
    /// The program to run.
    std::string program = test::program("bin/fernlow");
};

/// Runs a program and waits until it ends.
Outcome runProgram(const ProgramRun& run);

/// A running stand-in application, which the destructor ends.
class StandIn {
public:
    /// Throws std::runtime_error if the stand-in does not listen after ten seconds.
    explicit StandIn(const std::string& socketPath);
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;
    ~StandIn();

private:
    int process_ = -1;
};

} // namespace fernlow::test

#pragma once

#include "cli/run.h"

#include <functional>
#include <string>
#include <vector>

namespace fernlow::test {

/// What a run printed and how it ended.
struct Outcome {
    std::string standardOutput;
    std::string standardError;
    /// The exit status, or the negative of the signal that ended the process.
    int status = 0;

    bool operator==(const Outcome&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

/// A program by where it is installed, such as "bin/fernlow": the one that was built with the
/// tests, or the one in the folder that FERNLOW_PREFIX names in the environment, which is then the
/// one tested.
std::string program(const std::string& place);

/// Calls runAgentCLI() in this process with the words of a line (see splitWords()), as in a
/// terminal, and with files in place of the standard streams. Where FERNLOW_PREFIX is set, that
/// program is run instead: its folder is another, its patience its own, and /usr/bin/open has to
/// run what FERNLOW_OPEN names.
Outcome runLine(std::string_view line, ExchangeSettings settings = {});

/// How the built program is run.
struct ProgramRun {
    std::vector<std::string> arguments;
    std::string folder = "/";
    /// Called in the new process before the program is started, to spoil something. It must not
    /// allocate.
    std::function<void()> prepare{};
    /// Standard output and standard error are one pseudo-terminal instead of two files; its text
    /// stands in the outcome's standardOutput.
    bool inTerminal = false;
    /// Another program instead.
    std::string program = test::program("bin/fernlow");
};

/// Runs the built program and waits for it.
Outcome runProgram(const ProgramRun& run);

/// The stand-in application, listening on a socket of its own until this goes.
class StandIn {
public:
    explicit StandIn(const std::string& socketPath);
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;
    ~StandIn();

private:
    int process_ = -1;
};

} // namespace fernlow::test

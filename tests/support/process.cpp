#include "support/process.h"

#include "support/command_line.h"
#include "support/paths.h"
#include "support/temporary_folder.h"
#include "transport/connection.h"
#include "transport/socket_client_error.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ostream>
#include <stdexcept>
#include <thread>
#ifdef __APPLE__
#include <util.h>
#else
#include <pty.h>
#endif

namespace fernlow::test {

namespace {

/// Temporary files that replace the standard streams.
struct Streams {
    TemporaryFolder folder;
    int output = open("out");
    int error = open("err");

    [[nodiscard]] int open(const char* name) const {
        return ::open(folder.file(name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    }
    [[nodiscard]] Outcome close(int status) const {
        ::close(output);
        ::close(error);
        return {folder.contents("out"), folder.contents("err"), status};
    }
};

/// Copies the text on a pseudo-terminal to a file until the program closes its side. read() then
/// returns 0 or fails. Closes the terminal.
void copyFrom(int terminal, int file) {
    std::array<char, 65536> buffer{};
    for (;;) {
        const ssize_t count = ::read(terminal, buffer.data(), buffer.size());
        if (count <= 0 || ::write(file, buffer.data(), static_cast<std::size_t>(count)) <= 0) {
            break;
        }
    }
    ::close(terminal);
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
    return stream << "\nstatus " << outcome.status << "\nstdout: " << outcome.standardOutput
                  << "\nstderr: " << outcome.standardError;
}

std::string program(const std::string& name) {
    const char* const prefix = std::getenv("FERNLOW_PREFIX");
    return prefix != nullptr ? prefix + ("/" + name) : FERNLOW_BUILT + name.substr(name.find('/'));
}

Outcome runLine(std::string_view line, ExchangeSettings settings) {
    const Streams streams;
    if (std::getenv("FERNLOW_PREFIX") != nullptr) {
        // Only if necessary: setenv() is not safe while other threads run lines.
        if (settings.launchProgram != ExchangeSettings().launchProgram) {
            ::setenv("FERNLOW_OPEN", settings.launchProgram.c_str(), 1);
        }
        const auto separate = [&] { ::dup2(streams.error, STDERR_FILENO); };
        Outcome outcome = runProgram({splitWords(line), "/", separate, true});
        std::erase(outcome.standardOutput, '\r');
        return {outcome.standardOutput, streams.close(0).standardError, outcome.status};
    }
    return streams.close(runAgentCLI(splitWords(line), CurrentDirectory("/p/src"), true,
                                     {streams.output, streams.error, std::move(settings)}));
}

Outcome runProgram(const ProgramRun& run) {
    std::vector<std::string> words{run.program};
    words.insert(words.end(), run.arguments.begin(), run.arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    const Streams streams;
    int terminal = -1;
    // The new process must not allocate memory before exec: another thread, such as a scripted
    // peer, may have held the allocator's lock during the fork.
    const pid_t process =
        run.inTerminal ? ::forkpty(&terminal, nullptr, nullptr, nullptr) : ::fork();
    if (process == 0) {
        if (!run.inTerminal) {
            ::dup2(streams.output, STDOUT_FILENO);
            ::dup2(streams.error, STDERR_FILENO);
        }
        if (::chdir(run.folder.c_str()) == 0) {
            if (run.prepare) {
                run.prepare();
            }
            ::execv(argv.front(), argv.data());
        }
        ::_exit(127);
    }
    if (run.inTerminal) {
        copyFrom(terminal, streams.output);
    }
    int status = 0;
    ::waitpid(process, &status, 0);
    return streams.close(WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status));
}

StandIn::StandIn(const std::string& socketPath) {
    process_ = ::fork();
    if (process_ == 0) {
        const int devNull = ::open("/dev/null", O_WRONLY);
        ::dup2(devNull, STDOUT_FILENO);
        ::execl(FERNLOW_STAND_IN, FERNLOW_STAND_IN, "--socket", socketPath.c_str(), nullptr);
        ::_exit(127);
    }
    for (int attempt = 0; attempt < 500; ++attempt) {
        try {
            const Connection probe(socketPath, std::chrono::seconds(1));
            return;
        } catch (const AgentSocketClientError&) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }
    ::kill(process_, SIGKILL);
    throw std::runtime_error("the stand-in does not listen");
}

StandIn::~StandIn() {
    ::kill(process_, SIGTERM);
    ::waitpid(process_, nullptr, 0);
}

} // namespace fernlow::test

#include "support/process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <thread>
#ifdef __APPLE__
#include <util.h>
#else
#include <pty.h>
#endif

#include "support/command_line.h"
#include "support/temporary_folder.h"
#include "transport/socket_client.h"
#include "transport/socket_client_error.h"

namespace fernlow::test {

namespace {

std::string contents(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

int openForWriting(const std::string& path) {
    return ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
}

/// What a descriptor gives until its other side is closed; a pseudo-terminal ends with an error.
std::string readAll(int descriptor) {
    std::string text;
    std::array<char, 65536> buffer{};
    for (;;) {
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count <= 0) {
            return text;
        }
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

int waitFor(pid_t process) {
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

/// The new process's side of a run. Between fork and exec nothing may be allocated: another thread
/// (a scripted peer) may have held the allocator's lock when the process was forked.
class Child {
public:
    explicit Child(const ProgramRun& run) : run_(run), words_{FERNLOW_PROGRAM} {
        words_.insert(words_.end(), run.arguments.begin(), run.arguments.end());
        for (std::string& word : words_) {
            argv_.push_back(word.data());
        }
        argv_.push_back(nullptr);
    }

    [[noreturn]] void become() const {
        if (::chdir(run_.folder.c_str()) == 0) {
            if (run_.prepare) {
                run_.prepare();
            }
            ::execv(argv_.front(), argv_.data());
        }
        ::_exit(127);
    }

private:
    const ProgramRun& run_;
    std::vector<std::string> words_;
    std::vector<char*> argv_;
};

Outcome runInTerminal(const Child& child) {
    int terminal = -1;
    const pid_t process = ::forkpty(&terminal, nullptr, nullptr, nullptr);
    if (process == 0) {
        child.become();
    }
    Outcome outcome;
    outcome.standardOutput = readAll(terminal);
    ::close(terminal);
    outcome.status = waitFor(process);
    return outcome;
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
    return stream << "status " << outcome.status << "\nstdout: " << outcome.standardOutput
                  << "\nstderr: " << outcome.standardError;
}

Outcome runLine(std::string_view line, LaunchSettings launch) {
    const TemporaryFolder folder;
    RunSurroundings surroundings;
    surroundings.standardOutput = openForWriting(folder.file("out"));
    surroundings.standardError = openForWriting(folder.file("err"));
    surroundings.launch = std::move(launch);
    Outcome outcome;
    outcome.status = runAgentCLI(splitWords(line), CurrentDirectory("/p/src"), true, surroundings);
    ::close(surroundings.standardOutput);
    ::close(surroundings.standardError);
    outcome.standardOutput = contents(folder.file("out"));
    outcome.standardError = contents(folder.file("err"));
    return outcome;
}

Outcome runProgram(const ProgramRun& run) {
    const Child child(run);
    if (run.inTerminal) {
        return runInTerminal(child);
    }
    const TemporaryFolder folder;
    const int error = openForWriting(folder.file("err"));
    std::array<int, 2> output{};
    if (::pipe(output.data()) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t process = ::fork();
    if (process == 0) {
        ::dup2(output[1], STDOUT_FILENO);
        ::dup2(error, STDERR_FILENO);
        ::close(output[0]);
        ::close(output[1]);
        child.become();
    }
    ::close(output[1]);
    ::close(error);
    Outcome outcome;
    outcome.standardOutput = readAll(output[0]);
    ::close(output[0]);
    outcome.status = waitFor(process);
    outcome.standardError = contents(folder.file("err"));
    return outcome;
}

StandIn::StandIn(const std::string& socketPath) {
    process_ = ::fork();
    if (process_ == 0) {
        const int nowhere = ::open("/dev/null", O_WRONLY);
        ::dup2(nowhere, STDOUT_FILENO);
        ::execl(FERNLOW_STAND_IN, FERNLOW_STAND_IN, "--socket", socketPath.c_str(), nullptr);
        ::_exit(127);
    }
    for (int attempt = 0; attempt < 500; ++attempt) {
        try {
            AgentSocketClient::connect(socketPath, 0);
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

#include "cli/invocation.h"
#include "support/outcomes.h"
#include "support/process.h"
#include "support/scripted_peer.h"
#include "transport/socket_location.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#ifdef __linux__
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#endif

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

namespace fernlow::test {
namespace {

using namespace std::chrono_literals;
using Connection = ScriptedPeer::Connection;

constexpr const char* nobody = "/no/such/socket";

/// A script in place of the program that starts the application. It notes how it was called.
class Opener {
public:
    /// `body` is what else the script does, in its own folder.
    explicit Opener(const std::string& body = "") {
        std::ofstream(folder_.file("open"))
            << "#!/bin/sh\nfrom=$(pwd)\ncd '" << folder_.path() << "'\n"
            << body << "\necho \"$from: $@\" >>calls\n";
        ::chmod(folder_.file("open").c_str(), 0700);
    }

    /// A run that has this script start the application.
    [[nodiscard]] Outcome run(const std::string& socketPath,
                              std::chrono::milliseconds timeout = 20s) const {
        return runLine("status --socket " + socketPath, {folder_.file("open"), 10ms, timeout});
    }
    [[nodiscard]] bool wasCalled() const { return std::filesystem::exists(folder_.file("calls")); }
    [[nodiscard]] std::string noted(const std::string& name) const {
        return folder_.contents(name);
    }

private:
    TemporaryFolder folder_;
};

/// A run against a peer that starts once the opener has been called, as the application would.
Outcome runAndStart(ScriptedPeer& peer, const Opener& opener) {
    std::thread starter([&] {
        while (!opener.wasCalled()) {
            std::this_thread::sleep_for(5ms);
        }
        peer.start();
    });
    Outcome outcome = opener.run(peer.path());
    starter.join();
    return outcome;
}

TEST(Launch, StartsTheApplicationOnceAndTriesAgain) {
    // The first connection is the probe, which closes without a request.
    const ScriptedPeer::Script probe = [](Connection& c) { c.readRequest(); };
    const ScriptedPeer::Script reset = [](Connection& c) { c.awaitFirstByte(); };
    for (const bool answers : {true, false}) {
        const Opener opener;
        ScriptedPeer peer(ScriptedPeer::Later{}, {probe, answers ? answerDone() : reset});
        EXPECT_EQ(runAndStart(peer, opener), answers ? done : afterReset);
        // On Linux it's not what it is called, and our folder not for it to look into.
#ifdef __linux__
        const std::string folder = "/";
#else
        const std::string folder = std::filesystem::current_path();
#endif
        EXPECT_EQ(opener.noted("calls"), folder + ": -g -b com.tarnwick.Fernlow3\n");
        EXPECT_EQ(peer.requests()[0], "");
        EXPECT_EQ(peer.requests()[1].substr(0, 15), answers ? "GET /v1/status " : "");
    }
}

TEST(Launch, HappensOnlyWhenNobodyListens) {
    const Opener opener;
    ScriptedPeer peer({answerDone(), answer("not a reply")});
    EXPECT_EQ(opener.run(peer.path()), done);
    EXPECT_EQ(opener.run(peer.path()), malformed);
    peer.requests();
    EXPECT_EQ(opener.run(peer.path() + " --no-launch"), notRunning);
    EXPECT_FALSE(opener.wasCalled());
}

TEST(Launch, IsNoRemedyForATooLongPath) {
    // The limit is in bytes: 97 characters are too many when 7 of them take two.
    const std::string path = std::string(90, 'x') + "\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9";
    const Opener opener;
    const Outcome tooLong{
        "", "That socket path is too long. The limit is 103 characters:\n\n" + path + "\n", 3};
    EXPECT_EQ(opener.run(path), tooLong);
    EXPECT_FALSE(opener.wasCalled());
    EXPECT_EQ(opener.run(std::string(103, 'x'), 10ms), notRunning);
    EXPECT_TRUE(opener.wasCalled());
}

TEST(Launch, FindsTheSocketWhereTheSystemKeepsSupportFiles) {
    const std::string usual = "/Library/Application Support";
    const struct {
        std::string support;
        std::optional<std::string> home;
        std::string folder;
    } cases[] = {
        {"~/Library/Other", "/Users/me", "/Users/me/Library/Other"},
        {"~", "/Users/me", "/Users/me"},
        {"/Volumes/Support", "/Users/me", "/Volumes/Support"},
        {"/Volumes/Support", std::nullopt, "/Volumes/Support"},
        {"", "/Users/me", "/Users/me" + usual},
        {"Library", "/Users/me", "/Users/me" + usual},
        {"~you/Library", "/Users/me", "/Users/me" + usual},
        {"~/Library/Other", std::nullopt, usual},
        {"", std::nullopt, usual},
    };
    for (const auto& [support, home, folder] : cases) {
        EXPECT_EQ(socketPathIn(support, home), folder + "/com.tarnwick.Fernlow3/agent.sock")
            << support;
    }
}

// The user database may be a slow directory service.
TEST(Launch, LooksForTheSocketOnlyWhereSomethingIsSent) {
    const CurrentDirectory folder("/");
    EXPECT_EQ(parseInvocation({"help"}, folder, true).socketPath, "");
    EXPECT_EQ(parseInvocation({"status"}, folder, true).socketPath, defaultSocketPath());
}

TEST(Launch, GivesUpWhenPatienceRunsOut) {
    EXPECT_EQ(Opener("exit 1").run(nobody, 50ms), notRunning);
    EXPECT_EQ(runLine(std::string("status --socket ") + nobody, {"/no/such/program", 10ms, 50ms}),
              notRunning);
}

void expectClosedOff() {
    const Opener opener(R"(
for n in 0 1 2; do [ /dev/fd/$n -ef /dev/null ] && echo "null $n" >>streams; done
for n in 3 4 5 6 7 8 9; do
    if (: >&$n) 2>/dev/null || (: <&$n) 2>/dev/null; then echo "inherited $n" >>streams; fi
done)");
    const int zero = ::open("/dev/zero", O_RDWR);
    const int inheritable = ::fcntl(zero, F_DUPFD, 7);
    EXPECT_EQ(opener.run(nobody, 10ms), notRunning);
    ::close(inheritable);
    ::close(zero);
    EXPECT_EQ(opener.noted("streams"), "null 0\nnull 1\nnull 2\n");
}

TEST(Launch, ClosesTheProgramOff) {
    expectClosedOff();
#ifdef SYS_close_range
    // Also on a Linux from before this call.
    std::thread([] {
        sock_filter steps[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, 0),
                               BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_close_range, 0, 1),
                               BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
                               BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
        const sock_fprog program{4, steps};
        ASSERT_EQ(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
        ASSERT_EQ(::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program), 0);
        expectClosedOff();
    }).join();
#endif
}

TEST(Launch, LeavesNoSignalIgnoredOrBlocked) {
    const auto former = std::signal(SIGPIPE, SIG_IGN);
    sigset_t usual;
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &usual);
    for (const std::string name : {"PIPE", "TERM"}) {
        // Before its first child: some shells unblock every signal when they wait.
        const Opener opener("echo begun >steps; kill -" + name + " $$; echo outlived >>steps");
        EXPECT_EQ(opener.run(nobody, 10ms), notRunning);
        EXPECT_EQ(opener.noted("steps"), "begun\n") << name;
    }
    ::pthread_sigmask(SIG_SETMASK, &usual, nullptr);
    std::signal(SIGPIPE, former);
}

TEST(Launch, WaitsForTheProgramEvenWhereItsEndIsIgnored) {
    const Opener opener("sleep 0.2; echo done >ended");
    const auto former = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(opener.run(nobody, 10ms), notRunning);
    std::signal(SIGCHLD, former);
    EXPECT_EQ(opener.noted("ended"), "done\n");
}

} // namespace
} // namespace fernlow::test

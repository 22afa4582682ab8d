#include "support/outcomes.h"
#include "support/process.h"
#include "support/refused_call.h"
#include "support/scripted_peer.h"
#include "transport/connection.h"
#include "transport/socket_location.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace fernlow::test {
namespace {

using namespace std::chrono_literals;
using Connection = ScriptedPeer::Connection;

constexpr const char* missingSocket = "/no/such/socket";

/// A script that replaces the program that starts the application. It records its calls.
class Opener : public TemporaryFolder {
public:
    /// The script first runs `body` in its own folder.
    explicit Opener(const std::string& body = "") {
        writeScript("open",
                    "from=$(pwd)\ncd '" + path() + "'\n" + body + "\necho \"$from: $@\" >>calls\n");
    }

    /// Runs a line that starts the application with this script.
    [[nodiscard]] Outcome run(const std::string& socketPath,
                              std::chrono::milliseconds launchTimeout = 20s) const {
        return runLine("status --socket " + socketPath, {file("open"), 10ms, launchTimeout});
    }
    [[nodiscard]] bool wasCalled() const { return contains("calls"); }
};

/// Serves the client's test connection, which sends no request.
void serveProbe(Connection& connection) {
    connection.readRequest();
}

TEST(Launch, CallsTheOpenerOnceAndRepeatsTheRequestOnce) {
    const ScriptedPeer::Script reset = [](Connection& connection) { connection.awaitFirstByte(); };
    for (const bool answers : {true, false}) {
        ScriptedPeer peer({serveProbe, answers ? answerDone() : reset});
        // The application starts to listen some time after the opener has ended.
        const Opener opener("(sleep 0.1; ln -s " + peer.path() + " socket) &");
        EXPECT_EQ(opener.run(opener.file("socket")), answers ? done : afterReset);
        // On Linux another program may have the opener's name, and it must not run in our folder.
#ifdef __linux__
        const std::string folder = "/";
#else
        const std::string folder = std::filesystem::current_path();
#endif
        EXPECT_EQ(opener.contents("calls"), folder + ": -g -b com.tarnwick.Fernlow3\n");
        EXPECT_EQ(peer.requests()[0], "");
        EXPECT_EQ(peer.requests()[1].substr(0, 15), answers ? "GET /v1/status " : "");
    }
    EXPECT_EQ(ExchangeSettings().launchProgram, "/usr/bin/open");
}

TEST(Launch, HappensOnlyIfNothingListens) {
    const Opener opener;
    ScriptedPeer peer({answerDone(), answer("not a reply")});
    EXPECT_EQ(opener.run(peer.path()), done);
    EXPECT_EQ(opener.run(peer.path()), malformed);
    peer.requests();
    EXPECT_EQ(opener.run(peer.path() + " --no-launch"), notRunning);
    EXPECT_FALSE(opener.wasCalled());
}

TEST(Launch, IsSkippedIfThePathIsTooLong) {
    // The limit is in bytes: 97 characters are too many if 7 of them take two bytes.
    const std::string path = std::string(90, 'x') + "\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9";
    const Opener opener;
    const Outcome tooLong{
        "", "That socket path is too long. The limit is 103 characters:\n\n" + path + "\n", 3};
    EXPECT_EQ(opener.run(path), tooLong);
    EXPECT_FALSE(opener.wasCalled());
    EXPECT_EQ(opener.run(std::string(103, 'x'), 10ms), notRunning);
    EXPECT_TRUE(opener.wasCalled());
}

TEST(Launch, FindsTheSocketInTheSystemsSupportFolder) {
    const std::string fallback = "/Library/Application Support";
    const struct {
        std::string support;
        std::optional<std::string> home;
        std::string folder;
    } cases[] = {
        {"~/Library/Other", "/Users/me", "/Users/me/Library/Other"},
        {"~", "/Users/me", "/Users/me"},
        {"/Volumes/Support", "/Users/me", "/Volumes/Support"},
        {"/Volumes/Support", std::nullopt, "/Volumes/Support"},
        {"", "/Users/me", "/Users/me" + fallback},
        {"Library", "/Users/me", "/Users/me" + fallback},
        {"~you/Library", "/Users/me", "/Users/me" + fallback},
        {"~/Library/Other", std::nullopt, fallback},
        {"", std::nullopt, fallback},
    };
    for (const auto& [support, home, folder] : cases) {
        EXPECT_EQ(socketPathIn(support, home), folder + "/com.tarnwick.Fernlow3/agent.sock")
            << support;
    }
}

TEST(Launch, PausesBetweenAttemptsUntilTheTimeoutExpires) {
    EXPECT_EQ(Opener("exit 1").run(missingSocket, 50ms), notRunning);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(
        runLine(std::string("status --socket ") + missingSocket, {"/no/such/program", 100ms, 50ms}),
        notRunning);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 100ms);
    EXPECT_EQ(ExchangeSettings().pollInterval, 200ms);
    EXPECT_EQ(ExchangeSettings().launchTimeout, 25s);
}

#ifdef __linux__
// Other systems refuse a connection at once while the queue is full.
TEST(Launch, WaitsWhileTheApplicationsQueueIsFull) {
    const TemporaryFolder folder;
    const std::string socket = folder.file("socket");
    const auto hold = [&](Connection& /*connection*/) {
        while (!std::filesystem::exists(socket)) {
            std::this_thread::sleep_for(1ms);
        }
        std::this_thread::sleep_for(100ms);
    };
    const auto close = [](Connection& /*connection*/) {};
    ScriptedPeer peer({hold, close, serveProbe, answerDone()});
    const fernlow::Connection served(peer.path(), 9s);
    const fernlow::Connection queued(peer.path(), 9s);
    EXPECT_EQ(Opener("ln -s " + peer.path() + " " + socket).run(socket, 10ms), done);
}
#endif

void expectNothingInherited() {
    const Opener opener(R"(
for n in 0 1 2; do [ /dev/fd/$n -ef /dev/null ] && echo "null $n" >>streams; done
for n in 3 4 5 6 7 8 9; do
    if (: >&$n) 2>/dev/null || (: <&$n) 2>/dev/null; then echo "inherited $n" >>streams; fi
done)");
    const int zero = ::open("/dev/zero", O_RDWR);
    const int inheritable = ::fcntl(zero, F_DUPFD, 7);
    EXPECT_EQ(opener.run(missingSocket, 10ms), notRunning);
    ::close(inheritable);
    ::close(zero);
    EXPECT_EQ(opener.contents("streams"), "null 0\nnull 1\nnull 2\n");
}

TEST(Launch, LetsTheOpenerInheritNoDescriptor) {
    expectNothingInherited();
#ifdef SYS_close_range
    std::thread([] {
        // Old versions of Linux do not have this call.
        refuseCall(SYS_close_range, ~0U);
        expectNothingInherited();
        // No descriptor can be marked as close-on-exec.
        refuseCall(SYS_fcntl, F_SETFD);
        const Opener opener;
        EXPECT_EQ(opener.run(missingSocket, 10ms), notRunning);
        EXPECT_FALSE(opener.wasCalled());
    }).join();
#endif
}

TEST(Launch, LeavesNoSignalIgnoredOrBlocked) {
    const auto former = std::signal(SIGPIPE, SIG_IGN);
    sigset_t formerMask;
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &formerMask);
    for (const std::string name : {"PIPE", "TERM"}) {
        // The script sends the signal before it starts a child, because some shells unblock every
        // signal when they wait for a child.
        const Opener opener("echo begun >steps; kill -" + name + " $$; echo outlived >>steps");
        EXPECT_EQ(opener.run(missingSocket, 10ms), notRunning);
        EXPECT_EQ(opener.contents("steps"), "begun\n") << name;
    }
    ::pthread_sigmask(SIG_SETMASK, &formerMask, nullptr);
    std::signal(SIGPIPE, former);
}

TEST(Launch, WaitsForTheOpenerEvenIfSIGCHLDIsIgnored) {
    const Opener opener("sleep 0.2; echo done >ended");
    const auto former = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(opener.run(missingSocket, 10ms), notRunning);
    std::signal(SIGCHLD, former);
    EXPECT_EQ(opener.contents("ended"), "done\n");
}

} // namespace
} // namespace fernlow::test

#include "support/outcomes.h"
#include "support/process.h"
#include "support/scripted_peer.h"
#include "transport/socket_location.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace fernlow::test {
namespace {

using namespace std::chrono_literals;
using Connection = ScriptedPeer::Connection;

constexpr const char* okReply = R"({"ok":true})";

/// A script in place of the program that starts the application. It notes how it was called.
class Opener {
public:
    /// `body` is what else the script does, in its own folder.
    explicit Opener(const std::string& body = "") {
        std::ofstream(folder_.file("open")) << "#!/bin/sh\ncd '" << folder_.path() << "'\n"
                                            << body << "\necho \"$@\" >>calls\n";
        ::chmod(folder_.file("open").c_str(), 0700);
    }

    [[nodiscard]] LaunchSettings settings(std::chrono::milliseconds patience) const {
        return {folder_.file("open"), 10ms, patience};
    }
    [[nodiscard]] bool wasCalled() const { return std::filesystem::exists(folder_.file("calls")); }
    [[nodiscard]] std::string noted(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(folder_.file(name)).rdbuf();
        return text.str();
    }

private:
    TemporaryFolder folder_;
};

/// Starts the peer as soon as the opener has been called, as the application would start.
std::thread startWhenOpened(ScriptedPeer& peer, const Opener& opener) {
    return std::thread([&] {
        while (!opener.wasCalled()) {
            std::this_thread::sleep_for(5ms);
        }
        peer.start();
    });
}

TEST(Launch, StartsTheApplicationOnceAndTriesAgain) {
    const Opener opener;
    // The first connection is the probe, which closes without a request.
    ScriptedPeer peer(ScriptedPeer::Later{},
                      {[](Connection& c) { c.readRequest(); }, answer(reply(okReply))});
    std::thread starter = startWhenOpened(peer, opener);
    EXPECT_EQ(runLine("status --socket " + peer.path(), opener.settings(20s)), done);
    starter.join();
    EXPECT_EQ(peer.requests()[0], "");
    EXPECT_EQ(peer.requests()[1].substr(0, 15), "GET /v1/status ");
    EXPECT_EQ(opener.noted("calls"), "-g -b com.tarnwick.Fernlow3\n");
}

TEST(Launch, HappensOnlyWhenNobodyListens) {
    const Opener opener;
    ScriptedPeer peer({answer(reply(okReply)), answer("not a reply")});
    EXPECT_EQ(runLine("status --socket " + peer.path(), opener.settings(20s)), done);
    EXPECT_EQ(runLine("status --socket " + peer.path(), opener.settings(20s)).status, 3);
    peer.requests();
    EXPECT_EQ(runLine("status --no-launch --socket " + peer.path(), opener.settings(20s)),
              notRunning);
    EXPECT_FALSE(opener.wasCalled());
}

TEST(Launch, IsNoRemedyForATooLongPath) {
    // The limit is in bytes: 60 characters of two bytes each are too many.
    std::string twoBytesEach;
    for (int count = 0; count < 60; ++count) {
        twoBytesEach += "\u00e9";
    }
    const Opener opener;
    for (const std::string& path : {std::string(104, 'x'), twoBytesEach}) {
        const Outcome tooLong{
            "", "That socket path is too long. The limit is 103 characters:\n\n" + path + "\n", 3};
        EXPECT_EQ(runLine("status --socket " + path, opener.settings(20s)), tooLong);
    }
    EXPECT_FALSE(opener.wasCalled());
    EXPECT_EQ(runLine("status --socket " + std::string(103, 'x'), opener.settings(10ms)),
              notRunning);
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

TEST(Launch, UsesTheSystemsOpenerAndPatienceByDefault) {
    EXPECT_EQ(LaunchSettings().program, "/usr/bin/open");
    EXPECT_EQ(LaunchSettings().pollInterval, 200ms);
    EXPECT_EQ(LaunchSettings().patience, 25s);
}

TEST(Launch, GivesUpWhenPatienceRunsOut) {
    const TemporaryFolder folder;
    const std::string line = "status --socket " + folder.file("none");
    const Opener opener("exit 1");
    EXPECT_EQ(runLine(line, opener.settings(50ms)), notRunning);
    EXPECT_EQ(runLine(line, {folder.file("no-such-program"), 10ms, 50ms}), notRunning);
}

TEST(Launch, TheSecondAttemptIsTheLast) {
    const Opener opener;
    ScriptedPeer peer(ScriptedPeer::Later{}, {[](Connection& c) { c.readRequest(); },
                                              [](Connection& c) { c.awaitFirstByte(); }});
    std::thread starter = startWhenOpened(peer, opener);
    const auto outcome = runLine("status --socket " + peer.path(), opener.settings(20s));
    starter.join();
    EXPECT_EQ(outcome.status, 3);
    EXPECT_NE(outcome, notRunning);
    EXPECT_EQ(opener.noted("calls"), "-g -b com.tarnwick.Fernlow3\n");
}

TEST(Launch, ClosesTheProgramOff) {
    const Opener opener(R"(
for n in 0 1 2; do [ /dev/fd/$n -ef /dev/null ] && echo "null $n" >>streams; done
for n in 3 4 5 6 7 8 9; do
    if (: >&$n) 2>/dev/null || (: <&$n) 2>/dev/null; then echo "inherited $n" >>streams; fi
done)");
    const int zero = ::open("/dev/zero", O_RDWR);
    const int inheritable = ::fcntl(zero, F_DUPFD, 7);
    const TemporaryFolder folder;
    EXPECT_EQ(runLine("status --socket " + folder.file("none"), opener.settings(10ms)), notRunning);
    ::close(inheritable);
    ::close(zero);
    EXPECT_EQ(opener.noted("streams"), "null 0\nnull 1\nnull 2\n");
}

TEST(Launch, LeavesNoSignalIgnoredOrBlocked) {
    const auto former = std::signal(SIGPIPE, SIG_IGN);
    sigset_t usual;
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &usual);
    const TemporaryFolder folder;
    for (const std::string name : {"PIPE", "TERM"}) {
        // Before its first child: some shells unblock every signal when they wait.
        const Opener opener("echo begun >steps; kill -" + name + " $$; echo outlived >>steps");
        EXPECT_EQ(runLine("status --socket " + folder.file("none"), opener.settings(10ms)),
                  notRunning);
        EXPECT_EQ(opener.noted("steps"), "begun\n") << name;
    }
    ::pthread_sigmask(SIG_SETMASK, &usual, nullptr);
    std::signal(SIGPIPE, former);
}

TEST(Launch, WaitsForTheProgramEvenWhereItsEndIsIgnored) {
    const Opener opener("sleep 0.2; echo done >ended");
    const TemporaryFolder folder;
    const auto former = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(runLine("status --socket " + folder.file("none"), opener.settings(10ms)), notRunning);
    std::signal(SIGCHLD, former);
    EXPECT_EQ(opener.noted("ended"), "done\n");
}

TEST(Launch, TwoRunsMayStartItAtOnce) {
    const Opener opener;
    const ScriptedPeer::Script tolerant = [](Connection& connection) {
        if (!connection.readRequest().empty()) {
            connection.write(reply(okReply));
        }
    };
    ScriptedPeer peer(ScriptedPeer::Later{}, {tolerant, tolerant, tolerant, tolerant});
    std::thread starter = startWhenOpened(peer, opener);
    const auto run = [&] {
        EXPECT_EQ(runLine("status --socket " + peer.path(), opener.settings(20s)), done);
    };
    std::thread other(run);
    run();
    other.join();
    starter.join();
}

} // namespace
} // namespace fernlow::test

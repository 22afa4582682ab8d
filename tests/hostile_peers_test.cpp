#include "render/reply.h"
#include "support/outcomes.h"
#include "support/process.h"
#include "support/scripted_peer.h"
#include "transport/connection.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>
#include <utility>

namespace fernlow::test {
namespace {

using Connection = ScriptedPeer::Connection;

/// A path short enough for a command line, but too long for a socket's buffer: each of its bytes is
/// sent as six.
const std::string longPath(130000, '\x01');

/// Sends megabytes of blanks after the end of a reply.
ScriptedPeer::Script flood(int megabytes) {
    return [megabytes](Connection& connection) {
        connection.readRequest();
        connection.write(reply(R"({"ok":true})"));
        for (int count = 0; count < megabytes; ++count) {
            connection.write(std::string(1U << 20U, ' '));
        }
    };
}

/// Returns a script that continues the other script with silence.
ScriptedPeer::Script stallAfter(ScriptedPeer::Script script) {
    return [script = std::move(script)](Connection& connection) {
        script(connection);
        connection.waitUntilGone();
    };
}

std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/dev/fd"), {});
}

TEST(HostilePeer, IsReadToTheEndUpToALimit) {
    const auto before = openDescriptors();
    // No other command accepts a negative timeout.
    const std::string soon = "files skip --timeout -100 ";
    const struct {
        const char* behaviour;
        ScriptedPeer::Script script;
        std::string line;
        Outcome expected;
    } cases[] = {
        {"trickles",
         [](Connection& connection) {
             connection.readRequest();
             for (const char byte : reply(R"({"ok":true})")) {
                 connection.write({&byte, 1});
             }
         },
         "status", done},
        {"answers before it has read",
         [](Connection& connection) {
             connection.write(reply(R"({"ok":true})"));
             connection.readRequest();
         },
         "status", done},
        {"answers 50 MB", flood(50), "status", done},
        {"never stops", flood(300), "status", malformed},
        {"never answers", stallAfter(answer("")), soon + "vendor", readFailed},
        {"stops in its reply", stallAfter(answer("HTTP/1.1 200 OK\r\n\r\n{\"ok\":")),
         soon + "vendor", readFailed},
        {"does not read", stallAfter([](Connection& connection) { connection.awaitFirstByte(); }),
         soon + longPath, writeFailed},
    };
    for (const auto& [behaviour, script, line, expected] : cases) {
        ScriptedPeer peer({script});
        EXPECT_EQ(runAgainst(peer, line, shortTimeout), expected) << behaviour;
    }
    EXPECT_EQ(runLine("status --no-launch --socket /no/such/socket"), notRunning);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(HostilePeer, IsWaitedForThroughInterruptions) {
    struct sigaction interrupting{};
    interrupting.sa_handler = [](int /*signal*/) {};
    ::sigaction(SIGUSR1, &interrupting, nullptr);
    const auto pause = [] { std::this_thread::sleep_for(std::chrono::milliseconds(50)); };
    const auto hold = [&](Connection& /*connection*/) { pause(); };
    const std::string body = R"({"ok":true,"padding":")" + std::string(1U << 20U, 'x') + "\"}";
    for (const int outputFlags : {0, O_NONBLOCK}) {
        // The peer accepts, reads and answers late. The output is a socket that cannot hold the
        // whole text and is read late.
        const ScriptedPeer peer({hold, hold, [&](Connection& connection) {
                                     connection.readRequest();
                                     pause();
                                     connection.write(reply(body));
                                 }});
        // The first connection pauses the peer, and the second fills its queue. So the client has
        // to wait for its connection.
        const fernlow::Connection served(peer.path(), std::chrono::seconds(9));
        const fernlow::Connection queued(peer.path(), std::chrono::seconds(9));
        std::array<int, 2> ends{};
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
        ASSERT_EQ(::fcntl(ends[1], F_SETFL, outputFlags), 0);
        std::string output;
        std::thread reader([&] {
            Connection reading(ends[0]);
            reading.awaitFirstByte();
            pause();
            output = reading.readRequest();
        });
        std::atomic<bool> hasEnded = false;
        std::thread interrupter([&, client = ::pthread_self()] {
            while (!hasEnded) {
                ::pthread_kill(client, SIGUSR1);
                ::usleep(1000);
            }
        });
        EXPECT_EQ(runAgentCLI({"process", longPath, "--no-launch", "--socket", peer.path()},
                              CurrentDirectory("/"), false, {ends[1], STDERR_FILENO}),
                  0);
        hasEnded = true;
        interrupter.join();
        ::close(ends[1]);
        reader.join();
        ::close(ends[0]);
        EXPECT_TRUE(output == body + "\n") << output.size();
    }
}

// The path is shown with each of its issues: 390 kB of reply would become 9 GB of text.
TEST(HostilePeer, CannotMakeTheTextGrowWithoutLimit) {
    std::string issues = "{}";
    for (int count = 0; count < 100000; ++count) {
        issues += ",{}";
    }
    const std::string reply =
        R"({"ok":true,"result":{"compiledFileCount":1,"problems":[{"syntaxReports":[{"path":")" +
        std::string(90000, 'p') + R"(","issues":[)" + issues + "]}]}]}}";
    const ReplyOutput output = presentReply(200, ByteBuffer(reply), false);
    EXPECT_EQ(output.text.view(), "Fernlow's reply could not be read.");
    EXPECT_EQ(output.exitStatus, 5);
    EXPECT_EQ(presentReply(200, ByteBuffer(reply), true).exitStatus, 0);
}

} // namespace
} // namespace fernlow::test

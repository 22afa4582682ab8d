#include "render/reply.h"
#include "support/outcomes.h"
#include "support/process.h"
#include "support/scripted_peer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <thread>

namespace fernlow::test {
namespace {

using Connection = ScriptedPeer::Connection;

/// More than a socket takes when it is sent, where each byte is written as six, and little enough
/// for a command line.
const std::string longPath(130000, '\x01');

/// Megabytes of blanks after a reply's end.
ScriptedPeer::Script flood(int megabytes) {
    return [megabytes](Connection& connection) {
        connection.readRequest();
        connection.write(reply(R"({"ok":true})"));
        for (int count = 0; count < megabytes; ++count) {
            connection.write(std::string(1U << 20U, ' '));
        }
    };
}

TEST(HostilePeer, IsReadToItsEndButNotForEver) {
    const struct {
        const char* what;
        ScriptedPeer::Script script;
        Outcome expected;
    } cases[] = {
        {"trickles",
         [](Connection& connection) {
             connection.readRequest();
             for (const char byte : reply(R"({"ok":true})")) {
                 connection.write({&byte, 1});
             }
         },
         done},
        {"answers before it has read",
         [](Connection& connection) {
             connection.write(reply(R"({"ok":true})"));
             connection.readRequest();
         },
         done},
        {"answers 50 MB", flood(50), done},
        {"never stops", flood(300), malformed},
    };
    for (const auto& [what, script, expected] : cases) {
        ScriptedPeer peer({script});
        EXPECT_EQ(runAgainst(peer, "status"), expected) << what;
    }
}

TEST(HostilePeer, IsGivenUpWhenItStalls) {
    const auto stall = [](const ScriptedPeer::Script& script, const std::string& path,
                          const Outcome& expected) {
        ScriptedPeer peer({[&script](Connection& connection) {
            script(connection);
            connection.waitUntilGone();
        }});
        // Of all commands this one lets the timeout be negative, and the socket's is never under 5.
        EXPECT_EQ(runAgainst(peer, "files skip --timeout -100 " + path), expected);
    };
    std::thread runs[] = {
        std::thread(stall, answer(""), "vendor", readFailed),
        std::thread(stall, answer("HTTP/1.1 200 OK\r\n\r\n{\"ok\":"), "vendor", readFailed),
        std::thread(
            stall, [](Connection& connection) { connection.awaitFirstByte(); }, longPath,
            writeFailed),
    };
    for (std::thread& run : runs) {
        run.join();
    }
}

TEST(HostilePeer, IsWaitedForThroughInterruptions) {
    struct sigaction interrupting{};
    interrupting.sa_handler = [](int /*signal*/) {};
    ::sigaction(SIGUSR1, &interrupting, nullptr);
    ScriptedPeer peer({[client = ::pthread_self()](Connection& connection) {
        connection.readRequest();
        for (int count = 0; count < 50; ++count) {
            ::pthread_kill(client, SIGUSR1);
            ::usleep(1000);
        }
        connection.write(reply(R"({"ok":true})"));
    }});
    EXPECT_EQ(runAgainst(peer, "status"), done);
}

// A path is shown again with each of its issues: 390 kB of reply would be 9 GB of text.
TEST(HostilePeer, IsNotShownWithoutEnd) {
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

int openDescriptors() {
    int open = 0;
    for (int descriptor = 0; descriptor < 256; ++descriptor) {
        open += ::fcntl(descriptor, F_GETFD) != -1 ? 1 : 0;
    }
    return open;
}

TEST(HostilePeer, CostsNoDescriptor) {
    const int before = openDescriptors();
    {
        const auto reset = [](Connection& connection) { connection.awaitFirstByte(); };
        ScriptedPeer peer({answerDone(), answer("no reply"), reset, reset});
        EXPECT_EQ(runAgainst(peer, "status"), done);
        EXPECT_EQ(runAgainst(peer, "status"), malformed);
        EXPECT_EQ(runAgainst(peer, "status"), afterReset);
        EXPECT_EQ(runAgainst(peer, "process " + longPath), writeFailed);
        peer.requests();
        EXPECT_EQ(runAgainst(peer, "status"), notRunning);
    }
    EXPECT_EQ(openDescriptors(), before);
}

} // namespace
} // namespace fernlow::test

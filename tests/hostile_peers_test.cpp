#include "render/reply.h"
#include "support/outcomes.h"
#include "support/process.h"
#include "support/scripted_peer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <csignal>
#include <string>
#include <thread>
#include <vector>

namespace fernlow::test {
namespace {

using Connection = ScriptedPeer::Connection;

TEST(HostilePeer, SurvivesHostilePeers) {
    const std::string good = reply(R"({"ok":true})");
    const struct {
        const char* what;
        ScriptedPeer::Script script;
        Outcome expected;
    } cases[] = {
        {"closes before the reply", [](Connection& c) { c.readRequest(); }, malformed},
        {"closes within the head", answer("HTTP/1.1 200 OK\r\nContent-"), malformed},
        {"closes within the body",
         answer(reply(R"({"ok":tr)")),
         {"", "Fernlow's reply could not be read.\n", 5}},
        {"resets", [](Connection& c) { c.reset(); }, afterReset},
        {"trickles",
         [&good](Connection& c) {
             c.readRequest();
             for (const char byte : good) {
                 c.write({&byte, 1});
             }
         },
         done},
        {"answers before it has read",
         [&good](Connection& c) {
             c.write(good);
             c.readRequest();
         },
         done},
        {"answers 50 MB",
         [](Connection& c) {
             c.readRequest();
             c.write(reply(R"({"ok":true,"padding":")"));
             const std::string megabyte(1U << 20U, 'x');
             for (int count = 0; count < 50; ++count) {
                 c.write(megabyte);
             }
             c.write("\"}");
         },
         done},
    };
    for (const auto& [what, script, expected] : cases) {
        ScriptedPeer peer({script});
        EXPECT_EQ(runAgainst(peer, "status"), expected) << what;
    }
}

TEST(HostilePeer, EndsWithAMessageWhenThePeerClosesDuringTheRequest) {
    ScriptedPeer peer({[](Connection& connection) { connection.reset(); }});
    EXPECT_EQ(runAgainst(peer, "process /" + std::string(8U << 20U, 'x')), writeFailed);
}

TEST(HostilePeer, GivesUpOnAPeerThatStalls) {
    // Of all commands this one lets the timeout be negative, and the socket's is never under 5.
    const std::string command = "files skip --timeout -100 vendor";
    const struct {
        ScriptedPeer::Script script;
        std::string line;
        Outcome expected;
    } cases[] = {
        {[](Connection& c) { c.readRequest(); }, command, readFailed},
        {[](Connection& c) {
             c.readRequest();
             c.write("HTTP/1.1 200 OK\r\n\r\n{\"ok\":");
         },
         command, readFailed},
        {[](Connection& c) { c.awaitFirstByte(); }, command + std::string(8U << 20U, 'x'),
         writeFailed},
    };
    std::vector<std::thread> runs;
    for (const auto& each : cases) {
        runs.emplace_back([&each] {
            ScriptedPeer peer({[&each](Connection& connection) {
                each.script(connection);
                connection.waitUntilGone();
            }});
            EXPECT_EQ(runAgainst(peer, each.line), each.expected);
        });
    }
    for (std::thread& run : runs) {
        run.join();
    }
}

TEST(HostilePeer, TreatsAnInterruptedReadAsAFailure) {
    struct sigaction interrupting{};
    interrupting.sa_handler = [](int /*signal*/) {};
    struct sigaction former{};
    ::sigaction(SIGUSR1, &interrupting, &former);
    const pthread_t client = ::pthread_self();
    ScriptedPeer peer({[client](Connection& connection) {
        connection.readRequest();
        while (!connection.isGone()) {
            ::pthread_kill(client, SIGUSR1);
        }
    }});
    EXPECT_EQ(runAgainst(peer, "status"), readFailed);
    peer.requests();
    ::sigaction(SIGUSR1, &former, nullptr);
}

TEST(HostilePeer, StopsAPeerThatNeverStopsSending) {
    ScriptedPeer peer({[](Connection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\n\r\n");
        const std::string megabyte(1U << 20U, ' ');
        for (int count = 0; count < 300; ++count) {
            connection.write(megabyte);
        }
    }});
    EXPECT_EQ(runAgainst(peer, "status"), malformed);
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

/// The descriptors that are open in this process.
std::vector<int> openDescriptors() {
    std::vector<int> open;
    for (int descriptor = 0; descriptor < 256; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) != -1) {
            open.push_back(descriptor);
        }
    }
    return open;
}

TEST(HostilePeer, CostsNoDescriptor) {
    const auto before = openDescriptors();
    {
        ScriptedPeer peer({answer(reply(R"({"ok":true})")), answer("no reply"),
                           [](Connection& connection) { connection.reset(); },
                           [](Connection& connection) { connection.reset(); }});
        EXPECT_EQ(runAgainst(peer, "status"), done);
        EXPECT_EQ(runAgainst(peer, "status"), malformed);
        EXPECT_EQ(runAgainst(peer, "status"), afterReset);
        EXPECT_EQ(runAgainst(peer, "process /" + std::string(8U << 20U, 'x')), writeFailed);
        peer.requests();
        EXPECT_EQ(runAgainst(peer, "status"), notRunning);
    }
    EXPECT_EQ(openDescriptors(), before);
}

} // namespace
} // namespace fernlow::test

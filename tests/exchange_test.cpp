#include "support/outcomes.h"
#include "support/process.h"
#include "support/refused_call.h"
#include "support/scripted_peer.h"
#include "transport/connection.h"
#include "transport/http.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

namespace fernlow::test {
namespace {

using Connection = ScriptedPeer::Connection;

TEST(Exchange, SendsExactlyTheRequest) {
    const std::string headers = " HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json; "
                                "charset=utf-8\r\nContent-Length: ";
    const std::string close = "\r\nConnection: close\r\n\r\n";
    const std::string megabytes(3U << 20U, 'x');
    ScriptedPeer peer({answerDone(), answerDone(), answerDone()});
    EXPECT_EQ(runAgainst(peer, "status"), done);
    EXPECT_EQ(runAgainst(peer, "remove 'caf\u00e9'"), done);
    EXPECT_EQ(runAgainst(peer, "remove /" + megabytes), done);
    EXPECT_EQ(peer.requests()[0], "GET /v1/status" + headers + "0" + close);
    EXPECT_EQ(peer.requests()[1], "POST /v1/projects/remove" + headers + "23" + close +
                                      "{\"path\":\"/p/src/caf\u00e9\"}");
    EXPECT_EQ(peer.requests()[2], "POST /v1/projects/remove" + headers + "3145740" + close +
                                      "{\"path\":\"/" + megabytes + "\"}");
}

TEST(Exchange, FramesReplies) {
    const struct {
        std::string bytes;
        Outcome expected;
    } cases[] = {
        {"HTTP/1.1 200 OK\r\n\r\n{\"ok\":true}", done},
        {"\r\nHTTP/1.1  404  Not Found\r\n\r\n{\"ok\":true}", done},
        {"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{\"ok\":true}", done},
        {"\xFF\xFE 200\r\nX: \xFF\r\n\r\n{\"ok\":true}", done},
        {"HTTP/1.1 200 OK\r\n\r\n", {"", "Fernlow's reply could not be read.\n", 5}},
        {"HTTP/1.1 200 OK\r\n\r\n\r\n\r\n{\"ok\":true}", done},
        {"", malformed},
        {"HTTP/1.1 200 OK\r\n", malformed},
        {"HTTP/1.1 200 OK\n\n{\"ok\":true}", malformed},
        {"\r\n\r\nHTTP/1.1 200 OK\r\n\r\n", malformed},
        {"HTTP/1.1\r\n\r\n{\"ok\":true}", malformed},
        {"HTTP/1.1 OK\r\n\r\n{\"ok\":true}", malformed},
        {"HTTP/1.1\t200\tOK\r\n\r\n{\"ok\":true}", malformed},
        {"HTTP/1.1 +-200\r\n\r\n{\"ok\":true}", malformed},
        {"HTTP/1.1 9223372036854775808\r\n\r\n{\"ok\":true}", malformed},
    };
    for (const auto& [bytes, expected] : cases) {
        ScriptedPeer peer({answer(bytes)});
        EXPECT_EQ(runAgainst(peer, "status"), expected) << bytes;
    }
}

TEST(Exchange, ReportsThatNothingListens) {
    const TemporaryFolder folder;
    ::close(::open(folder.file("regular").c_str(), O_CREAT | O_WRONLY, 0600));
    ScriptedPeer peer({answerDone()});
    EXPECT_EQ(runAgainst(peer, "status"), done);
    peer.requests();
    const std::string abandoned = peer.path();
#ifdef __linux__
    // An empty path would reach this listener, whose abstract address consists of zero bytes.
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un nameless{};
    nameless.sun_family = AF_UNIX;
    ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&nameless), sizeof nameless), 0);
    ASSERT_EQ(::listen(listener, 1), 0);
#endif
    for (const std::string& path : {abandoned, folder.file("regular"), folder.path(),
                                    folder.file("no/such"), std::string("''")}) {
        EXPECT_EQ(runLine("status --no-launch --socket " + path), notRunning) << path;
    }
#ifdef __linux__
    ::close(listener);
#endif
}

TEST(Exchange, WaitsThirtySecondsLongerThanTheRequestsTimeout) {
    const struct {
        std::string_view body;
        long seconds;
    } cases[] = {
        {"", 630},
        {R"({"timeoutSeconds":10.9,"x":1})", 40},
        {R"({"timeoutSeconds":-100})", 5},
        {R"({"timeoutSeconds":1e300})", 1000000000},
        {R"({"timeoutSeconds":"10"})", 630},
        {R"({"x":{"timeoutSeconds":10}})", 630},
        {R"([{"timeoutSeconds":10}])", 630},
    };
    for (const auto& [body, seconds] : cases) {
        EXPECT_EQ(replyTimeout(body), std::chrono::seconds(seconds)) << body;
    }
}

TEST(Exchange, LimitsTheWaitWhileTheQueueIsFull) {
    const auto holdForTwoSeconds = [](Connection& connection) {
        for (int milliseconds = 0; milliseconds < 2000 && !connection.isGone(); ++milliseconds) {
            // isGone() waits for a millisecond.
        }
    };
    ScriptedPeer peer({holdForTwoSeconds, holdForTwoSeconds, answerDone()});
    const fernlow::Connection served(peer.path(), std::chrono::seconds(9));
    const fernlow::Connection queued(peer.path(), std::chrono::seconds(9));
    const auto expectNotRunning = [&] {
        EXPECT_EQ(runAgainst(peer, "files skip --timeout -100 vendor", shortTimeout), notRunning);
    };
    expectNotRunning();
#ifdef __linux__
    std::thread([&] {
        // The system refuses SO_SNDTIMEO, the limit for connect.
        refuseCall(SYS_setsockopt, SOL_SOCKET);
        expectNotRunning();
    }).join();
#endif
}

#ifdef __linux__
TEST(Exchange, UsesNoSocketThatCannotBePrepared) {
    for (const int command : {F_SETFD, F_SETFL}) {
        std::thread([command] {
            const ScriptedPeer peer({answerDone()});
            refuseCall(SYS_fcntl, static_cast<unsigned>(command));
            EXPECT_EQ(runAgainst(peer, "status"), notRunning) << command;
        }).join();
    }
}
#endif

TEST(Exchange, LeavesTheNumbersOfClosedStandardStreamsUnused) {
    ScriptedPeer peer({[](Connection& connection) { connection.waitUntilGone(); }});
    const auto connectWithoutStreams = [path = peer.path()] {
        for (const int stream : {0, 1, 2}) {
            ::close(stream);
        }
        const fernlow::Connection connection(path, std::chrono::seconds(9));
        const bool stayClosed =
            ::fcntl(0, F_GETFD) + ::fcntl(1, F_GETFD) + ::fcntl(2, F_GETFD) == -3;
        ::_exit(stayClosed ? 0 : 1);
    };
    EXPECT_EQ(runProgram({{}, "/", connectWithoutStreams}).status, 0);
}

} // namespace
} // namespace fernlow::test

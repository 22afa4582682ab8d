#include "support/outcomes.h"
#include "support/process.h"
#include "support/scripted_peer.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace fernlow::test {
namespace {

TEST(Run, AnswersHelpAndVersionWithoutConnecting) {
    for (const char* word : {"--version", "-v", "version"}) {
        EXPECT_EQ(runProgram({{word, "--no-launch", "extra"}}), (Outcome{"1\n", "", 0})) << word;
    }
    const Outcome help = runProgram({{"help"}});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.standardOutput.starts_with(
        "fernlow \u2014 drive Fernlow from the command line.\n\nUSAGE\n"));
    EXPECT_EQ(runProgram({{"--help", "--json", "frobnicate"}}), help);
    EXPECT_EQ(runProgram({{"--socket", "/nowhere", "-h"}}), help);
}

TEST(Run, ReportsUsageErrorsWithoutConnecting) {
    const Outcome noCommand{"", "No command given. Run \"fernlow --help\" to see what there is.\n",
                            2};
    EXPECT_EQ(runProgram({{}}), noCommand);
    EXPECT_EQ(runProgram({{"--json"}}), noCommand);
    const Outcome notText{
        "", "\"/caf\uFFFD\" is not valid UTF-8, so it cannot be sent to Fernlow.\n", 2};
    EXPECT_EQ(runProgram({{"process", "/caf\xE9"}}), notText);
}

TEST(Run, MakesControlCharactersVisibleInATerminal) {
    const struct {
        const char* typed;
        const char* shown;
    } cases[] = {
        {"caf\u00e9\t\u2192 \x1B[1;31mred\x1B[m\x1B[0m",
         "caf\u00e9\t\u2192 \x1B[1;31mred\x1B[m\x1B[0m"},
        {"\x1B]52;c;AA\x07 \x1B[2J", "\uFFFD]52;c;AA\uFFFD \uFFFD[2J"},
        {"\x1B[31\x1B[31m\x1B[3\u00e9m\x1B[m\x1B[",
         "\uFFFD[31\x1B[31m\uFFFD[3\u00e9m\x1B[m\uFFFD["},
        {"a\r\nb\rc\r\r\n", "a\r\r\nb\uFFFDc\uFFFD\r\r\n"},
        {"\x01\x1F \x7F~", "\uFFFD\uFFFD \uFFFD~"},
        {"\u007f\u0080\u009f\u00a0", "\uFFFD\uFFFD\uFFFD\u00a0"},
        // NOLINTNEXTLINE(misc-misleading-bidirectional): these characters are tested.
        {"\u2029\u202a\u202e\u202f\u2065\u2066\u2069\u206a\u200e\u200f\u061c",
         "\u2029\uFFFD\uFFFD\u202f\u2065\uFFFD\uFFFD\u206a\u200e\u200f\u061c"},
        {"\x9B"
         "2J \xC3\x9B \xC3(\xE2\x80\xF0\x9F\x9F",
         "\uFFFD2J \u00db \uFFFD(\uFFFD\uFFFD"},
        {"\x1B", "\uFFFD"},
    };
    for (const auto& [typed, shown] : cases) {
        ProgramRun run{{typed}};
        EXPECT_TRUE(
            runProgram(run).standardError.starts_with("There is no \"" + std::string(typed)))
            << "unchanged in a pipe";
        run.inTerminal = true;
        EXPECT_EQ(runProgram(run).standardOutput,
                  "There is no \"" + std::string(shown) +
                      "\" command. Run \"fernlow --help\" to see what there is.\r\n");
    }
}

TEST(Run, MakesRepliesSafeForATerminalExceptAsJSON) {
    const std::string refusal = R"({"ok":false,"error":{"message":"No such project."}})";
    const std::string hostile =
        "{\"ok\":true,\"result\":[{\"name\":\"\u009b2J\\u001b]0;x\\r\\u001b[0;8m\"}]}";
    const struct {
        std::string body;
        std::string line;
        bool inTerminal;
        Outcome expected;
    } cases[] = {
        {refusal, "status", false, {"", refusal + "\n", 5}},
        {refusal, "status", true, {"No such project.\r\n", "", 5}},
        {hostile,
         "status",
         true,
         {"\uFFFD2J\uFFFD]0;x\uFFFD\x1B[0;8m  [OFF]\r\n  \x1B[0m\r\n", "", 0}},
        {hostile, "status --json", true, {hostile + "\r\n", "", 0}},
    };
    for (const auto& [body, line, inTerminal, expected] : cases) {
        ScriptedPeer peer({answer(reply(body))});
        EXPECT_EQ(runProgramAgainst(peer, line, {}, inTerminal), expected) << line;
    }
}

// macOS does not enforce this limit, and the sanitizer reserves terabytes.
#if defined(__linux__) && !defined(FERNLOW_SANITIZED)
TEST(Run, SaysWhenThereIsNotEnoughMemory) {
    static rlim_t limit = 0;
    const std::vector<std::string> words(15, std::string(100000, 'x'));
    const std::string unknown = "There is no \"" + words.front() +
                                "\" command. Run \"fernlow --help\" to see what there is.\n";
    bool reported = false;
    // Raises the limit step by step. The steps are small until the message appears: with the lowest
    // limits that allow the message, the C++ library may not get the 72 KB that it reserves for
    // exceptions, and the status is then 3.
    const rlim_t kilobyte = 1024;
    for (limit = 4096 * kilobyte; limit < 24576 * kilobyte;
         limit += (reported ? 512 : 64) * kilobyte) {
        const Outcome outcome = runProgram({words, "/", [] {
                                                const rlimit both{limit, limit};
                                                ::setrlimit(RLIMIT_AS, &both);
                                            }});
        if (outcome.standardError == "There is not enough memory for this.\n") {
            EXPECT_TRUE(outcome.status == 2 || (outcome.status == 3 && !reported)) << outcome;
            reported = true;
            continue;
        }
        // Before the message appears, the limit is too low for the system to load the program.
        // After the last message, the limit is high enough for the program to work.
        EXPECT_NE(outcome.status, -SIGABRT) << limit;
        EXPECT_EQ(reported, outcome == (Outcome{"", unknown, 2})) << limit << outcome;
    }
    EXPECT_TRUE(reported);
}
#endif

TEST(Run, SendsTheRequestEvenIfTheStandardStreamsAreClosed) {
    const auto closeAll = [] {
        for (const int stream : {0, 1, 2}) {
            ::close(stream);
        }
    };
    ScriptedPeer peer({answerDone()});
    EXPECT_EQ(runProgramAgainst(peer, "status", closeAll).status, 1) << "the answer is lost";
    EXPECT_EQ(peer.requests().front().substr(0, 15), "GET /v1/status ");
}

void leaveNoReader() {
    std::array<int, 2> pipe{};
    if (::pipe(pipe.data()) == 0) {
        ::dup2(pipe[1], STDOUT_FILENO);
        ::close(pipe[0]);
    }
}

void leaveNoReaderAndIgnoreSIGPIPE() {
    std::signal(SIGPIPE, SIG_IGN);
    leaveNoReader();
}

TEST(Run, NeverLosesAReplySilently) {
    const std::string lost = "Fernlow's answer could not be written to standard output.\n";
    const struct {
        const char* body;
        int status;
    } cases[] = {
        {R"({"ok":true})", 1},
        {R"({"ok":true,"result":{"timedOut":true}})", 4},
    };
    for (const auto& [body, status] : cases) {
        ScriptedPeer peer({answer(reply(body)), answer(reply(body))});
        EXPECT_EQ(runProgramAgainst(peer, "status", leaveNoReader).status, -SIGPIPE);
        EXPECT_EQ(runProgramAgainst(peer, "status", leaveNoReaderAndIgnoreSIGPIPE),
                  (Outcome{"", lost, status}));
    }
    EXPECT_EQ(runProgram({{"help"}, "/", leaveNoReaderAndIgnoreSIGPIPE}), (Outcome{"", lost, 1}));
}

TEST(Run, NeedsTheCurrentDirectoryOnlyForRelativePaths) {
    const auto deleteFolder = [] {
        std::array<char, 32> pattern{"/tmp/fernlow-gone-XXXXXX"};
        if (::mkdtemp(pattern.data()) == nullptr || ::chdir(pattern.data()) != 0 ||
            ::rmdir(pattern.data()) != 0) {
            ::_exit(126);
        }
    };
    const Outcome unreadable{
        "", "The current directory cannot be read, so paths cannot be worked out from it.\n", 2};
    for (const auto& words : {std::vector<std::string>{"build"}, {"process", "a.scss"}}) {
        EXPECT_EQ(runProgram({words, "/", deleteFolder}), unreadable) << words[0];
    }
    ScriptedPeer peer({answerDone(), answerDone()});
    EXPECT_EQ(runProgramAgainst(peer, "status", deleteFolder).status, 0);
    EXPECT_EQ(runProgramAgainst(peer, "process /a.scss", deleteFolder).status, 0);
}

} // namespace
} // namespace fernlow::test

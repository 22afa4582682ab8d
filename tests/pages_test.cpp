// The pages show what the programs print: a page's commands are run in one shell, in their order,
// against the stand-in.
#include "support/process.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string_view>

namespace fernlow::test {
namespace {

std::string replaced(std::string text, const std::string& piece, const std::string& other) {
    for (std::size_t at = 0; (at = text.find(piece, at)) != std::string::npos; at += other.size()) {
        text.replace(at, piece.size(), other);
    }
    return text;
}

/// What a page's ```console blocks show, and the script that prints the same. Commands in a comment
/// that begins "<!-- console" prepare the stage, and what they print is dropped; `errors` is set as
/// in what the page gives to paste.
struct Transcript {
    std::string script = "show() { was=$?; printf '%s\\n' \"$1\"; return $was; }\nexec 2>&1\n";
    std::string shown;

    explicit Transcript(const std::string& page) {
        std::ifstream lines(FERNLOW_ROOT "/" + page);
        std::string_view end;
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("  errors='")) {
                script += line + "\n";
            } else if (end.empty()) {
                end = line == "```console" ? "```" : line == "<!-- console" ? "-->" : "";
            } else if (line == end) {
                end = "";
            } else if (end == "-->") {
                script += "{ " + line + "; } >/dev/null\n";
            } else {
                if (line.starts_with("$ ")) {
                    script +=
                        "show '" + replaced(line, "'", "'\\''") + "'\n" + line.substr(2) + "\n";
                    // An empty line before a command is the page's own.
                    shown.resize(shown.size() - (shown.ends_with("\n\n") ? 1 : 0));
                }
                shown += line + "\n";
            }
        }
    }
};

/// Pages for people show what a terminal gets, those for agents what a pipe does.
void expectTrue(const std::string& page, bool inTerminal) {
    const TemporaryFolder folder;
    const StandIn standIn(folder.file("s"));
    const std::string home = std::filesystem::canonical(folder.path()).string();
    const Transcript transcript(page);
    ASSERT_NE(transcript.shown, "") << page;
    const std::string script = "fernlow() { '" + program("bin/fernlow") +
                               "' --no-launch --socket " + home + "/s \"$@\"; }\n" +
                               replaced(transcript.script, "/home/me", home);
    ProgramRun run{{"-c", script}, home, {}, inTerminal};
    run.program = "/bin/sh";
    EXPECT_EQ(replaced(replaced(runProgram(run).standardOutput, home, "/home/me"), "\r", ""),
              transcript.shown)
        << page;
}

/// What agents are told to read errors with, on problems of every kind; it keeps fernlow's status.
TEST(Pages, TellErrorsByTheLinesForAgents) {
    const TemporaryFolder folder;
    std::ifstream lines(FERNLOW_ROOT "/docs/for-agents.md");
    std::string script = "fernlow() { cat reply.json; return 1; }\n";
    for (std::string line; std::getline(lines, line) && !line.starts_with("- Status");) {
        script += line.starts_with("  ") ? line + "\n" : "";
    }
    const auto expectErrors = [&](const std::string& reply, const std::string& errors) {
        std::ofstream(folder.file("reply.json")) << reply;
        ProgramRun run{{"-c", script}, folder.path()};
        run.program = "/bin/bash";
        EXPECT_EQ(runProgram(run), (Outcome{errors, "", 1})) << reply;
    };
    expectErrors(R"({"result":{"problems":[
        {"path":"/a","message":"None."},
        {"path":"/x","syntaxReports":[
            {"path":"/b","issues":[{"line":9,"column":1,"reason":"Nine."},
                                   {"line":2,"column":3,"reason":"Two."}]},
            {"path":"/c","issues":[{"line":1,"column":1,"reason":"One."}]}]},
        {"path":"/d","message":"Empty.","syntaxReports":[]},
        {"path":"/e","message":"No issues.","syntaxReports":[{"path":"/e"}]},
        {"title":"Hook failed","message":"No path."}]}})",
                 "/a: None.\n/b:2:3: Two.\n/b:9:1: Nine.\n/c:1:1: One.\n/d: Empty.\n"
                 "/e: No issues.\nHook failed: No path.\n");
    expectErrors(R"({"result":{"entries":[{"path":"/f","message":"Logged."}]}})", "/f: Logged.\n");
    expectErrors(R"({"result":{"problems":[]}})", "");
    expectErrors(R"({"result":{}})", "");
}

TEST(Pages, ShowWhatIsPrinted) {
    expectTrue("README.md", true);
    expectTrue("docs/for-agents.md", false);
}

} // namespace
} // namespace fernlow::test

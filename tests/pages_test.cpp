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

/// What a page's ```console blocks show, and the script that prints the same. `errors` is set as in
/// what the page gives to paste.
struct Transcript {
    std::string script = "show() { was=$?; printf '%s\\n' \"$1\"; return $was; }\nexec 2>&1\n";
    std::string shown;

    explicit Transcript(const std::string& page) {
        std::ifstream lines(FERNLOW_ROOT "/" + page);
        bool isShown = false;
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("```")) {
                isShown = line == "```console";
            } else if (line.starts_with("  errors='")) {
                script += line + "\n";
            } else if (isShown) {
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

/// Pages for people show what a terminal gets, those for agents what a pipe does. The stage is set
/// by a shell's commands.
void expectTrue(const std::string& page, bool inTerminal, const std::string& stage) {
    const TemporaryFolder folder;
    const StandIn standIn(folder.file("s"));
    const std::string home = std::filesystem::canonical(folder.path()).string();
    const Transcript transcript(page);
    ASSERT_NE(transcript.shown, "") << page;
    const std::string script = "fernlow() { '" + program("bin/fernlow") +
                               "' --no-launch --socket " + home + "/s \"$@\"; }\n{\n" + stage +
                               "} >/dev/null\n" + replaced(transcript.script, "/home/me", home);
    ProgramRun run{{"-c", script}, home, {}, inTerminal};
    run.program = "/bin/sh";
    EXPECT_EQ(replaced(replaced(runProgram(run).standardOutput, home, "/home/me"), "\r", ""),
              transcript.shown)
        << page;
}

/// The lines that agents are given to run, from the one that begins so to the end of its point.
std::string linesForAgents(const std::string& beginning) {
    std::ifstream page(FERNLOW_ROOT "/docs/for-agents.md");
    std::string lines;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with(lines.empty() ? beginning : "  ")) {
            lines += line + "\n";
        } else if (!lines.empty()) {
            break;
        }
    }
    return lines;
}

/// In a shell to which fernlow and git are what is said here.
Outcome runForAgents(const std::string& beginning, const std::string& programs) {
    const TemporaryFolder folder;
    ProgramRun run{{"-c", programs + "\n" + linesForAgents(beginning)}, folder.path()};
    run.program = "/bin/bash";
    return runProgram(run);
}

/// Errors are read from problems of every kind, and fernlow's status is kept.
TEST(Pages, TellErrorsByTheLinesForAgents) {
    const auto expectErrors = [](const std::string& reply, const std::string& errors) {
        EXPECT_EQ(runForAgents("  errors=", "fernlow() { echo '" + reply + "'; return 1; }"),
                  (Outcome{errors, "", 1}))
            << reply;
    };
    expectErrors(R"({"result":{"problems":[
        {"path":"/a","message":"None."},
        {"path":"/x","syntaxReports":[
            {"path":"/b","issues":[{"line":9,"column":1,"reason":"Nine."},
                                   {"line":2,"column":3,"reason":"Two."}]},
            {"path":"/c","issues":[{"line":1,"column":1,"reason":"One."}]}]},
        {"path":"/d","message":"Empty.","syntaxReports":[]},
        {"path":"/e","message":"No issues.","syntaxReports":[{"path":"/e"}]},
        {"severity":"warning","title":"Hook failed","message":"No path."}]}})",
                 "/a: None.\n/b:2:3: Two.\n/b:9:1: Nine.\n/c:1:1: One.\n/d: Empty.\n"
                 "/e: No issues.\nwarning: Hook failed: No path.\n");
    expectErrors(R"({"result":{"entries":[{"path":"/f","message":"Logged."}]}})", "/f: Logged.\n");
    expectErrors(R"({"result":{"problems":[]}})", "");
    expectErrors(R"({"result":{}})", "");
}

/// A switch of branches is watched by nobody, even if it fails, and isn't begun where it would be
/// or where somebody else has the project off.
TEST(Pages, SwitchBranchesByTheLineForAgents) {
    const auto expectSteps =
        [](const std::string& refused, const std::string& steps, int status) {
            const std::string isOn = refused == "projects" ? "false" : "true";
            EXPECT_EQ(runForAgents("  (", R"(
            git() { echo git; return 1; }
            fernlow() {
                if [ $2 = projects ]; then
                    echo "{\"result\":[{\"path\":\"/\",\"isEnabled\":true},"
                    echo "{\"path\":\"$(pwd -P)\",\"isEnabled\":)" +
                                              isOn + R"(}]}"
                else
                    echo $2
                    [ $2 != ")" + refused + R"(" ] || return 5
                fi
            })"),
                      (Outcome{steps, "", status}))
                << refused;
        };
    expectSteps("nothing", "true\nwait\ndisable\ngit\nenable\n", 1);
    expectSteps("projects", "false\n", 1);
    expectSteps("wait", "true\nwait\n", 5);
    expectSteps("disable", "true\nwait\ndisable\n", 5);
}

TEST(Pages, ShowWhatIsPrinted) {
    expectTrue("README.md", true, R"(mkdir -p site/src/parts; cd site
        touch src/parts/_colours.scss
        printf '@import "parts/colours";\n' | tee src/app.scss src/print.scss
        printf 'nav {\n  a { color: red;\n}\n' >src/broken.scss
        fernlow add; fernlow build
    )");
    expectTrue("docs/for-agents.md", false, R"(mkdir -p site/src/parts site/vendor
        touch site/src/parts/_colours.scss site/src/main.js site/vendor/library.js
        printf '@import "parts/colours";\n' | tee site/src/app.scss site/src/print.scss
    )");
}

} // namespace
} // namespace fernlow::test

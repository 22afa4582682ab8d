// The pages show what the programs print: a page's commands are run in one shell, in their order,
// against the stand-in.
#include "support/process.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
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

/// What bash makes of a script, in a folder of its own with a stand-in: a project with a fault,
/// whose folder's name has a blank and is entered by a link. Its path is shown as "SITE".
Outcome runAsAgent(const std::string& script) {
    const TemporaryFolder folder;
    const StandIn standIn(folder.file("s"));
    ProgramRun run{{"-c", "client() { '" + program("bin/fernlow") + "' --socket '" +
                              folder.file("s") + "' \"$@\"; }\n" + R"(
                              fernlow() { client "$@"; }
                              mkdir -p 'a b/src'; ln -s 'a b' link; cd link
                              echo '{' >src/app.scss
                              fernlow --no-launch add >../reply
                          )" + script},
                   folder.path()};
    run.program = "/bin/bash";
    Outcome outcome = runProgram(run);
    const auto home = std::filesystem::canonical(folder.path()).string();
    outcome.standardOutput = replaced(outcome.standardOutput, home + "/a b", "SITE");
    return outcome;
}

/// Each problem is told in one line that a terminal may have, whatever it lacks, and fernlow's
/// status is kept.
TEST(Pages, TellErrorsByTheLinesForAgents) {
    const auto expectErrors = [](const std::string& reply, const std::string& errors) {
        EXPECT_EQ(runAsAgent("fernlow() { echo '" + reply + "'; return 1; }\n" +
                             linesForAgents("  errors=")),
                  (Outcome{errors, "", 1}))
            << reply;
    };
    expectErrors(R"({"result":{"problems":[
        {"path":"/a","message":"None."},
        {"path":"/x","syntaxReports":[
            {"path":"/b","issues":[{"line":9,"column":1,"reason":"Nine."},
                                   {"line":2,"column":3,"reason":"Two."},
                                   {"line":2,"column":1,"reason":"Before."}]},
            {"path":"/c","issues":[{"line":1,"column":1,"reason":"One."}]}]},
        {"path":"/d","message":"Empty.","syntaxReports":[]},
        {"path":"/e","message":"No issues.","syntaxReports":[{"path":"/e"}]},
        {"severity":"warning","title":"Hook failed","message":"No path."},
        {"path":"/g\u001b[2J","message":"Two\n/h:1:1: lines"}]}})",
                 "/a: None.\n/b:2:1: Before.\n/b:2:3: Two.\n/b:9:1: Nine.\n/c:1:1: One.\n"
                 "/d: Empty.\n/e: No issues.\nwarning: Hook failed: No path.\n"
                 "/g [2J: Two /h:1:1: lines\n");
    expectErrors(R"({"result":{"entries":[{"path":"/f","message":"Logged."}]}})", "/f: Logged.\n");
    expectErrors(R"({"result":{"problems":[]}})", "");
    expectErrors(R"({"result":{}})", "");
}

/// The same lines do for what agents are told to put in the place of "process".
TEST(Pages, NoteTheCursorAndWaitForAgents) {
    std::stringstream page;
    page << std::ifstream(FERNLOW_ROOT "/docs/for-agents.md").rdbuf();
    const std::string cursor = "fernlow --no-launch status | jq .result.logCursor";
    const std::string process = "process --timeout 100 FILE...";
    const std::string wait = "wait --since CURSOR --project . --timeout 100";
    const std::string build = "build --clean --timeout 100";
    for (const std::string& command : {cursor, wait, build}) {
        EXPECT_NE(page.str().find("`" + command + "`"), std::string::npos) << command;
    }
    std::string script = "cursor=$(" + cursor + ")\n";
    for (const std::string& command : {process, wait, build}) {
        script += replaced(linesForAgents("  errors="), process, command) + "echo $?\n";
    }
    script = replaced(replaced(script, "FILE...", "src/app.scss"), "CURSOR", "$cursor");
    const std::string told = "SITE/src/app.scss:1:1: This \"{\" is never closed.\n1\n";
    EXPECT_EQ(runAsAgent(script), (Outcome{told + told + told, "", 0}));
}

/// A switch of branches is watched by nobody, whatever becomes of it, and isn't begun where it
/// would be or where somebody else has the project off.
TEST(Pages, SwitchBranchesByTheLineForAgents) {
    // What is told of each step is the projects' listing or the command's name.
    const std::string steps = R"(
        fernlow() {
            [ "$2" != "$refused" ] || return 5
            client "$@" >../reply
            [ "$2" = projects ] && cat ../reply || echo "$2"
        }
        isOn() { client --no-launch projects | jq '.result[0].isEnabled'; }
        git() { echo git; isOn; return 7; }
    )";
    const auto expectSteps = [&](const std::string& before, const std::string& shown, int status) {
        EXPECT_EQ(runAsAgent(steps + before + "\n" + linesForAgents("  (fernlow") +
                             "was=$?; isOn; exit $was\n"),
                  (Outcome{shown, "", status}))
            << before;
    };
    expectSteps("", "wait\ntrue\ndisable\ngit\nfalse\nenable\ntrue\n", 7);
    expectSteps("git() { sh -c 'kill -INT $PPID; kill -INT $$'; }",
                "wait\ntrue\ndisable\nenable\nenable\ntrue\n", 130);
    expectSteps("refused=disable", "wait\ntrue\nenable\ntrue\n", 5);
    expectSteps("refused=wait", "true\n", 5);
    expectSteps("exec 2>../errors; refused=projects", "wait\ntrue\n", 5);
    expectSteps("client --no-launch disable >../reply", "wait\nfalse\nfalse\n", 1);
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

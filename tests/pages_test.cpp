// Runs the commands and recipes of the pages against the stand-in, and compares the output with the
// output that the pages show.
#include "support/command_line.h"
#include "support/paths.h"
#include "support/process.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace fernlow::test {
namespace {

const std::string agentsPage = "docs/for-agents.md";

/// A part of a page: either a fenced block, with the language named after the opening fence, or the
/// text between fenced blocks, with an empty language. In a fenced block of Markdown, each group of
/// indented lines is a block of its own, with the language "pasted".
struct Block {
    std::string language;
    std::string text;
};

std::vector<Block> blocksOf(const std::string& page) {
    std::vector<Block> blocks(1);
    std::ifstream file(FERNLOW_ROOT "/" + page);
    std::string language;
    for (std::string line; std::getline(file, line);) {
        const bool isFence = line.starts_with("```");
        language = isFence ? line.substr(3) : language;
        const bool isPasted = language == "markdown" && line.starts_with("    ");
        const std::string part = isPasted ? "pasted" : language;
        if (blocks.back().language != part) {
            blocks.push_back({part, ""});
        }
        blocks.back().text += isFence ? "" : line.substr(isPasted ? 4 : 0) + "\n";
    }
    return blocks;
}

/// Returns the first block of the page for agents that begins with `beginning`. Throws
/// std::runtime_error if there is none.
std::string blockBeginning(const std::string& beginning) {
    for (const Block& block : blocksOf(agentsPage)) {
        if (block.language != "" && block.text.starts_with(beginning)) {
            return block.text;
        }
    }
    throw std::runtime_error("no block begins with " + beginning);
}

/// Returns the definition of the shell function report() from the page for agents, without the call
/// that follows it.
std::string reportFunction() {
    const std::string lines = blockBeginning("report() {");
    return lines.substr(0, lines.find("}\nreport ") + 2);
}

/// Runs a script in a new folder. In the script and in its output, the folder is called /home/me.
/// The command "fernlow" talks to a stand-in.
Outcome runScript(const std::string& script, const std::string& shell = "sh",
                  bool inTerminal = false) {
    const TemporaryFolder folder;
    const StandIn standIn(folder.file("s"));
    const std::string& home = folder.path();
    folder.writeScript("bin/fernlow", "exec '" + program("bin/fernlow") +
                                          "' --no-launch --socket " + folder.file("s") +
                                          " \"$@\"\n");
    const std::string setUp = "PATH=" + folder.file("bin") + ":$PATH\n";
    ProgramRun run{{shell, "-c", setUp + replaceAll(script, "/home/me", home)}, home};
    run.program = "/usr/bin/env";
    run.inTerminal = inTerminal;
    Outcome outcome = runProgram(run);
    for (std::string* text : {&outcome.standardOutput, &outcome.standardError}) {
        *text = replaceAll(replaceAll(*text, home, "/home/me"), "\r", "");
    }
    return outcome;
}

/// Runs the commands in the console blocks of a page in one shell, after the commands of `setUp`,
/// and expects the output that the page shows. Pages for people show the output in a terminal;
/// pages for agents show the output in a pipe.
void expectShownOutput(const std::string& page, bool inTerminal, const std::string& setUp) {
    std::string script = "{\n" + setUp + "} >/dev/null\nexec 2>&1\n" + reportFunction() +
                         "show() { code=$?; printf '%s\\n' \"$1\"; return $code; }\n";
    std::string shown;
    for (const Block& block : blocksOf(page)) {
        std::istringstream lines(block.language == "console" ? block.text : "");
        for (std::string line; std::getline(lines, line); shown += line + "\n") {
            if (line.starts_with("$ ")) {
                script += "show '" + replaceAll(line, "'", "'\\''") + "'\n" + line.substr(2) + "\n";
            }
        }
    }
    // The pages have additional empty lines between commands, so empty lines are ignored.
    EXPECT_EQ(replaceAll(runScript(script, "sh", inTerminal).standardOutput, "\n\n", "\n"),
              replaceAll(shown, "\n\n", "\n"))
        << page;
}

TEST(Pages, ShowThePrintedOutput) {
    const std::string site = R"(mkdir -p site/src/parts shop/src; touch site/src/parts/_colours.scss
        printf '@import "parts/colours";\n' | tee site/src/app.scss site/src/print.scss
    )";
    expectShownOutput("README.md", true, site + R"(cd site; fernlow add
        printf 'nav {\n  a { color: red;\n}\n' >src/broken.scss; fernlow build
    )");
    expectShownOutput(agentsPage, false, site);
}

TEST(AgentsPage, ReportPrintsEachErrorInOneHarmlessLine) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {R"({"result":{"problems":[
            {"path":"/a","message":"None."},
            {"path":"/x","syntaxReports":[
                {"path":"/b","issues":[{"line":2,"column":3,"reason":"Two."},{"reason":"Zero."}]},
                {"path":"/c","issues":[{"line":1,"column":1,"reason":"One."}]}]},
            {"path":"/d","message":"Empty.","syntaxReports":[]},
            {"path":"/e","message":"No issues.","syntaxReports":[{"path":"/e"}]},
            {"severity":"warning","title":"Hook failed","message":"No path."},
            {"path":"/g\u001b[2J\u009b\u202e","message":"Two\n/h:1:1: lines"}]}})",
         "/a: None.\n/b:2:3: Two.\n/b:0:0: Zero.\n/c:1:1: One.\n/d: Empty.\n/e: No issues.\n"
         "warning: Hook failed: No path.\n/g [2J : Two /h:1:1: lines\n"},
        {R"({"error":{"message":"Off.\u001b[2J"}})", "Off. [2J\n"},
        {"Not JSON.\033[2J", "Not JSON. [2J \n"},
        {R"({"result":{}})", ""}};
    for (const auto& [reply, lines] : cases) {
        for (const char* const shell : {"sh", "bash", "zsh"}) {
            EXPECT_EQ(runScript("set -e\nfernlow() { printf '%s\\n' '" + reply +
                                    "' >&2; return 1; }\n" + reportFunction() + "report process",
                                shell),
                      (Outcome{lines + "exit status 1\n", "", 1}))
                << shell << reply;
        }
    }
}

/// Adds a project with a syntax error. The name of its folder contains a space, and the current
/// directory is a link to the folder.
const std::string projectWithError = R"(mkdir -p 'a b/src'; ln -s 'a b' link; cd link
    echo '{' >src/app.scss
    fernlow add >../reply || exit
)";
const std::string theError = "/home/me/a b/src/app.scss:1:1: This \"{\" is never closed.\n";

TEST(AgentsPage, ThePastedCommandsReportTheSameErrors) {
    std::string page;
    for (const Block& block : blocksOf(agentsPage)) {
        page += block.text;
    }
    std::string script = projectWithError + "cursor=$(" + blockBeginning("fernlow --no-launch") +
                         ")\n" + replaceAll(blockBeginning("report()"), "FILE...", "src/app.scss");
    for (const std::string command : {"report wait --since CURSOR --project . --timeout 100",
                                      "report build --clean --timeout 100"}) {
        EXPECT_NE(page.find("`" + command + "`"), std::string::npos) << command;
        script += replaceAll(command, "CURSOR", "$cursor") + "\n";
    }
    const std::string report = theError + "exit status 1\n";
    EXPECT_EQ(runScript(script + "jq() { return 2; }; report build"),
              (Outcome{report + report + report + "exit status 127\n", "", 127}));
}

TEST(AgentsPage, TheProjectIsDisabledWhileGitSwitchesBranches) {
    // Writes to "steps" the name of each fernlow command, and whether the project is enabled while
    // git runs. Also interrupts "enable" while it runs.
    const std::string steps = R"(
        isOn() { command fernlow projects | jq '.result[0].isEnabled'; }
        fernlow() {
            [ "$2" != "$refused" ] || return 5
            [ "$2" != wait ] || set -- "$@" --settle 0
            sh -c "[ $2 != enable ] || kill -INT \$\$; echo $2 >>../steps"
            command fernlow "$@"
        }
        git() { isOn >>../steps; return 7; }
        trap 'isOn >>../steps; echo $(cat ../steps)' EXIT
        # With -e, zsh skips the EXIT trap when a function fails. Only this test has functions.
        [ -n "$ZSH_VERSION" ] || set -e
    )";
    const auto expectSteps = [&](const std::string& before, const std::string& expected, int status,
                                 const std::string& message = "") {
        for (const char* const shell : {"sh", "bash", "zsh"}) {
            EXPECT_EQ(
                runScript(projectWithError + steps + before + "\n" + blockBeginning("(\n"), shell),
                (Outcome{expected + "\n", message, status}))
                << shell << before;
        }
    };
    expectSteps("", "wait projects disable false enable true", 7);
    for (const std::string signal : {"HUP", "INT", "TERM"}) {
        expectSteps("git() { sh -c 'kill -" + signal + " $PPID; sleep 0.1'; }",
                    "wait projects disable enable true", 130);
    }
    expectSteps("refused=disable", "wait projects enable true", 5);
    expectSteps("refused=enable", "wait projects disable false false", 1,
                "The project may still be switched off.\n");
    expectSteps("refused=wait", "true", 1, "No switch: the wait ended with status 5.\n");
    const std::string isOff = "No switch: the project is unknown or switched off.\n";
    expectSteps("refused=projects", "wait true", 1, isOff);
    expectSteps("command fernlow disable >../reply", "wait projects false", 1, isOff);
}

TEST(AgentsPage, TheLogIsFollowedAcrossARestart) {
    EXPECT_EQ(runScript(projectWithError + R"(
        fernlow process src/app.scss >../reply; touch ../before
        fernlow() {
            if [ -e ../before ]; then rm ../before; echo '{"result":{"logCursor":99}}'
            else [ ! -e ../after ] && command fernlow "$@"; fi
        }
        sleep() {
            [ ! -e ../again ] || touch ../after
            touch ../again; command fernlow process src/app.scss >../reply
        }
        )" + blockBeginning("# follow.sh"))
                  .standardOutput,
              "1 error Syntax error in src/app.scss\n2 error Syntax error in src/app.scss\n");
}

/// Returns a script that saves the recipes of the page for agents in the current folder.
std::string saveRecipes() {
    std::string script = "cat >report.sh <<'END'\n" + reportFunction() + "END\n";
    for (const std::string name : {"files.sh", "ci.sh", "Makefile", "client.py"}) {
        script += "cat >" + name + " <<'END'\n" + blockBeginning("# " + name + "\n") + "END\n";
    }
    return script;
}

TEST(AgentsPage, AllPagesOfFilesAreReadOrTheLoopFails) {
    EXPECT_EQ(runScript(projectWithError + saveRecipes() + R"(
        for number in $(seq 500); do : >src/$number.js; done
        sh -e ./files.sh | sort -u | grep -c src/
        fernlow() { [ "$5" = 0 ] && command fernlow "$@"; }; (. ./files.sh >../reply); echo $?)")
                  .standardOutput,
              "501\n1\n");
}

TEST(AgentsPage, TheCiStepFailsAsLongAsThereIsAnError) {
    EXPECT_EQ(runScript(projectWithError + saveRecipes() + R"(fernlow remove . >../reply
        (
            fernlow() {
                [ "$2" != build ] || set -- "$@" --timeout 0
                [ "$2" != wait ] || [ -e ../late ] || { touch ../late; echo '{}'; return 4; }
                command fernlow "$@"
            }
            set -e; . ./ci.sh
        )
        echo $?; bash -e ./ci.sh; echo $?; echo >src/app.scss; sh ./ci.sh; echo $?)")
                  .standardOutput,
              "exit status 4\nexit status 4\n" + theError + "exit status 1\n1\n" + theError +
                  "exit status 1\n1\nexit status 0\n0\n");
}

TEST(AgentsPage, MakeAndPythonLearnTheStatus) {
    if (std::system("command -v make >/dev/null && command -v python3 >/dev/null") != 0) {
        GTEST_SKIP() << "make or python3 is not installed";
    }
    EXPECT_EQ(runScript(projectWithError + saveRecipes() + R"(
        for words in status 'process src/app.scss' 'wait --timeout 0' frobnicate \
            'remove nothing' '--socket /none status'; do
            python3 -c 'import client, sys; print(client.fernlow(*sys.argv[1:])[0])' $words 2>&1 |
                tail -n 1 | sed 's/ is .*//'
        done
        mkdir src/parts; touch src/parts/_colours.scss
        make .SHELLFLAGS=-ec 2>../reply; echo $?
        echo >src/app.scss; make; echo $?; make -q; echo $?)")
                  .standardOutput,
              "0\n1\n4\nValueError: fernlow ended with 2: 'There\n"
              "RuntimeError: fernlow ended with 5: 'There\n"
              "ConnectionError: fernlow ended with 3: 'Fernlow\n" +
                  theError + "exit status 1\n2\nexit status 0\n0\n0\n");
}

} // namespace
} // namespace fernlow::test

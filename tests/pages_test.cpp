// Runs the commands and recipes of the pages against the stand-in, and compares what the pages show
// with what is printed.
#include "support/command_line.h"
#include "support/process.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

namespace fernlow::test {
namespace {

/// A fenced block of a page: the language behind its fence, and its lines.
struct Block {
    std::string language;
    std::vector<std::string> lines;
};

std::vector<Block> blocksOf(const std::string& page) {
    std::vector<Block> blocks;
    std::ifstream file(FERNLOW_ROOT "/" + page);
    bool isInside = false;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("```")) {
            isInside = !isInside;
            if (isInside) {
                blocks.push_back({line.substr(3), {}});
            }
        } else if (isInside) {
            blocks.back().lines.push_back(line);
        }
    }
    return blocks;
}

/// The recipe of the agents' page that begins with the comment "# name".
std::string recipe(const std::string& name) {
    std::string text;
    for (const Block& block : blocksOf("docs/for-agents.md")) {
        if (block.lines.front() == "# " + name) {
            for (const std::string& line : block.lines) {
                text += line + "\n";
            }
        }
    }
    return text;
}

/// The groups of indented lines in the block that the agents' page gives to paste.
enum PastedLines : std::size_t { noteCursor, reportFunction, switchBranch };

std::string pasted(PastedLines group) {
    std::vector<std::string> groups;
    bool isInside = false;
    for (const Block& block : blocksOf("docs/for-agents.md")) {
        for (const std::string& line : block.lines) {
            const bool isCode = block.language == "markdown" && line.starts_with("    ");
            if (isCode && !isInside) {
                groups.emplace_back();
            }
            isInside = isCode;
            if (isCode) {
                groups.back() += line.substr(4) + "\n";
            }
        }
    }
    return groups.at(group);
}

/// The function "report" of the pasted block, without the call behind it.
std::string reportDefinition() {
    const std::string lines = pasted(reportFunction);
    return lines.substr(0, lines.find("}\nreport ") + 2);
}

/// Runs a script in a new folder, shown as /home/me, in which "fernlow" talks to a stand-in.
Outcome runScript(const std::string& script, const std::string& shell = "sh",
                  bool inTerminal = false) {
    const TemporaryFolder folder;
    const StandIn standIn(folder.file("s"));
    const std::string home = std::filesystem::canonical(folder.path()).string();
    const std::string setUp = "mkdir bin; printf '#!/bin/sh\\nexec \"" + program("bin/fernlow") +
                              "\" --no-launch --socket " + home + "/s \"$@\"\\n' >bin/fernlow\n" +
                              "chmod +x bin/fernlow; PATH=" + home + "/bin:$PATH\n";
    ProgramRun run{{shell, "-c", setUp + replaceAll(script, "/home/me", home)},
                   home,
                   {},
                   inTerminal,
                   "/usr/bin/env"};
    Outcome outcome = runProgram(run);
    for (std::string* text : {&outcome.standardOutput, &outcome.standardError}) {
        *text = replaceAll(replaceAll(*text, home, "/home/me"), "\r", "");
    }
    return outcome;
}

/// Runs the console blocks of a page in one shell, after `setUp`. Pages for people show the output
/// in a terminal, pages for agents the output in a pipe.
void expectShownOutput(const std::string& page, bool inTerminal, const std::string& setUp) {
    std::string script = "{\n" + setUp + "} >/dev/null\nexec 2>&1\n" + reportDefinition() +
                         "show() { was=$?; printf '%s\\n' \"$1\"; return $was; }\n";
    std::string shown;
    for (const Block& block : blocksOf(page)) {
        for (const std::string& line : block.lines) {
            if (block.language != "console" || line.empty()) {
                continue; // Empty lines stand only between commands, for the reader.
            }
            if (line.starts_with("$ ")) {
                script += "show '" + replaceAll(line, "'", "'\\''") + "'\n" + line.substr(2) + "\n";
            }
            shown += line + "\n";
        }
    }
    const std::string output = runScript(script, "sh", inTerminal).standardOutput;
    EXPECT_EQ(replaceAll(output, "\n\n", "\n"), shown) << page;
}

TEST(Pages, ShowThePrintedOutput) {
    expectShownOutput("README.md", true, R"(mkdir -p site/src/parts; cd site
        touch src/parts/_colours.scss
        printf '@import "parts/colours";\n' | tee src/app.scss src/print.scss
        printf 'nav {\n  a { color: red;\n}\n' >src/broken.scss
        fernlow add; fernlow build
    )");
    expectShownOutput("docs/for-agents.md", false, R"(mkdir -p site/src/parts site/vendor shop/src
        touch site/src/parts/_colours.scss site/src/main.js site/vendor/library.js
        printf '@import "parts/colours";\n' | tee site/src/app.scss site/src/print.scss
    )");
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
        {R"({"result":{"problems":[]}})", ""},
        {R"({"result":{}})", ""},
        {R"({"ok":false})", ""}};
    for (const auto& [reply, lines] : cases) {
        for (const char* const shell : {"sh", "bash", "zsh"}) {
            EXPECT_EQ(runScript("fernlow() { printf '%s\\n' '" + reply + "' >&2; return 1; }\n" +
                                    reportDefinition() + "report process",
                                shell),
                      (Outcome{lines + "exit status 1\n", "", 1}))
                << shell << reply;
        }
    }
}

/// A project with an error, in a folder whose name has a blank, entered through a link.
const std::string projectWithError = R"(mkdir -p 'a b/src'; ln -s 'a b' link; cd link
    echo '{' >src/app.scss
    fernlow add >../reply || exit
)";
const std::string theError = "/home/me/a b/src/app.scss:1:1: This \"{\" is never closed.\n";

TEST(AgentsPage, ThePastedCommandsReportTheSameErrors) {
    std::string block;
    for (const Block& each : blocksOf("docs/for-agents.md")) {
        for (const std::string& line : each.lines) {
            block += each.language == "markdown" ? line + "\n" : "";
        }
    }
    std::string script = projectWithError + "cursor=$(" + pasted(noteCursor) + ")\n" +
                         replaceAll(pasted(reportFunction), "FILE...", "src/app.scss");
    for (const std::string command : {"report wait --since CURSOR --project . --timeout 100",
                                      "report build --clean --timeout 100"}) {
        EXPECT_NE(block.find("`" + command + "`"), std::string::npos) << command;
        script += replaceAll(command, "CURSOR", "$cursor") + "\n";
    }
    const std::string report = theError + "exit status 1\n";
    EXPECT_EQ(runScript(script), (Outcome{report + report + report, "", 1}));
}

TEST(AgentsPage, NobodyWatchesASwitchOfBranches) {
    // Each command and, for git, whether the project is on. "enable" is interrupted as well.
    const std::string steps = R"(
        isOn() { command fernlow projects | jq '.result[0].isEnabled'; }
        fernlow() {
            [ "$2" != "$refused" ] || return 5
            [ "$2" != wait ] || set -- "$@" --settle 0
            sh -c "[ $2 != enable ] || kill -INT \$\$; echo $2 >>../steps"
            command fernlow "$@"
        }
        git() { isOn >>../steps; return 7; }
    )";
    const auto expectSteps = [&](const std::string& before, const std::string& expected,
                                 const std::string& message, int status) {
        for (const char* const shell : {"sh", "bash", "zsh"}) {
            EXPECT_EQ(runScript(projectWithError + steps + before + "\n" + pasted(switchBranch) +
                                    "was=$?; isOn >>../steps; echo $(cat ../steps); exit $was",
                                shell),
                      (Outcome{expected + "\n", message, status}))
                << shell << before;
        }
    };
    expectSteps("", "wait projects disable false enable true", "", 7);
    for (const std::string signal : {"HUP", "INT", "TERM"}) {
        expectSteps("git() { sh -c 'kill -" + signal + " $PPID; sleep 0.1'; }",
                    "wait projects disable enable true", "", 130);
    }
    expectSteps("refused=disable", "wait projects enable true", "", 5);
    expectSteps("refused=wait", "true",
                "No switch: Fernlow is still working, or cannot be reached.\n", 1);
    const std::string isOff = "No switch: the project is unknown or switched off.\n";
    expectSteps("refused=projects", "wait true", isOff, 1);
    expectSteps("command fernlow disable >../reply", "wait projects false", isOff, 1);
}

TEST(AgentsPage, TheLogIsFollowedAcrossARestart) {
    EXPECT_EQ(runScript(projectWithError + R"(
        fernlow process src/app.scss >../reply
        touch ../before
        fernlow() {
            if [ -e ../before ]; then rm ../before; echo '{"result":{"logCursor":99}}'
            else [ ! -e ../after ] && command fernlow "$@"; fi
        }
        sleep() {
            [ ! -e ../again ] || touch ../after
            touch ../again; command fernlow process src/app.scss >../reply
        }
        )" + recipe("follow.sh"))
                  .standardOutput,
              "1 error Syntax error in src/app.scss\n2 error Syntax error in src/app.scss\n");
}

/// Saves the recipes in the current folder.
std::string saveRecipes() {
    std::string script = "cat >report.sh <<'END'\n" + reportDefinition() + "END\n";
    for (const std::string name : {"ci.sh", "Makefile", "client.py"}) {
        script += "cat >" + name + " <<'END'\n" + recipe(name) + "END\n";
    }
    return script;
}

TEST(AgentsPage, TheCiStepFailsAsLongAsThereIsAnError) {
    EXPECT_EQ(runScript(projectWithError + saveRecipes() + R"(
        fernlow remove . >../reply
        (
            fernlow() { case $* in *build*) set -- "$@" --timeout 0; esac; command fernlow "$@"; }
            . ./ci.sh
        )
        echo $?; sh ./ci.sh; echo $?; echo >src/app.scss; sh ./ci.sh; echo $?
        )")
                  .standardOutput,
              "exit status 4\n" + theError + "exit status 1\n1\n" + theError +
                  "exit status 1\n1\nexit status 0\n0\n");
}

TEST(AgentsPage, MakeAndPythonLearnTheStatus) {
    if (std::system("command -v make >/dev/null && command -v python3 >/dev/null") != 0) {
        GTEST_SKIP() << "make or python3 is not installed";
    }
    EXPECT_EQ(runScript(projectWithError + saveRecipes() + R"(mkdir src/parts
        touch src/parts/_colours.scss
        make 2>../reply; echo $?; echo >src/app.scss; make; echo $?; make -q; echo $?
        )")
                  .standardOutput,
              theError + "exit status 1\n2\nexit status 0\n0\n0\n");
    EXPECT_EQ(runScript(saveRecipes() + R"(cat >bin/fernlow <<'END'
#!/bin/sh
case $2 in
[014]) echo '{"ok":true,"result":{"errorCount":'$2'}}' ;;
refused) echo '{"ok":false,"error":{"message":"Off."}}' >&2; exit 5 ;;
*) echo Text. >&2 ;;
esac
exit $2
END
        python3 -c '
from client import fernlow
for word in ["0", "1", "4", "2", "3", "5", "refused"]:
    try:
        print(fernlow(word))
    except Exception as error:
        print(type(error).__name__ + ":", error)
')")
                  .standardOutput,
              "(0, {'errorCount': 0})\n(1, {'errorCount': 1})\n(4, {'errorCount': 4})\n"
              "ValueError: fernlow ended with 2: 'Text.'\n"
              "ConnectionError: fernlow ended with 3: 'Text.'\n"
              "RuntimeError: fernlow ended with 5: 'Text.'\n"
              "RuntimeError: fernlow ended with 5: 'Off.'\n");
}

} // namespace
} // namespace fernlow::test

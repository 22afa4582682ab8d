// Runs the built program against the stand-in application.
#include "support/command_line.h"
#include "support/paths.h"
#include "support/process.h"
#include "support/temporary_folder.h"
#include "transport/socket_client.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

namespace fernlow::test {
namespace {

/// A stand-in and a folder "site" with sources, in which the program runs.
class EndToEnd : public testing::Test {
protected:
    EndToEnd() {
        folder_.write("site/src/_ink.scss", "$ink: #222;\n");
        folder_.write("site/src/app.scss", "@import \"ink\";\nbody { color: $ink; }\n");
        folder_.write("site/src/print.scss", "@import \"ink\";\np { color: $ink; }\n");
        folder_.write("site/src/main.js", "function greet() {\n");
        folder_.write("site/vendor/library.js", "vendored();\n");
    }

    [[nodiscard]] std::string site() const { return folder_.file("site"); }

    [[nodiscard]] std::string socket() const { return folder_.file("s"); }

    [[nodiscard]] Outcome run(const std::string& line, bool inTerminal = false) const {
        ProgramRun run{splitWords(line), site(), {}, inTerminal};
        run.arguments.insert(run.arguments.end(), {"--no-launch", "--socket", socket()});
        return runProgram(run);
    }

    /// Returns the text on a terminal, with the site's path as "SITE" and the exit status in
    /// brackets at the end.
    [[nodiscard]] std::string seen(const std::string& line) const {
        const Outcome outcome = run(line, true);
        const std::string text = replaceAll(outcome.standardOutput, "\r", "");
        return replaceAll(text, site(), "SITE") + "[" + std::to_string(outcome.status) + "]";
    }

    /// Returns the "result" of the JSON reply.
    nlohmann::json read(const std::string& line) const {
        const Outcome outcome = run(line);
        EXPECT_EQ(outcome.status, 0) << line << outcome;
        return nlohmann::json::parse(outcome.standardOutput)["result"];
    }

    TemporaryFolder folder_;
    StandIn standIn_{socket()};
};

TEST_F(EndToEnd, WalksThroughAProjectsWholeLife) {
    EXPECT_EQ(seen("build"), "There is no project at SITE.\n[5]");
    EXPECT_EQ(seen("add /"), "The whole disk can't be a project.\n[5]");
    EXPECT_EQ(seen("add"), "Done.\n[0]");
    EXPECT_EQ(seen("rename --name 'My site'"), "Done.\n[0]");
    EXPECT_EQ(seen("groups add Blog"), "Done.\n[0]");
    EXPECT_EQ(seen("move --group Blog"), "Done.\n[0]");
    EXPECT_EQ(seen("groups remove Nowhere").substr(0, 9), "There is ");
    EXPECT_EQ(seen("projects"), "My site\n  SITE\n[0]");

    EXPECT_EQ(seen("build"), "Compiled 2 files. 1 error, 0 warnings.\n"
                             "\n"
                             "ERROR  Syntax error in src/main.js\n"
                             "The brackets don't balance.\n"
                             "  SITE/src/main.js:1:18  This \"{\" is never closed.\n[1]");
    folder_.write("site/src/main.js", "function greet() {}\n");
    EXPECT_EQ(seen("process src/main.js"), "Compiled 1 file. 0 errors, 0 warnings.\n[0]");
    EXPECT_TRUE(folder_.contains("site/build/app.css"));
    EXPECT_EQ(seen("log --errors-only"), "2  ERROR  Syntax error in src/main.js\n[0]");

    EXPECT_EQ(seen("settings set imageQuality=0.25"), "Project-wide:\n  imageQuality = 0.25\n[0]");

    EXPECT_EQ(seen("files skip vendor"), "Done.\n[0]");
    EXPECT_EQ(seen("files set src/print.scss --action ignore").substr(0, 37),
              "src/print.scss  [IGNORE, action chose");
    for (const char* const outside :
         {"--output-folder .", "--output-folder build --output-name .."}) {
        EXPECT_EQ(run(std::string("files set src/print.scss ") + outside).status, 5);
    }
    for (const char* const name : {R"(\u0000x)", R"(a\n)", "a/b", "..", ""}) {
        const std::string values = R"('{"buildFolderName":")" + std::string(name) + R"("}')";
        EXPECT_EQ(run("settings set --values " + values).status, 5) << name;
    }
    folder_.write("site/src/_ink.scss", "$ink: {\n");
    EXPECT_EQ(seen("process src/_ink.scss"), "Compiled 0 files. 1 error, 0 warnings.\n"
                                             "\n"
                                             "ERROR  Syntax error in src/app.scss\n"
                                             "The brackets don't balance.\n"
                                             "  SITE/src/_ink.scss:1:7  This \"{\" is never "
                                             "closed.\n[1]");

    // A folder with the name of the output file makes the job fail.
    std::filesystem::create_directories(site() + "/build/logo.svg");
    folder_.write("site/src/logo.svg", "<svg/>");
    EXPECT_EQ(run("process src/logo.svg").status, 1);
    EXPECT_NE(seen("wait --project . --since 0").find("ERROR  Work stopped"), std::string::npos);

    EXPECT_EQ(read("packages install lint --save-to development,optional")["command"],
              "npm install lint --save-dev --save-optional");

    EXPECT_EQ(seen("disable"), "Done.\n[0]");
    EXPECT_EQ(seen("projects"), "My site  [OFF]\n  SITE\n[0]");
    EXPECT_EQ(seen("remove ."), "Done.\n[0]");
    EXPECT_EQ(seen("projects"), "No projects.\n[0]");
}

/// A build neither copies nor changes a file outside the project, whatever links the project
/// contains.
TEST_F(EndToEnd, BuildFollowsNoLinkOutOfTheProject) {
    folder_.write("outside/x.css", "precious");
    folder_.write("site/src/sub/x.css", "");
    folder_.write("site/src/main.js", "");
    read("add");
    const struct {
        const char* link;
        std::string target;
        int status;
    } cases[] = {{"site/src/x.css", "../../outside/x.css", 1},
                 {"site/build", folder_.file("outside"), 1},
                 {"site/build/sub", folder_.file("outside"), 1},
                 {"site/build/sub", "..", 1},
                 {"site/build/app.css", folder_.file("outside/x.css"), 0}};
    for (const auto& [link, target, status] : cases) {
        std::filesystem::remove_all(folder_.file(link));
        std::filesystem::create_directories(
            std::filesystem::path(folder_.file(link)).parent_path());
        std::filesystem::create_symlink(target, folder_.file(link));
        EXPECT_EQ(run("build").status, status) << link;
        EXPECT_EQ(folder_.contents("outside/x.css"), "precious") << link;
        EXPECT_FALSE(folder_.contains("outside/app.css")) << link;
        std::filesystem::remove(folder_.file(link));
        EXPECT_EQ(folder_.contents("site/build/x.css"), "") << link;
    }
}

TEST_F(EndToEnd, StandInRefusesDeepNesting) {
    for (const auto& [depth, status] :
         {std::pair(std::size_t{1022}, 422), {1023, 400}, {100'000, 400}}) {
        const std::string body = R"({"literals":{},"values":{"browserTargets":)" +
                                 std::string(depth, '[') + std::string(depth, ']') + "}}";
        const AgentRequest request{"POST", "/v1/defaults/set", body};
        EXPECT_EQ(AgentSocketClient({}).exchange(socket(), false, request).statusCode, status);
    }
}

/// Without the lock, two stand-ins that start together could both replace the same stale socket.
TEST_F(EndToEnd, StandInStartsOnlyWithTheLock) {
    std::filesystem::remove(socket());
    ProgramRun second{{"--socket", socket()}, "/", [] { ::alarm(5); }};
    second.program = FERNLOW_STAND_IN;
    EXPECT_EQ(runProgram(second).status, 1);
}

/// The tests of the pages and the tests above run the other commands.
TEST_F(EndToEnd, RunsTheCommandsThatNoPageShows) {
    folder_.write("site/src/main.js", "function greet() {}\n");
    folder_.write("site/src/logo.png", "");
    std::istringstream lines(R"(
        add .; enable .; watch resume; refresh; optimize src/logo.png; check src/main.js; schema;
        groups; settings apply-output-paths --language Sass; defaults; defaults set imageQuality=1;
        defaults schema; files settings src/app.scss; files schema src/app.scss;
        collections schema)");
    for (std::string line; std::getline(lines >> std::ws, line, ';');) {
        const Outcome outcome = run(line);
        EXPECT_EQ(outcome.status, 0) << line << outcome;
    }
}

} // namespace
} // namespace fernlow::test

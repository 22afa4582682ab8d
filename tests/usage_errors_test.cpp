#include "cli/help_text.h"
#include "support/command_line.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace fernlow::test {

namespace {

struct Case {
    std::string_view line;
    std::string expected;
};

/// Expects the message of each line. Most lines have several mistakes; the first one checked is
/// reported.
void expectMessages(std::initializer_list<Case> cases) {
    for (const auto& [line, expected] : cases) {
        EXPECT_EQ(outcome(line), expected) << line;
    }
}

std::string noSuchCommand(const std::string& command) {
    return "There is no \"" + command + "\" command. Run \"fernlow --help\" to see what there is.";
}

std::string notAnOption(const std::string& word) {
    return "\"" + word + "\" is not an option here. Run \"fernlow --help\" to see what there is.";
}

std::string notANumber(const std::string& option, const std::string& value) {
    return "\"" + option + "\" needs a number, and \"" + value + "\" is not one.";
}

} // namespace

TEST(UsageErrors, Dispatch) {
    expectMessages({
        {"Status", noSuchCommand("Status")},
        {"''", noSuchCommand("")},
        {"help --socket", R"("--socket" needs a value after it.)"},
        {R"('-x "y"')", noSuchCommand(R"(-x "y")")},
        {"status y -x", R"("y" was not expected here.)"},
        {"projects -x y", notAnOption("-x")},
        {"schema ''", R"("" was not expected here.)"},
        {"remove", R"("remove" needs a path.)"},
        {"enable a --x --y", notAnOption("--x")},
    });
}

TEST(UsageErrors, Work) {
    expectMessages({
        {"process", R"("process" needs a path.)"},
        {"process --x --timeout y --settle 2.5", notANumber("--settle", "2.5")},
        {"process --settle --timeout 5", notANumber("--settle", "--timeout")},
        {"process a --settle", notAnOption("--settle")},
        {"process --exactly --exactly a", notAnOption("--exactly")},
        {"wait x --timeout y --settle z --since -1", notANumber("--since", "-1")},
        {"wait x --timeout y --settle z", notANumber("--settle", "z")},
        {"wait --project --since 5", R"("5" was not expected here.)"},
        {"wait --since 1 --since 2", notAnOption("--since")},
        {"log x --limit ten --since -1", notANumber("--since", "-1")},
        {"log --project --json", notAnOption("--project")},
        {"refresh --all --x", notAnOption("--x")},
        {"check --no-wait", R"("check" needs a path.)"},
    });
}

TEST(UsageErrors, Numbers) {
    for (const std::string word :
         {"''", "' 5'", "'5 '", "5s", "+-5", "0x10", "1e", "1,5", ".", "nan(1)"}) {
        EXPECT_EQ(outcome("build --timeout " + word),
                  notANumber("--timeout", splitWords(word).front()));
    }
    for (const std::string word : {"''", "' 5'", "5x", "+", "+-5", "1.0", "9223372036854775808"}) {
        EXPECT_EQ(outcome("log --limit " + word), notANumber("--limit", splitWords(word).front()));
    }
}

TEST(UsageErrors, ProjectsAndGroups) {
    expectMessages({
        {"watch -x", R"("watch" needs a value after it.)"},
        {"watch stop extra", R"("extra" was not expected here.)"},
        {"watch Pause", noSuchCommand("watch Pause")},
        {"groups --name", notAnOption("--name")},
        {"groups add '' Blog", R"("a group name for "groups add"" needs a value after it.)"},
        {"groups remove", R"("a group name for "groups remove"" needs a value after it.)"},
        {"groups rename", R"("a group name for "groups rename"" needs a value after it.)"},
        {"groups rename Old", R"("a new name for "Old"" needs a value after it.)"},
        {"groups rename Old '' New", R"("a new name for "Old"" needs a value after it.)"},
        {"groups delete Blog", noSuchCommand("groups delete")},
        {"rename --x --name", R"("--name" needs a value after it.)"},
    });
}

TEST(UsageErrors, PackagesAndPreview) {
    expectMessages({
        {"packages x --save-to y --install 'bundle, z '", notANumber("--install", " z ")},
        {"packages x --timeout y --save-to production,,z", notANumber("--save-to", "")},
        {"packages install --save-to 'bundle\n'", notANumber("--save-to", "bundle\n")},
        {"packages x --timeout y", notANumber("--timeout", "y")},
        {"packages prune --global", notAnOption("--global")},
        {"packages --global", R"("packages" needs a value after it.)"},
        {"packages Install --global", noSuchCommand("packages Install")},
        {"preview x --address y", R"("x" was not expected here.)"},
        {"preview --address LAN", notANumber("--address", "LAN")},
    });
}

TEST(UsageErrors, SettingsAndDefaults) {
    expectMessages({
        {"settings frobnicate --x", noSuchCommand("settings frobnicate")},
        {"settings ./x set a=b", noSuchCommand("settings ./x")},
        {"settings sourceFolderName=src/x", noSuchCommand("settings sourceFolderName=src/x")},
        {"settings ./x a=b/c", noSuchCommand("settings ./x")},
        {"settings --path /x", noSuchCommand("settings /x")},
        {"settings ./x --path", notAnOption("--path")},
        {"settings set word --path", notAnOption("--path")},
        {"settings set =x word --values [", R"("=x" was not expected here.)"},
        {"settings set a=b --values [", notANumber("--values", "[")},
        {"settings set --values {}", R"("settings set" needs a value after it.)"},
        {"settings apply-output-paths --x", R"("--language" needs a value after it.)"},
        {"settings apply-output-paths --language a --x", notAnOption("--x")},
        {"defaults --extension x", noSuchCommand("defaults x")},
        {"defaults ./x", noSuchCommand("defaults ./x")},
        {"defaults schema x", R"("x" was not expected here.)"},
        {"defaults set word --values [", R"("word" was not expected here.)"},
        {"defaults set", R"("defaults set" needs a value after it.)"},
    });
}

TEST(UsageErrors, TypedValues) {
    for (const std::string text : {"", "[]", "null", "{}x", R"({"a":{}})", R"({"a":[1]})",
                                   R"({"a":["b",null]})", R"({"a":1,})", "{\"a\":\"\xff\"}"}) {
        EXPECT_EQ(outcome("defaults set k=v --values '" + text + "'"),
                  notANumber("--values", text));
    }
}

TEST(UsageErrors, Files) {
    expectMessages({
        {"files x --timeout y --offset z --limit w", notANumber("--limit", "w")},
        {"files x --timeout y --offset z", notANumber("--offset", "z")},
        {"files x --timeout y", notANumber("--timeout", "y")},
        {"files x --y", noSuchCommand("files x")},
        {"files ./x skip", noSuchCommand("files ./x")},
        {"files --folders --folders --action x", notAnOption("--folders")},
        {"files --action Copy", notANumber("--action", "Copy")},
        {"files skip a --timeout nan",
         R"("--timeout" must be a finite number to be sent to Fernlow.)"},
        {"files settings", R"("files settings" needs a path.)"},
        {"files skip", R"("files skip" needs a path.)"},
        {"files unskip", R"("files unskip" needs a path.)"},
        {"files schema", R"("files schema" needs a value after it.)"},
        {"files set --x", notAnOption("--x")},
        {"files set =x --values [", R"("files set" needs a path.)"},
        {"files set a b =x c --values [", R"("b" was not expected here.)"},
        {"files set a =x --values [", R"("=x" was not expected here.)"},
        {"files set a --values [ --action x", notANumber("--values", "[")},
        {"files set a --values {} --output-name x", R"("files set" needs a value after it.)"},
        {"files set a --action x", notANumber("--action", "x")},
    });
}

TEST(UsageErrors, Collections) {
    expectMessages({
        {"collections x --position y", notANumber("--position", "y")},
        {"collections ''", noSuchCommand("collections ")},
        {"collections x --y", noSuchCommand("collections x")},
        {"collections ./x y", noSuchCommand("collections ./x")},
        {"collections --kind x --y", notAnOption("--y")},
        {"collections --kind Hooks", notANumber("--kind", "Hooks")},
        {"collections add --type x --values [", R"("--kind" needs a value after it.)"},
        {"collections add --kind x --type y", notANumber("--kind", "x")},
        {"collections add --kind hooks --values [ --type y", notANumber("--type", "y")},
        {"collections remove --kind", notAnOption("--kind")},
        {"collections remove", R"("--kind" needs a value after it.)"},
        {"collections remove --kind hooks --id ''", R"("--id" needs a value after it.)"},
        {"collections move --x", R"("--position" needs a value after it.)"},
        {"collections move --position 1 --x", notAnOption("--x")},
        {"collections move --position 1", R"("--kind" needs a value after it.)"},
        {"collections move --position 1 --kind hooks", R"("--id" needs a value after it.)"},
        {"collections set ./x --values [", R"("./x" was not expected here.)"},
        {"collections set --values [", notANumber("--values", "[")},
        {"collections set --values {}", R"("collections set" needs a value after it.)"},
        {"collections set a=b", R"("--kind" needs a value after it.)"},
        {"collections set a=b --kind hooks", R"("--id" needs a value after it.)"},
        {"collections schema x --kind y", R"("x" was not expected here.)"},
        {"collections schema --kind y", notANumber("--kind", "y")},
    });
}

TEST(HelpText, HasFixedBytes) {
    // The FNV-1a hash.
    std::uint64_t checksum = 14695981039346656037U;
    for (const char byte : usageText()) {
        checksum = (checksum ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    }
    EXPECT_EQ(checksum, 9291918309641565104U)
        << "Copy the new number into this test if the change is intended.";
}

} // namespace fernlow::test

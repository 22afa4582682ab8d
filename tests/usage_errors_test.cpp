#include "cli/help_text.h"
#include "support/command_line.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace fernlow::test {

namespace {

std::string noSuchCommand(const std::string& command) {
    return "There is no \"" + command + "\" command. Run \"fernlow --help\" to see what there is.";
}

std::string notAnOption(const std::string& word) {
    return "\"" + word + "\" is not an option here. Run \"fernlow --help\" to see what there is.";
}

std::string notANumber(const std::string& option, const std::string& value) {
    return "\"" + option + "\" needs a number, and \"" + value + "\" is not one.";
}

/// A command line and its message. Most lines have several mistakes; the first one checked is
/// reported.
const struct {
    std::string_view line;
    std::string expected;
} cases[] = {
    {"Status", noSuchCommand("Status")},
    {"''", noSuchCommand("")},
    {"help --socket", R"("--socket" needs a value after it.)"},
    {R"('-x "y"')", noSuchCommand(R"(-x "y")")},
    {"status y -x", R"("y" was not expected here.)"},
    {"projects -x y", notAnOption("-x")},
    {"schema ''", R"("" was not expected here.)"},
    {"remove", R"("remove" needs a path.)"},
    {"enable a --x --y", notAnOption("--x")},

    {"process --x --timeout y --settle 2.5", notANumber("--settle", "2.5")},
    {"process --settle --timeout 5", notANumber("--settle", "--timeout")},
    {"process a --settle", notAnOption("--settle")},
    {"process --exactly --exactly a", notAnOption("--exactly")},
    {"wait x --timeout y --settle z --since -1", notANumber("--since", "-1")},
    {"wait x --timeout y --settle z", notANumber("--settle", "z")},
    {"wait --since 1 --since 2", notAnOption("--since")},
    {"log x --limit ten --since -1", notANumber("--since", "-1")},
    {"log --project --json", notAnOption("--project")},
    {"refresh --all --x", notAnOption("--x")},

    {"watch -x", R"("watch" needs a value after it.)"},
    {"watch stop extra", R"("extra" was not expected here.)"},
    {"watch Pause", noSuchCommand("watch Pause")},
    {"groups --name", notAnOption("--name")},
    {"groups add '' Blog", R"("a group name for "groups add"" needs a value after it.)"},
    {"groups rename Old", R"("a new name for "Old"" needs a value after it.)"},
    {"groups rename Old '' New", R"("a new name for "Old"" needs a value after it.)"},
    {"rename --x --name", R"("--name" needs a value after it.)"},

    {"packages x --save-to y --install 'bundle, z '", notANumber("--install", " z ")},
    {"packages x --timeout y --save-to production,,z", notANumber("--save-to", "")},
    {"packages install --save-to 'bundle\n'", notANumber("--save-to", "bundle\n")},
    {"packages x --timeout y", notANumber("--timeout", "y")},
    {"packages Install --global", noSuchCommand("packages Install")},
    {"preview x --address y", R"("x" was not expected here.)"},

    {"settings frobnicate --x", noSuchCommand("settings frobnicate")},
    {"settings ./x set a=b", noSuchCommand("settings ./x")},
    {"settings sourceFolderName=src/x", noSuchCommand("settings sourceFolderName=src/x")},
    {"settings ./x a=b/c", noSuchCommand("settings ./x")},
    {"settings --path /x", noSuchCommand("settings /x")},
    {"settings ./x --path", notAnOption("--path")},
    {"settings set =x word --values [", R"("=x" was not expected here.)"},
    {"settings set --values {}", R"("settings set" needs a value after it.)"},
    {"settings apply-output-paths --x", R"("--language" needs a value after it.)"},
    {"defaults --extension x", noSuchCommand("defaults x")},
    {"defaults ./x", noSuchCommand("defaults ./x")},
    {"defaults schema x", R"("x" was not expected here.)"},

    {"files x --timeout y --offset z --limit w", notANumber("--limit", "w")},
    {"files x --timeout y --offset z", notANumber("--offset", "z")},
    {"files x --timeout y", notANumber("--timeout", "y")},
    {"files --folders --folders --action x", notAnOption("--folders")},
    {"files --action Copy", notANumber("--action", "Copy")},
    {"files skip a --timeout nan", R"("--timeout" must be a finite number to be sent to Fernlow.)"},
    {"files skip", R"("files skip" needs a path.)"},
    {"files schema", R"("files schema" needs a value after it.)"},
    {"files set --x", notAnOption("--x")},
    {"files set =x --values [", R"("files set" needs a path.)"},
    {"files set a b =x c --values [", R"("b" was not expected here.)"},
    {"files set a =x --values [", R"("=x" was not expected here.)"},
    {"files set a --values [ --action x", notANumber("--values", "[")},
    {"files set a --values {} --output-name x", R"("files set" needs a value after it.)"},

    {"collections x --position y", notANumber("--position", "y")},
    {"collections ''", noSuchCommand("collections ")},
    {"collections --kind x --y", notAnOption("--y")},
    {"collections add --type x --values [", R"("--kind" needs a value after it.)"},
    {"collections add --kind x --type y", notANumber("--kind", "x")},
    {"collections add --kind hooks --values [ --type y", notANumber("--type", "y")},
    {"collections remove", R"("--kind" needs a value after it.)"},
    {"collections remove --kind hooks --id ''", R"("--id" needs a value after it.)"},
    {"collections move --x", R"("--position" needs a value after it.)"},
    {"collections move --position 1 --x", notAnOption("--x")},
    {"collections move --position 1", R"("--kind" needs a value after it.)"},
    {"collections set ./x --values [", R"("./x" was not expected here.)"},
    {"collections set --values {}", R"("collections set" needs a value after it.)"},
    {"collections set a=b", R"("--kind" needs a value after it.)"},
    {"collections schema x --kind y", R"("x" was not expected here.)"},
    {"collections schema --kind y", notANumber("--kind", "y")},
};

} // namespace

TEST(UsageErrors, NameTheFirstMistake) {
    for (const auto& [line, expected] : cases) {
        EXPECT_EQ(outcome(line), expected) << line;
    }
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

TEST(UsageErrors, TypedValues) {
    for (const std::string text : {"", "[]", "null", "{}x", R"({"a":{}})", R"({"a":[1]})",
                                   R"({"a":["b",null]})", R"({"a":1,})", "{\"a\":\"\xff\"}"}) {
        EXPECT_EQ(outcome("defaults set k=v --values '" + text + "'"),
                  notANumber("--values", text));
    }
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

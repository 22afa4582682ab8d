#include "cli/help_text.h"
#include "cli/invocation.h"
#include "cli/words.h"
#include "support/command_line.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <span>
#include <string>
#include <string_view>

namespace fernlow::test {
namespace {

/// A command line typed in /p/src, and what it asks for.
struct Case {
    std::string_view line;
    std::string_view expected;
};

constexpr Case dispatchLines[] = {
    {"status", "GET /v1/status"},
    {"projects", "GET /v1/projects"},
    {"schema", "GET /v1/schema"},
    {"--help", "help"},
    {"help build --nonsense", "help"},
    {"--version", "version"},
    {"version extra", "version"},
    {"remove a b", R"(POST /v1/projects/remove {"path":"/p/src/a"})"},
    {"enable", R"(POST /v1/projects/enabled {"path":"/p/src","enabled":true})"},
    {"enable ../site b", R"(POST /v1/projects/enabled {"path":"/p/site","enabled":true})"},
    {"disable", R"(POST /v1/projects/enabled {"path":"/p/src","enabled":false})"},
};

constexpr Case workLines[] = {
    {"process a.scss ../b.less",
     R"(POST /v1/process {"paths":["/p/src/a.scss","/p/b.less"],"mode":"asIfSaved",)"
     R"("wait":true,"settleMilliseconds":400,"timeoutSeconds":600})"},
    {"process -x.scss --timeout 90000 --settle 70000 --no-wait --exactly",
     R"(POST /v1/process {"paths":["/p/src/-x.scss"],"mode":"exactly",)"
     R"("wait":false,"settleMilliseconds":60000,"timeoutSeconds":86400})"},
    {"wait", R"(POST /v1/wait {"settleMilliseconds":400,"timeoutSeconds":600})"},
    {"wait --project ../site --since 9223372036854775807 --settle 25 --timeout 90000",
     R"(POST /v1/wait {"projectPath":"/p/site","since":9223372036854775807,)"
     R"("settleMilliseconds":25,"timeoutSeconds":86400})"},
    {"log", R"(POST /v1/log {"since":0,"limit":500})"},
    {"log --errors-only --project ../site --limit 20 --since +7",
     R"(POST /v1/log {"since":7,"limit":20,"projectPath":"../site",)"
     R"("minimumSeverity":"error"})"},
    {"build", R"(POST /v1/build {"path":"/p/src","wait":true,"timeoutSeconds":600})"},
    {"build a b --no-wait --clean",
     R"(POST /v1/build {"path":"/p/src/a","clean":true,"wait":false,"timeoutSeconds":600})"},
    {"refresh", R"(POST /v1/refresh {"path":"/p/src","wait":true,)"
                R"("settleMilliseconds":400,"timeoutSeconds":600})"},
    {"refresh a b --no-wait --timeout 90000",
     R"(POST /v1/refresh {"path":"/p/src/a","wait":false,)"
     R"("settleMilliseconds":400,"timeoutSeconds":86400})"},
    {"refresh a --all", R"(POST /v1/refresh {"wait":true,)"
                        R"("settleMilliseconds":400,"timeoutSeconds":600})"},
    {"optimize a.png /b.png", R"(POST /v1/optimize {"paths":["/p/src/a.png","/b.png"],)"
                              R"("wait":true,"settleMilliseconds":400,"timeoutSeconds":600})"},
    {"check a.js --no-wait --timeout 90000",
     R"(POST /v1/check {"paths":["/p/src/a.js"],)"
     R"("wait":false,"settleMilliseconds":400,"timeoutSeconds":86400})"},
};

constexpr Case projectLines[] = {
    {"add", R"(POST /v1/projects/add {"path":"/p/src","asFramework":false,)"
            R"("timeoutSeconds":600})"},
    {"add a b --framework",
     R"(POST /v1/projects/add {"path":"/p/src/a","asFramework":true,"timeoutSeconds":600})"},
    {"watch pause", R"(POST /v1/watching {"paused":true})"},
    {"watch resume", R"(POST /v1/watching {"paused":false})"},
    {"groups", "GET /v1/groups"},
    {"groups --name Blog", "GET /v1/groups"},
    {"groups add Blog Extra --nonsense", R"(POST /v1/groups/add {"name":"Blog"})"},
    {"groups add --name '' Blog", R"(POST /v1/groups/add {"name":"Blog"})"},
    {"groups -x remove -y Blog", R"(POST /v1/groups/remove {"name":"Blog"})"},
    {"groups rename Old New Extra", R"(POST /v1/groups/rename {"name":"Old","newName":"New"})"},
    {"groups rename --name Old New", R"(POST /v1/groups/rename {"name":"Old","newName":"New"})"},
    {R"(groups add ' "a" \b/ é ')", R"(POST /v1/groups/add {"name":" \"a\" \\b/ é "})"},
    {"move", R"(POST /v1/projects/move {"path":"/p/src"})"},
    {"move a b --group Blog", R"(POST /v1/projects/move {"path":"/p/src/a","group":"Blog"})"},
    {"move --group ''", R"(POST /v1/projects/move {"path":"/p/src","group":""})"},
    {"rename --name --all a b", R"(POST /v1/projects/rename {"path":"/p/src/a","name":"--all"})"},
};

constexpr Case packageLines[] = {
    {"packages forceInstall", R"(POST /v1/packages {"path":"/p/src","action":"forceInstall",)"
                              R"("packages":[],"raiseVersionLimits":false,"wait":true,)"
                              R"("timeoutSeconds":600})"},
    {"packages --no-wait -g update less@4 -D --path ../site --timeout 90000 --raise-limits "
     "--no-package-lock --package-lock --no-exact --exact --save-to ' production,\tdevelopment' "
     "--install bundle,optional,bundle",
     R"(POST /v1/packages {"path":"/p/site","action":"update","packages":["-g","less@4","-D"],)"
     R"("install":["bundle","optional","bundle"],"saveTo":["production","development"],)"
     R"("exactVersions":true,"updatePackageLock":true,"raiseVersionLimits":true,"wait":false,)"
     R"("timeoutSeconds":86400})"},
    {"packages uninstall --no-package-lock --no-exact --save-to '' --install ''",
     R"(POST /v1/packages {"path":"/p/src","action":"uninstall","packages":[],)"
     R"("install":[],"saveTo":[],"exactVersions":false,"updatePackageLock":false,)"
     R"("raiseVersionLimits":false,"wait":true,"timeoutSeconds":600})"},
    {"preview", R"(POST /v1/preview {"address":"preferred"})"},
    {"preview --page ../a.html --browser com.example.B --address bonjour",
     R"(POST /v1/preview {"address":"bonjour","browserBundleID":"com.example.B",)"
     R"("relativePath":"../a.html"})"},
    {"preview --address lan", R"(POST /v1/preview {"address":"lan"})"},
    {"preview --address loopback", R"(POST /v1/preview {"address":"loopback"})"},
    {"preview --address localhost", R"(POST /v1/preview {"address":"localhost"})"},
};

constexpr Case settingsLines[] = {
    {"settings", R"(POST /v1/settings {"path":"/p/src"})"},
    {"settings ./a ../b", R"(POST /v1/settings {"path":"/p/src/a"})"},
    {"settings ./a=b/c /d=e ~/f=g", R"(POST /v1/settings {"path":"/p/src/a=b/c"})"},
    {"settings --language sass a/b --values [ --extension x",
     R"(POST /v1/settings {"path":"/p/src/a/b"})"},
    {"settings set z=1 --path ../site a=b --extension x 'a= c=d' --language sass -k=",
     R"(POST /v1/settings/set {"path":"/p/site","language":"sass","fileExtension":"x",)"
     R"("values":{},"literals":{"-k":"","a":" c=d","z":"1"}})"},
    {R"(settings set --values '{"t":"true","n":null,"l":["y","x"],"i":1e2,"e":[],"d":1.5,)"
     R"("b":true,"a":-3.0,"m":9223372036854775807}')",
     R"(POST /v1/settings/set {"path":"/p/src","values":{"a":-3,"b":true,"d":1.5,"e":[],"i":100,)"
     R"("l":["y","x"],"m":9223372036854775807,"n":null,"t":"true"},"literals":{}})"},
    {"settings schema ./a b --language sass --extension x --values [",
     R"(POST /v1/settings/schema {"path":"/p/src/a","language":"sass"})"},
    {"settings apply-output-paths --language less",
     R"(POST /v1/settings/apply-output-paths {"path":"/p/src","language":"less",)"
     R"("timeoutSeconds":600})"},
    {"settings --extension x apply-output-paths a b --values [ --language ''",
     R"(POST /v1/settings/apply-output-paths {"path":"/p/src/a","language":"",)"
     R"("fileExtension":"x","timeoutSeconds":600})"},
    {"defaults --language sass --values [", "GET /v1/defaults"},
    {"defaults set a=b", R"(POST /v1/defaults/set {"values":{},"literals":{"a":"b"}})"},
    {R"(defaults --values '{"a":null}' set --language sass)",
     R"(POST /v1/defaults/set {"language":"sass","values":{"a":null},"literals":{}})"},
    {"defaults schema", "POST /v1/defaults/schema {}"},
    {"defaults schema --language sass --values [",
     R"(POST /v1/defaults/schema {"language":"sass"})"},
};

constexpr Case fileLines[] = {
    {"files", R"(POST /v1/files {"path":"/p/src","includeFolders":false,)"
              R"("includeShadowItems":false,"limit":500,"offset":0})"},
    {"files ../a ./b --shadow-items --folders --offset 20 --limit 10 --action copy "
     "--language sass --values [ --timeout nan",
     R"(POST /v1/files {"path":"/p/a","language":"sass","outputAction":"copy",)"
     R"("includeFolders":true,"includeShadowItems":true,"limit":10,"offset":20})"},
    {"files --action compile --offset -5 --limit 100000",
     R"(POST /v1/files {"path":"/p/src","outputAction":"compile","includeFolders":false,)"
     R"("includeShadowItems":false,"limit":5000,"offset":0})"},
    {"files settings a b", R"(POST /v1/files/settings {"path":"/p/src/a"})"},
    {"files set a --action ignore",
     R"(POST /v1/files/set {"path":"/p/src/a","outputAction":"ignore","values":{},)"
     R"("literals":{}})"},
    {R"(files set a z=1 b=2 --output-name ../n --output-folder ../out b= --values '{"k":0.25}')",
     R"(POST /v1/files/set {"path":"/p/src/a","outputFolder":"/p/out","outputFilename":"../n",)"
     R"("values":{"k":0.25},"literals":{"b":"","z":"1"}})"},
    {"files schema a b", R"(POST /v1/files/schema {"path":"/p/src/a"})"},
    {"files schema a --language sass",
     R"(POST /v1/files/schema {"path":"/p/src/a","language":"sass"})"},
    {"files schema --language sass", R"(POST /v1/files/schema {"language":"sass"})"},
    {"files skip a ../b /c --action nonsense --values [",
     R"(POST /v1/files/skip {"paths":["/p/src/a","/p/b","/c"],"skipped":true,"wait":true,)"
     R"("timeoutSeconds":600})"},
    {"files unskip a --no-wait --timeout -2.5",
     R"(POST /v1/files/skip {"paths":["/p/src/a"],"skipped":false,"wait":false,)"
     R"("timeoutSeconds":-2.5})"},
};

constexpr Case collectionLines[] = {
    {"collections", R"(POST /v1/collections {"path":"/p/src"})"},
    {"collections --kind hooks ./a ~/b --id '' --type x --values [",
     R"(POST /v1/collections {"path":"/p/src/a","kind":"hooks"})"},
    {R"(collections add k=v b --kind hooks --type runScript --extension .x --values '{"n":1}')",
     R"(POST /v1/collections/add {"path":"/p/src/k=v","kind":"hooks",)"
     R"("buildStepType":"runScript","fileExtension":".x","values":{"n":1},"literals":{}})"},
    {"collections add --kind buildSteps --type processRemainingItems",
     R"(POST /v1/collections/add {"path":"/p/src","kind":"buildSteps",)"
     R"("buildStepType":"processRemainingItems","values":{},"literals":{}})"},
    {"collections add --kind userLanguages",
     R"(POST /v1/collections/add {"path":"/p/src","kind":"userLanguages","values":{},)"
     R"("literals":{}})"},
    {"collections remove a b --kind hooks --id 7 --type x --values [",
     R"(POST /v1/collections/remove {"path":"/p/src/a","kind":"hooks","id":"7"})"},
    {"collections move --position -3 --kind hooks --id 7",
     R"(POST /v1/collections/reorder {"path":"/p/src","kind":"hooks","id":"7","position":0})"},
    {"collections move ../a --position 4 --kind buildSteps --id 7",
     R"(POST /v1/collections/reorder {"path":"/p/a","kind":"buildSteps","id":"7",)"
     R"("position":4})"},
    {R"(collections set z=1 b=2 --kind hooks --id 7 --values '{"n":[]}')",
     R"(POST /v1/collections/set {"path":"/p/src","kind":"hooks","id":"7","values":{"n":[]},)"
     R"("literals":{"b":"2","z":"1"}})"},
    {"collections schema", "POST /v1/collections/schema {}"},
    {"collections schema --kind webpPresets --id ''",
     R"(POST /v1/collections/schema {"kind":"webpPresets"})"},
};

constexpr Case numberLines[] = {
    {"wait --timeout 2.250", R"(POST /v1/wait {"settleMilliseconds":400,"timeoutSeconds":2.25})"},
    {"wait --timeout +5", R"(POST /v1/wait {"settleMilliseconds":400,"timeoutSeconds":5})"},
    {"wait --timeout 86401", R"(POST /v1/wait {"settleMilliseconds":400,"timeoutSeconds":86400})"},
    {"wait --timeout -5", R"(POST /v1/wait {"settleMilliseconds":400,"timeoutSeconds":0})"},
    {"wait --timeout inf", R"(POST /v1/wait {"settleMilliseconds":400,"timeoutSeconds":86400})"},
    {"wait --timeout nan", R"(POST /v1/wait {"settleMilliseconds":400,"timeoutSeconds":0})"},
    {"wait --timeout 1e999", R"(POST /v1/wait {"settleMilliseconds":400,"timeoutSeconds":86400})"},
    {"wait --timeout 1e-999", R"(POST /v1/wait {"settleMilliseconds":400,"timeoutSeconds":0})"},
    {"wait --settle -1", R"(POST /v1/wait {"settleMilliseconds":0,"timeoutSeconds":600})"},
    {"wait --settle 007", R"(POST /v1/wait {"settleMilliseconds":7,"timeoutSeconds":600})"},
    {"log --limit 0", R"(POST /v1/log {"since":0,"limit":1})"},
    {"log --limit 6000", R"(POST /v1/log {"since":0,"limit":5000})"},
    {"files --limit 0", R"(POST /v1/files {"path":"/p/src","includeFolders":false,)"
                        R"("includeShadowItems":false,"limit":1,"offset":0})"},
};

constexpr Case pathLines[] = {
    {"remove ./a//b/./c/", R"(POST /v1/projects/remove {"path":"/p/src/a/b/c"})"},
    {"remove ../..", R"(POST /v1/projects/remove {"path":"/"})"},
    {"remove a/../../../../x", R"(POST /v1/projects/remove {"path":"/x"})"},
    {"remove ''", R"(POST /v1/projects/remove {"path":"/p/src"})"},
    {"remove a~/..b", R"(POST /v1/projects/remove {"path":"/p/src/a~/..b"})"},
    {"remove /tmp/../site//", R"(POST /v1/projects/remove {"path":"/tmp/../site//"})"},
    {"remove ~no-such-user/../a", R"(POST /v1/projects/remove {"path":"~no-such-user/../a"})"},
    {"remove '/a\"b\\c\n\r\t\x01\x1F\x7F'",
     "POST /v1/projects/remove {\"path\":\"/a\\\"b\\\\c\\n\\r\\t\\u0001\\u001f\x7F\"}"},
};

constexpr std::span<const Case> families[] = {dispatchLines,   workLines,     projectLines,
                                              packageLines,    settingsLines, fileLines,
                                              collectionLines, numberLines,   pathLines};

/// The home folder of a user in the user database.
std::string homeOf(const passwd* user) {
    return user == nullptr ? "" : user->pw_dir;
}

} // namespace

TEST(CommandLines, BecomeRequests) {
    for (const auto& family : families) {
        for (const auto& [line, expected] : family) {
            EXPECT_EQ(outcome(line), expected) << line;
        }
    }
}

TEST(CommandLines, UseOnlyOptionsThatTheHelpExplains) {
    const std::string help = usageText();
    for (const auto& family : families) {
        for (const auto& [line, expected] : family) {
            for (const std::string& word : splitWords(line)) {
                if (word.starts_with("--") && word != "--version" && word != "--help" &&
                    word != "--nonsense") {
                    EXPECT_NE(help.find(word), std::string::npos) << word << " of " << line;
                }
            }
        }
    }
}

TEST(CommandLines, PathsStartAtFoldersOfTheSystem) {
    const auto removing = [](const std::string& path) {
        return R"(POST /v1/projects/remove {"path":")" + path + R"("})";
    };
    const std::string home = homeOf(getpwuid(getuid()));
    EXPECT_EQ(outcome("remove ~"), removing(home));
    EXPECT_EQ(outcome("remove ~/a/../b"), removing(home + "/a/../b"));
    EXPECT_EQ(outcome("remove ~root/a"), removing(homeOf(getpwnam("root")) + "/a"));
    EXPECT_EQ(outcome("remove x", "/"), removing("/x"));
    EXPECT_EQ(outcome("move", "/p/../q"), R"(POST /v1/projects/move {"path":"/p/../q"})");
    EXPECT_EQ(outcome("settings ~ ~/b"), R"(POST /v1/settings {"path":")" + home + R"("})");
}

TEST(CommandLines, GlobalOptionsMayStandAnywhere) {
    const std::string usual = homeOf(getpwuid(getuid())) +
                              "/Library/Application Support/com.tarnwick.Fernlow3/agent.sock";
    const AgentCLIAction status{AgentCLIAction::get{"/v1/status"}};
    const AgentCLIAction addGroup{AgentCLIAction::post{"/v1/groups/add", R"({"name":"Blog"})"}};
    const struct {
        std::string_view line;
        bool onTerminal;
        AgentCLIInvocation expected;
    } cases[] = {
        {"status", true, {status, false, usual, true}},
        {"status", false, {status, true, usual, true}},
        {"--json status", true, {status, true, usual, true}},
        {"status --no-launch --json --json", true, {status, true, usual, false}},
        {"groups --json add --socket s Blog", true, {addGroup, true, "s", true}},
        {"--socket ~/x.sock status", true, {status, false, "~/x.sock", true}},
        {"status --socket --json", true, {status, false, "--json", true}},
        {"--socket --socket status --socket ''", true, {status, false, "", true}},
    };
    const CurrentDirectory here("/p");
    for (const auto& [line, onTerminal, expected] : cases) {
        EXPECT_EQ(parseInvocation(splitWords(line), here, onTerminal), expected) << line;
    }
}

} // namespace fernlow::test

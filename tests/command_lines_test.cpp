#include "cli/invocation.h"
#include "commands/command_line.h"
#include "commands/command_table.h"
#include "support/command_line.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <regex>
#include <string>
#include <string_view>

namespace fernlow::test {
namespace {

/// A command line typed in /p/src, and its request. A POST is written as the path after "/v1/" and
/// the body, with 'single quotes' and without quotes around the keys.
struct Case {
    std::string_view line;
    std::string_view expected;
};

constexpr Case cases[] = {
    {"status", "GET /v1/status"},
    {"projects", "GET /v1/projects"},
    {"schema", "GET /v1/schema"},
    {"help build -x", "help"},
    {"version extra", "version"},
    {"enable ../site b", "projects/enabled {path:'/p/site',enabled:true}"},
    {"disable", "projects/enabled {path:'/p/src',enabled:false}"},

    {"process a.scss ../b.less",
     "process {paths:['/p/src/a.scss','/p/b.less'],mode:'asIfSaved',wait:true,"
     "settleMilliseconds:400,timeoutSeconds:600}"},
    {"process -x.scss --timeout 90000 --settle 70000 --no-wait --exactly",
     "process {paths:['/p/src/-x.scss'],mode:'exactly',wait:false,settleMilliseconds:60000,"
     "timeoutSeconds:86400}"},
    {"wait", "wait {settleMilliseconds:400,timeoutSeconds:600}"},
    {"wait --project ../site --since 9223372036854775807 --settle 25 --timeout 90000",
     "wait {projectPath:'/p/site',since:9223372036854775807,settleMilliseconds:25,"
     "timeoutSeconds:86400}"},
    {"log", "log {since:0,limit:500}"},
    {"log --errors-only --project ../site --limit 20 --since +7",
     "log {since:7,limit:20,projectPath:'../site',minimumSeverity:'error'}"},
    {"build", "build {path:'/p/src',wait:true,timeoutSeconds:600}"},
    {"build a b --no-wait --clean --timeout 5",
     "build {path:'/p/src/a',clean:true,wait:false,timeoutSeconds:5}"},
    {"refresh a b --no-wait --timeout 90000",
     "refresh {path:'/p/src/a',wait:false,settleMilliseconds:400,timeoutSeconds:86400}"},
    {"refresh a --all", "refresh {wait:true,settleMilliseconds:400,timeoutSeconds:600}"},
    {"optimize a.png /b.png",
     "optimize {paths:['/p/src/a.png','/b.png'],wait:true,settleMilliseconds:400,"
     "timeoutSeconds:600}"},
    {"optimize a.png --no-wait --timeout 5",
     "optimize {paths:['/p/src/a.png'],wait:false,settleMilliseconds:400,timeoutSeconds:5}"},
    {"check a.js --no-wait --timeout 90000",
     "check {paths:['/p/src/a.js'],wait:false,settleMilliseconds:400,timeoutSeconds:86400}"},

    {"add", "projects/add {path:'/p/src',asFramework:false,timeoutSeconds:600}"},
    {"add a b --framework", "projects/add {path:'/p/src/a',asFramework:true,timeoutSeconds:600}"},
    {"watch pause", "watching {paused:true}"},
    {"watch resume", "watching {paused:false}"},
    {"groups", "GET /v1/groups"},
    {"groups --name Blog", "GET /v1/groups"},
    {"groups add Blog Extra -x", "groups/add {name:'Blog'}"},
    {"groups add --name '' Blog", "groups/add {name:'Blog'}"},
    {"groups -x remove -y --name Blog Extra", "groups/remove {name:'Blog'}"},
    {"groups rename Old New Extra", "groups/rename {name:'Old',newName:'New'}"},
    {"groups rename --name Old New", "groups/rename {name:'Old',newName:'New'}"},
    {R"(groups add ' "a" \b/ é ')", R"(groups/add {"name":" \"a\" \\b/ é "})"},
    {"move a b --group Blog", "projects/move {path:'/p/src/a',group:'Blog'}"},
    {"move --group ''", "projects/move {path:'/p/src',group:''}"},
    {"rename --name --all a b", "projects/rename {path:'/p/src/a',name:'--all'}"},

    {"packages forceInstall",
     "packages {path:'/p/src',action:'forceInstall',packages:[],raiseVersionLimits:false,"
     "wait:true,timeoutSeconds:600}"},
    {"packages --no-wait -g update less@4 -D --path ../site --timeout 90000 --raise-limits "
     "--no-package-lock --package-lock --no-exact --exact --save-to ' production,\tdevelopment' "
     "--install bundle,optional,bundle",
     "packages {path:'/p/site',action:'update',packages:['-g','less@4','-D'],install:['bundle',"
     "'optional','bundle'],saveTo:['production','development'],exactVersions:true,"
     "updatePackageLock:true,raiseVersionLimits:true,wait:false,timeoutSeconds:86400}"},
    {"packages uninstall --no-package-lock --no-exact --save-to '' --install ''",
     "packages {path:'/p/src',action:'uninstall',packages:[],install:[],saveTo:[],"
     "exactVersions:false,updatePackageLock:false,raiseVersionLimits:false,wait:true,"
     "timeoutSeconds:600}"},
    {"preview", "preview {address:'preferred'}"},
    {"preview --page ../a.html --browser com.example.B --address bonjour",
     "preview {address:'bonjour',browserBundleID:'com.example.B',relativePath:'../a.html'}"},

    {"settings ./a=b/c /d=e ~/f=g", "settings {path:'/p/src/a=b/c'}"},
    {"settings --language sass a/b --values [ --extension x", "settings {path:'/p/src/a/b'}"},
    {"settings set z=1 --path ../site a=b --extension x 'a= c=d' --language sass -k=",
     "settings/set {path:'/p/site',language:'sass',fileExtension:'x',values:{},literals:{'-k':'',"
     "a:' c=d',z:'1'}}"},
    {R"(settings set --values '{"t":"true","n":null,"l":["y","x"],"i":1e2,"e":[],"d":1.5,)"
     R"("b":true,"a":-3.0,"m":9223372036854775807,"x":1e21,"z":0}')",
     "settings/set {path:'/p/src',values:{a:-3,b:true,d:1.5,e:[],i:100,l:['y','x'],"
     "m:9223372036854775807,n:null,t:'true',x:1000000000000000000000,z:0},literals:{}}"},
    {"settings schema ./a b --language sass --extension x --values [",
     "settings/schema {path:'/p/src/a',language:'sass'}"},
    {"settings apply-output-paths --language less",
     "settings/apply-output-paths {path:'/p/src',language:'less',timeoutSeconds:600}"},
    {"settings --extension x apply-output-paths a b --values [ --language ''",
     "settings/apply-output-paths {path:'/p/src/a',language:'',fileExtension:'x',"
     "timeoutSeconds:600}"},
    {"defaults --language sass --values [", "GET /v1/defaults"},
    {"defaults set a=b", "defaults/set {values:{},literals:{a:'b'}}"},
    {R"(defaults --values '{"a":null}' set --language sass)",
     "defaults/set {language:'sass',values:{a:null},literals:{}}"},
    {"defaults schema --language sass --values [", "defaults/schema {language:'sass'}"},

    {"files",
     "files {path:'/p/src',includeFolders:false,includeShadowItems:false,limit:500,offset:0}"},
    {"files ../a ./b --shadow-items --folders --offset 20 --limit 10 --action copy --language "
     "sass --values [ --timeout nan",
     "files {path:'/p/a',language:'sass',outputAction:'copy',includeFolders:true,"
     "includeShadowItems:true,limit:10,offset:20}"},
    {"files settings a b", "files/settings {path:'/p/src/a'}"},
    {R"(files set a z=1 b=2 --output-name ../n --output-folder ../out b= --values '{"k":0.25}')"
     " --action ignore",
     "files/set {path:'/p/src/a',outputAction:'ignore',outputFolder:'/p/out',"
     "outputFilename:'../n',values:{k:0.25},literals:{b:'',z:'1'}}"},
    {"files schema a b", "files/schema {path:'/p/src/a'}"},
    {"files schema --language sass", "files/schema {language:'sass'}"},
    {"files skip a ../b /c --action nonsense --values [",
     "files/skip {paths:['/p/src/a','/p/b','/c'],skipped:true,wait:true,timeoutSeconds:600}"},
    {"files skip a --no-wait --timeout 90000",
     "files/skip {paths:['/p/src/a'],skipped:true,wait:false,timeoutSeconds:90000}"},
    {"files unskip a --no-wait --timeout -2.5",
     "files/skip {paths:['/p/src/a'],skipped:false,wait:false,timeoutSeconds:-2.5}"},

    {"collections --kind hooks ./a ~/b --id '' --type x --values [",
     "collections {path:'/p/src/a',kind:'hooks'}"},
    {R"(collections add k=v b --kind hooks --type runScript --extension .x --values '{"n":1}')",
     "collections/add {path:'/p/src/k=v',kind:'hooks',buildStepType:'runScript',"
     "fileExtension:'.x',values:{n:1},literals:{}}"},
    {"collections remove a b --kind hooks --id 7 --type x --values [",
     "collections/remove {path:'/p/src/a',kind:'hooks',id:'7'}"},
    {"collections move ../a --position 4 --kind buildSteps --id 7",
     "collections/reorder {path:'/p/a',kind:'buildSteps',id:'7',position:4}"},
    {R"(collections set z=1 b=2 --kind hooks --id 7 --values '{"n":[]}')",
     "collections/set {path:'/p/src',kind:'hooks',id:'7',values:{n:[]},literals:{b:'2',z:'1'}}"},
    {"collections schema --kind webpPresets --id ''", "collections/schema {kind:'webpPresets'}"},

    {"wait --timeout inf", "wait {settleMilliseconds:400,timeoutSeconds:86400}"},
    {"wait --timeout nan", "wait {settleMilliseconds:400,timeoutSeconds:0}"},
    {"wait --timeout 1e999", "wait {settleMilliseconds:400,timeoutSeconds:86400}"},
    {"wait --timeout 1e-999", "wait {settleMilliseconds:400,timeoutSeconds:0}"},
    {"log --limit 0", "log {since:0,limit:1}"},
    {"wait --timeout +2.250 --settle -1", "wait {settleMilliseconds:0,timeoutSeconds:2.25}"},
    {"wait --timeout -5 --settle 007", "wait {settleMilliseconds:7,timeoutSeconds:0}"},

    {"remove ./a//b/./c/ d", "projects/remove {path:'/p/src/a/b/c'}"},
    {"remove ../..", "projects/remove {path:'/'}"},
    {"remove a/../../../../x", "projects/remove {path:'/x'}"},
    {"remove ''", "projects/remove {path:'/p/src'}"},
    {"remove a~/..b", "projects/remove {path:'/p/src/a~/..b'}"},
    {"remove /tmp/../site//", "projects/remove {path:'/tmp/../site//'}"},
    {"remove ~no-such-user/../a", "projects/remove {path:'~no-such-user/../a'}"},
    {"remove '/a\"b\\c\n\r\t\x01\x1F\x7F'",
     "projects/remove {path:'/a\\\"b\\\\c\\n\\r\\t\\u0001\\u001f\x7F'}"},
};

/// Returns the home folder of a user in the user database.
std::string homeOf(const passwd* user) {
    return user == nullptr ? "" : user->pw_dir;
}

/// Returns the outcome that a case expects, in full.
std::string inFull(std::string_view expected) {
    if (expected.find('{') == std::string_view::npos) {
        return std::string(expected);
    }
    std::string text = "POST /v1/" + std::string(expected);
    std::replace(text.begin(), text.end(), '\'', '"');
    return std::regex_replace(text, std::regex(R"(([{,])(\w+):)"), "$1\"$2\":");
}

} // namespace

TEST(CommandLines, BecomeRequests) {
    for (const auto& [line, expected] : cases) {
        EXPECT_EQ(outcome(line), inFull(expected)) << line;
    }
}

TEST(CommandLines, IncludeEveryCommandAndOption) {
    const CurrentDirectory here("/p");
    Words missing;
    for (const Command* const command : allCommands()) {
        missing.insert(command->name());
        for (const Option* const option : command->allOptions()) {
            missing.insert(command->name() + " " + std::string(option->word));
        }
    }
    for (const auto& [text, expected] : cases) {
        CommandLine line(splitWords(text), here);
        line.takeSubcommand();
        const std::string name = line.command().name();
        missing.erase(name);
        for (const Option* const option : line.command().allOptions()) {
            if (line.has(*option)) {
                missing.erase(name + " " + std::string(option->word));
            }
        }
    }
    EXPECT_EQ(missing, Words()) << "Add a case of each to `cases` in tests/command_lines_test.cpp.";
}

TEST(CommandLines, PathsStartAtHomeFoldersAndTheRoot) {
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
    const std::string defaultPath = homeOf(getpwuid(getuid())) +
                                    "/Library/Application Support/com.tarnwick.Fernlow3/agent.sock";
    const AgentCLIAction status{AgentCLIAction::get{"/v1/status"}};
    const AgentCLIAction addGroup{AgentCLIAction::post{"/v1/groups/add", R"({"name":"Blog"})"}};
    const struct {
        std::string_view line;
        bool onTerminal;
        AgentCLIInvocation expected;
    } lines[] = {
        {"status", true, {status, false, defaultPath, true}},
        {"status", false, {status, true, defaultPath, true}},
        {"--json status", true, {status, true, defaultPath, true}},
        {"status --no-launch --json --json", true, {status, true, defaultPath, false}},
        {"groups --json add --socket s Blog", true, {addGroup, true, "s", true}},
        {"--socket ~/x.sock status", true, {status, false, "~/x.sock", true}},
        {"status --socket --json", true, {status, false, "--json", true}},
        {"--socket --socket status --socket ''", true, {status, false, "", true}},
        // The user database, in which the default path is found, may be slow.
        {"help", true, {{AgentCLIAction::help{}}, false, "", true}},
    };
    const CurrentDirectory here("/p");
    const std::string variable = std::getenv("HOME") == nullptr ? "" : std::getenv("HOME");
    ::setenv("HOME", "/elsewhere", 1);
    for (const auto& [line, onTerminal, expected] : lines) {
        EXPECT_EQ(parseInvocation(splitWords(line), here, onTerminal), expected) << line;
    }
    ::setenv("HOME", variable.c_str(), 1);
}

} // namespace fernlow::test

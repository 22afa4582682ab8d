#include "render/reply.h"
#include "support/seeds.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace fernlow::test {
namespace {

constexpr std::string_view idle = "Projects: 0    Frameworks: 0\n"
                                  "Indexing: no    Compiling: no    Watching: on\nLog cursor: 0";
constexpr std::string_view nothingMatched =
    "Nothing matched. If you expected a file here, refresh the project — this is Fernlow's index, "
    "not the disk.";

/// A reply, or several separated by "|", and the output of each. Refusals, which end with exit
/// status 5, are written to standard error.
struct Case {
    std::string_view replies;
    std::string_view text;
    int exitStatus = 0;
};

void expectPresented(const Case& expected, bool wantsJSON, std::int64_t statusCode = 200) {
    keepSeed("presentation", expected.replies);
    const ReplyOutput output = presentReply(statusCode, ByteBuffer(expected.replies), wantsJSON);
    EXPECT_EQ(output.text.view(), expected.text) << expected.replies;
    EXPECT_EQ(output.toStandardError, expected.exitStatus == 5) << expected.replies;
    EXPECT_EQ(output.exitStatus, expected.exitStatus) << expected.replies;
}

/// Splits a text at each "|".
std::vector<std::string> alternatives(std::string_view text) {
    std::vector<std::string> parts(1);
    for (const char character : text) {
        if (character == '|') {
            parts.emplace_back();
        } else {
            parts.back() += character;
        }
    }
    return parts;
}

/// The cases have only the "result" of each reply, whose "ok" is true.
void expectViews(const std::vector<Case>& cases) {
    for (const Case& row : cases) {
        for (const std::string& result : alternatives(row.replies)) {
            const std::string reply = R"({"ok":true,"result":)" + result + "}";
            expectPresented({reply, row.text, row.exitStatus}, false);
        }
    }
}

TEST(ReplyText, DistinguishesSuccessFromRefusal) {
    const Case cases[] = {
        {R"({"ok":true}|{"ok":1}|{"\u006fk":true}|{"ok":true,"error":{"message":"M"}}|
            {"ok":true,"m":1e999,"n":-123456789012345678901234567890})",
         "Done."},
        {"{\"ok\":true,\"\xff\":[[]]}| \r\n\t{ \"ok\" : true } \n", "Done."},
        {R"({}|{"OK":true}|{"ok":false}|{"ok":0}|{"ok":2}|{"ok":1.5}|{"ok":"true"}|{"ok":null}|
            {"ok":[true]}|{"ok":false,"result":{"timedOut":true}}|{"error":{}}|{"error":"M"}|
            {"error":[{"message":"M"}]}|{"error":{"message":5}}|{"error":{"message":null}})",
         "Fernlow refused the request.", 5},
        {R"({"ok":false,"error":{"message":"No such file."}})", "No such file.", 5},
        {R"({"error":{"message":""}})", "", 5},
        {R"({"error":{"message":"\n\"\\\/\u00e9\ud83d\ude00"}})", "\n\"\\/é😀", 5},
        {"{\"error\":{\"message\":\"\xe9 \xf0\x9f\x98 \xe2\x82\"}}", "\uFFFD \uFFFD \uFFFD", 5},
    };
    for (const Case& row : cases) {
        for (const std::string& reply : alternatives(row.replies)) {
            for (const std::int64_t statusCode : {200, 404, 0}) {
                expectPresented({reply, row.text, row.exitStatus}, false, statusCode);
            }
        }
    }
}

TEST(ReplyJSON, IsTheBodyWithTheSameExitStatus) {
    struct {
        std::string_view body;
        int exitStatus = 0;
    } const cases[] = {
        {R"({"ok":1})"},
        {"\t{ \"b\":1,\r\n \"ok\" : true,\"a\":\"\\u00e9\\/\",\"n\":1.50e+1,\"m\":1e999 }\n"},
        {R"({"ok":true,"result":[{"timedOut":true}]})"},
        {R"({"ok":true,"result":{"timedOut":true,"errorCount":3}})", 4},
        {R"({"result":{"problems":[{"a":[{}]}],"errorCount":2},"ok":true})", 1},
        {R"({"n":{"o":{"\u006fk":0}},"o\u006b":1,"ok":0,"\u006f\u006b!":0,"re\u0073ult":
            {"t":[{"timedOut":0}],"timedOut":1},"result":{"timedOut":0}})",
         4},
        {R"({"result":"ok","x":{"ok":true}})", 5},
        {R"({"ok":true,"x":{"result":{"timedOut":true}},"result":{"result":{"timedOut":true}}})"},
        {R"({"ok":false,"error":{"message":"M"}})", 5},
        {R"({"ok":"true","result":{"errorCount":2}})", 5},
        {R"({})", 5},
    };
    for (const auto& [body, exitStatus] : cases) {
        expectPresented({body, body, exitStatus}, true);
        expectPresented({body, body, exitStatus}, true, 500);
    }
    expectPresented({"{\"ok\":true,\"a\":\"caf\xe9\xf0\x9f\x98\",\"b\xc0\xaf\":\"é\"}",
                     "{\"ok\":true,\"a\":\"caf\uFFFD\uFFFD\",\"b\uFFFD\uFFFD\":\"é\"}"},
                    true);
}

TEST(ReplyText, ExitStatusFollowsTheResult) {
    expectViews({
        {R"({"timedOut":true,"errorCount":3}|{"timedOut":1})", "Done.", 4},
        {R"({"timedOut":"true","errorCount":2}|{"timedOut":false,"errorCount":1.0}|
            {"errorCount":9223372036854775807.0})",
         "Done.", 1},
        {R"({"errorCount":9223372036854775808.0}|{"errorCount":9223372036854775808}|
            {"errorCount":1e400}|{"errorCount":0.5}|{"errorCount":1.5}|{"errorCount":0}|
            {"errorCount":-1}|{"errorCount":true}|{"errorCount":"2"})",
         "Done."},
        {R"([{"timedOut":true,"errorCount":1}])", "  [OFF]\n  "},
    });
}

TEST(ReplyText, UsesTheFirstMatchingView) {
    expectViews({
        {R"([])", "No projects."},
        {R"([{"valueType":null},{"name":"N"}])", "  [, ]\nN  [, ]"},
        {R"([{"name":"N"},{"valueType":"T"}])", "N  [OFF]\n  \n  [OFF]\n  "},
        {R"({"compiledFileCount":0,"logCursor":0})", "Compiled 0 files. 0 errors, 0 warnings."},
        {R"({"compiledFileCount":2.5,"logCursor":0}|{"compiledFileCount":"7","logCursor":0}|
            {"compiledFileCount":true,"logCursor":0}|{"logCursor":0,"entries":[]}|
            {"compiledFileCount":9223372036854775808.0,"logCursor":0}|
            {"compiledFileCount":-9223372036854775809,"logCursor":0})",
         idle},
        {R"({"logCursor":"0","entries":[]}|{"logCursor":1.5,"entries":[]}|
            {"logCursor":-1,"entries":[]}|{"logCursor":18446744073709551616,"entries":[]}|
            {"entries":[],"notes":[],"endpoints":[]})",
         "Nothing logged."},
        {R"({"entries":[{},1],"notes":[],"endpoints":[]}|{"notes":[],"endpoints":[],"files":[]}|
            {"entries":{},"notes":[],"endpoints":[]})",
         "Endpoints:\n\nThings worth knowing:"},
        {R"({"notes":["a",1],"endpoints":[],"files":[]}|{"endpoints":[],"files":[]}|
            {"notes":[],"endpoints":[1],"files":[]}|{"files":[],"file":{}})",
         nothingMatched},
        {R"({"files":[1],"file":{"path":"p"}}|{"file":{"path":"p"},"project":{"a":1}})", "p  []\n"},
        {R"({"file":[],"project":{}}|{"project":{},"applied":{"a":1}})", "No settings."},
        {R"({"project":null,"applied":{"a":1}})", "Project-wide:\n  a = 1"},
        {R"([1]|["a"]|[{"valueType":"T"},1]|null|"entries"|{}|{"applied":[]})", "Done."},
    });
}

TEST(StatusView, ShowsWhatTheApplicationIsDoing) {
    const std::string zero(idle);
    expectViews({
        {R"({"logCursor":0}|{"logCursor":0,"activeBuild":[]}|{"logCursor":0,"activeBuild":null}|
            {"logCursor":0,"isIndexing":"yes","isCompiling":2,"isFileWatchingPaused":null,
             "projectCount":"3","frameworkCount":1.5})",
         zero},
        {R"({"logCursor":18446744073709551615}|{"logCursor":18446744073709551615.0})",
         zero.substr(0, zero.size() - 1) + "18446744073709551615"},
        {R"({"logCursor":0,"activeBuild":{}}|{"logCursor":0,"activeBuild":
            {"projectName":1,"itemsCompleted":"1","itemsTotal":0.5}})",
         zero + "\nBuilding \"\": 0 of 0"},
        {R"({"logCursor":1e3,"isIndexing":1,"isCompiling":true,"projectCount":-4,
             "frameworkCount":9223372036854775807})",
         "Projects: -4    Frameworks: 9223372036854775807\n"
         "Indexing: yes    Compiling: yes    Watching: on\nLog cursor: 1000"},
        {R"({"logCursor":9,"isCompiling":true,"isFileWatchingPaused":true,"projectCount":3.0,
             "activeBuild":{"projectName":"P","itemsCompleted":40,"itemsTotal":120}})",
         "Projects: 3    Frameworks: 0\nIndexing: no    Compiling: yes    Watching: PAUSED\n"
         "Log cursor: 9\nBuilding \"P\": 40 of 120\n\nFile watching is paused, so saving a file "
         "will not compile it. Resume with \"fernlow watch resume\"."},
    });
}

TEST(ListViews, ShowOneRowPerElementInOrder) {
    expectViews({
        {R"([{"name":"z","path":"/z","isEnabled":true,"isFramework":false,"id":"x"},
             {"name":"N","path":"/p","isFramework":true},{"isFramework":1,"isEnabled":1},{},
             {"name":1,"path":"/p","isEnabled":"true","isFramework":"x"},{"name":"a"}])",
         "z\n  /z\nN  [framework, OFF]\n  /p\n  [framework]\n  \n  [OFF]\n  \n  [OFF]\n  /p\n"
         "a  [OFF]\n  "},
        {R"({"entries":[{"cursor":57,"severity":"error","title":"T","detail":"d"},{},
             {"cursor":-3,"severity":"success","title":"S"},{"cursor":4.0,"severity":"oDD-1"},
             {"cursor":"9","severity":null,"title":"W"},{"cursor":9223372036854775808}]})",
         "57  ERROR  T\n0    \n-3  SUCCESS  S\n4  ODD-1  \n0    W\n0    "},
        {R"([{"name":"z","valueType":"T","propagation":"P","language":"L","group":"G"},{},
             {"name":"N","valueType":"T","propagation":"P","group":"G","language":null},
             {"name":"a","valueType":7,"language":"L","group":1},{"language":"","group":""}])",
         "z  [T, P, L, group G]\n  [, ]\nN  [T, P, group G]\na  [, , L]\n  [, , , group ]"},
        {R"({"endpoints":[{"method":"POST","path":"/b","summary":"B."},
             {"method":"GET","path":"/a","summary":"A."},{"method":"OPTIONS","path":"/c"},
             {"method":1,"path":null,"summary":[]},{"method":"éé","path":"/d"},
             {"method":"éééééé","path":"/e"}],"notes":["n","","m"]})",
         "Endpoints:\n  POST  /b\n        B.\n  GET   /a\n        A.\n  OPTIO /c\n        \n"
         "        \n        \n  éé    /d\n        \n  ééééé /e\n        \n"
         "\nThings worth knowing:\n\n  • n\n\n  • \n\n  • m"},
    });
}

TEST(WorkReportView, ShowsCountsThenProblemsThenNotes) {
    expectViews({
        {R"({"compiledFileCount":0}|{"compiledFileCount":0.0,"errorCount":"2","warningCount":1.5})",
         "Compiled 0 files. 0 errors, 0 warnings."},
        {R"({"compiledFileCount":1,"errorCount":1,"warningCount":1})",
         "Compiled 1 file. 1 error, 1 warning.", 1},
        {R"({"compiledFileCount":9223372036854775807.0,"errorCount":2.0,"warningCount":-1})",
         "Compiled 9223372036854775807 files. 2 errors, -1 warnings.", 1},
        {R"({"compiledFileCount":2,"requestedPaths":["a","b"]}|
            {"compiledFileCount":2,"requestedPaths":["a","b","c"]}|
            {"compiledFileCount":2,"requestedPaths":[]}|{"compiledFileCount":2,"requestedPaths":[1]}|
            {"compiledFileCount":2,"problems":[{"title":"T"},1],"logTruncated":"true"})",
         "Compiled 2 files. 0 errors, 0 warnings."},
        {R"({"compiledFileCount":2,"problems":[{},{"severity":"warning","title":"T","message":""},
             {"severity":3,"title":"U","message":"  m\n\n n\n","syntaxReports":{}}]})",
         "Compiled 2 files. 0 errors, 0 warnings.\n\n  \n\nWARNING  T\n\n  U\n  m\n\n n\n"},
        {R"({"compiledFileCount":5,"errorCount":1,"requestedPaths":["a","b","c"],"problems":[
             {"severity":"error","title":"T","message":"m","syntaxReports":[
               {"path":"none"},{"path":"odd","issues":[{"reason":"r"},null]},
               {"path":"P","issues":[{"line":12,"column":5,"reason":"R"},{"reason":"S"}]},
               {"path":null,"issues":[{"line":"1","column":-2}]}]}],
             "logTruncated":true,"timedOut":true})",
         "Compiled 5 files. 1 error, 0 warnings.\n"
         "(You asked for 3; Fernlow rebuilt everything that depended on them.)\n\n"
         "ERROR  T\nm\n  P:12:5  R\n  P:0:0  S\n  :0:-2  \n\n"
         "The wait expired. The work may still be going; ask again with a later --since.\n\n"
         "Some log entries were discarded before they could be read, so these counts are lower "
         "bounds.",
         4},
    });
}

TEST(SettingsView, SortsSectionsAndKeysAndFormatsValues) {
    expectViews({
        {R"({"project":{},"languages":{}}|{"project":{},"languages":{"L":{},"M":[1]}}|
            {"project":{},"languages":[{"L":{"a":1}}]}|{"applied":{},"languages":{"L":{"a":1}}})",
         "No settings."},
        {R"({"project":{},"languages":{"L":{"a":1}}})", "\nL:\n  a = 1"},
        {R"({"project":{"b":1,"A":"x","a":[]},"outputPathsStale":true,
             "languages":{"t":{"k":2},"E":{},"S":{"z":3,"y":4}}})",
         "Project-wide:\n  A = x\n  a = \n  b = 1\n\nS:\n  y = 4\n  z = 3\n\nt:\n  k = 2"},
        {R"({"applied":{"\ud83d\ude00":1,"\ufb00":2,"z":3,"\u00e9":4,"ab":5,"a":6,"":7,"a b":8}})",
         "Project-wide:\n   = 7\n  a = 6\n  a b = 8\n  ab = 5\n  z = 3\n  é = 4\n  ﬀ = 2\n  😀 = "
         "1"},
        {R"({"applied":{"a":null,"b":{},"c":[1,2],"d":["a",1],"e":[[]],"f":"","g":"x, \"y\"",
             "h":["a"],"i":["a","b"],"j":["","a",""],"k":true,"l":false}})",
         "Project-wide:\n  a = (unset)\n  b = (unset)\n  c = (unset)\n  d = (unset)\n"
         "  e = (unset)\n  f = \n  g = x, \"y\"\n  h = a\n  i = a, b\n  j = , a, \n  k = true\n"
         "  l = false"},
    });
}

TEST(FilesView, TagsCountsAndPages) {
    expectViews({
        {R"({"files":[{"relativePath":"r","path":"p","outputAction":"compile","exists":true},
             {"relativePath":null,"path":"p","outputAction":"compile","outputPath":""},
             {"relativePath":"","path":"p","outputAction":"compile"},{},
             {"path":"p","outputAction":5,"isShadowItem":true},{"path":"p","outputAction":"Copy"},
             {"path":"p","outputAction":"ignore","outputActionIsChosen":true,"exists":false},
             {"path":"a","outputAction":"copy","exists":0,"isShadowItem":1,"outputPath":"/o",
              "outputActionIsChosen":true,"outputPathIsChosen":true},
             {"path":"p","outputAction":"compile","exists":"no","outputPath":null}]})",
         "r\np\n    → \n\n  []\np  [, outside the project]\np  [COPY]\n"
         "p  [IGNORE, action chosen, MISSING]\n"
         "a  [COPY, path chosen, action chosen, outside the project, MISSING]\n    → /o\np\n\n"
         "9 of 9."},
        {R"({"files":[{"language":"path","path":"p","outputAction":"compile","path":"q"}]})",
         "p\n\n1 of 1."},
        {R"({"files":[],"total":7,"truncated":true,"offset":3})", nothingMatched},
        {R"({"files":[{},{}],"total":2.5,"truncated":"true"})", "  []\n  []\n\n2 of 2."},
        {R"({"files":[{},{}],"total":212,"truncated":true,"offset":100})",
         "  []\n  []\n\n2 of 212.\nMore to come: ask again with --offset 102."},
        {R"({"files":[{}],"total":0,"truncated":1,"offset":"5"})",
         "  []\n\n1 of 0.\nMore to come: ask again with --offset 1."},
        {R"({"files":[{}],"truncated":true,"offset":9223372036854775807})",
         "  []\n\n1 of 1.\nMore to come: ask again with --offset 9223372036854775808."},
        {R"({"file":{"path":"a","outputPath":"/o"},"values":{"b":1,"a":["x"]}})",
         "a  []\n    → /o\n\n  a = x\n  b = 1"},
        {R"({"file":{"path":"a"},"values":[{"k":1}]})", "a  []\n"},
    });
}

} // namespace
} // namespace fernlow::test

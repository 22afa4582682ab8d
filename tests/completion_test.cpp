#include "completion/bash_line.h"
#include "completion/completion.h"
#include "support/command_line.h"
#include "support/process.h"
#include "support/scripted_peer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace fernlow::test {

namespace {

using completion::PathKind;
using completion::Shell;

completion::CompletionContext context(Shell shell) {
    return {shell, "/usr", CurrentDirectory("/p/src"),
            std::chrono::steady_clock::now() + std::chrono::milliseconds(250)};
}

/// The candidates that begin with the last word of a line, which is empty behind a space.
std::string completed(std::string line) {
    const bool isEmpty = line.empty() || line.back() == ' ';
    auto words = splitWords(line);
    words.resize(words.size() + (isEmpty ? 1 : 0));
    const auto completions = complete(words, words.size() - 1, context(Shell::zsh));
    const std::map<PathKind, std::string> paths{{PathKind::file, "+files"},
                                                {PathKind::folder, "+folders"}};
    std::string result = paths.contains(completions.paths) ? paths.at(completions.paths) : "";
    for (const auto& candidate : completions.candidates) {
        if (candidate.value.starts_with(words.back())) {
            const std::string space = result.empty() ? "" : " ";
            result += space + candidate.value;
            EXPECT_EQ(candidate.description.find_first_of("\x1B\n"), std::string::npos);
        }
    }
    return result;
}

std::string bashCompleted(std::string_view before, std::string_view replaced,
                          std::string_view after = " --json; x --no-launch") {
    std::string result;
    for (const auto& line : completeBashLine({before, after, replaced}, context(Shell::bash))) {
        result += line + "|";
    }
    return result;
}

} // namespace

TEST(Completion, FollowsTheParsersRules) {
    const std::string always = "--json --socket --no-launch";
    for (const auto& [line, expected] : std::vector<std::pair<std::string, std::string>>{
             {"re", "refresh remove rename"},
             {"-", always + " --help --version"},
             {"--json --socket x -", "--no-launch --help --version"},
             {"--socket ", "+files"},
             {"--socket --json st", "status"},
             {"wait --json --since 3 ", "--project --settle --timeout --socket --no-launch"},
             {"wait --timeout -", ""},
             {"wait --since 1 --since 2 -", "--project --settle --timeout " + always},
             {"packages --exact --no-exact --no-", "--no-package-lock --no-wait --no-launch"},
             {"packages install --save-to optional,production,",
              "optional,production,development optional,production,bundle"},
             {"preview --address l", "lan loopback localhost"},
             {"process a --exactly ", "+files"},
             {"add ./x ", "--framework " + always},
             {"groups add ", ""},
             {"watch ", "pause resume"},
             {"settings ", "set schema apply-output-paths"},
             {"settings ./", "+folders"},
             {"settings ./x s", ""},
             {"settings --language Sass set --p", "--path"},
             {"settings set --path x --", "--language --extension --values " + always},
             {"settings apply-output-paths ", "+folders --language"},
             {"collections --kind hooks r", "remove"},
             {"collections remove ./x ", "--kind --id " + always},
             {"collections set --kind hooks --id 1 a=b ", ""},
             {"files set a=b ", "+files"},
             {"status x", ""},
             {"nonsense ", ""},
             {"settings nonsense -", ""},
             {"help ", ""}}) {
        EXPECT_EQ(completed(line), expected) << line;
    }
}

TEST(Completion, AsksTheApplication) {
    const std::string schema =
        R"([{"name":"a","valueType":"boolean"},{"name":"b","choices":[0,1.5],"language":"L"},)"
        R"({"name":"c","choices":["x"],"group":"g"},{"name":"d","valueType":"text"}])";
    const std::string rows =
        R"({"hooks":[{"id":"7"}],"userLanguages":[{"id":"8","fileExtension":"x y"}],"n":3})";
    const std::string groups = R"([{"name":"Projects"},{"name":"Frameworks"},{"name":"own"},)"
                               R"({"name":"shared"},{"name":"shared"}])";
    const std::string projects =
        R"([{"path":"/a","name":"\u001b[2J"},{"path":"/f","isFramework":true,"name":"\n"}])";
    struct Case {
        std::string line, result, request, expected;
    };
    for (const auto& [line, result, request, expected] : std::vector<Case>{
             {"groups --json rename ",
              R"([{"name":"A b"},{"name":"A\nb"},{"name":"\u001b[1m"},{"name":"A\u202eb"},)"
              R"({"name":7},{}])",
              "GET /v1/groups ", "A b"},
             {"groups remove ", groups, "GET /v1/groups ", "own"},
             {"groups --name ", groups, "GET /v1/groups ", "own"},
             {"move --group ", groups, "GET /v1/groups ", "Projects own"},
             {"move ", projects, "GET /v1/projects ", "/a"},
             {"disable ", projects, "GET /v1/projects ", "/a /f"},
             {"groups rename ", R"([{"name":"-x"},{"name":"--json"}])", "GET /v1/groups ", ""},
             {"move --group ", R"([{"name":"-x"},{"name":"--json"}])", "GET /v1/groups ", "-x"},
             {"disable ", R"([{"path":"/é"}])", "GET /v1/projects ", "/é"},
             {"disable /e", R"([{"path":"/é"}])", "GET /v1/projects ", "+folders"},
             {"wait --since ", R"({"logCursor":9223372036854775807})", "GET /v1/status ",
              "9223372036854775807"},
             {"log --since ", R"({"logCursor":9223372036854775808})", "GET /v1/status ", ""},
             {"files --language ", R"({"languages":{"L":{},"M":1}})", "GET /v1/defaults ", "L M"},
             {"settings set d=1 ", schema, R"(POST /v1/settings/schema {"path":"/p/src"})", "a="},
             {"settings set --path ../x --language L b=", schema,
              R"(POST /v1/settings/schema {"path":"/p/x","language":"L"})", "b=0 b=1.5"},
             {"defaults set a=", schema, "POST /v1/defaults/schema {}", "a=true a=false"},
             {"files set f c=", schema, R"(POST /v1/files/schema {"path":"/p/src/f"})", "c=x"},
             {"collections set --kind hooks --id 1 c=", schema,
              R"(POST /v1/collections/schema {"kind":"hooks"})", "c=x"},
             {"collections remove x --id ", rows, R"(POST /v1/collections {"path":"/p/src/x"})",
              "7 8"},
             {"collections remove --id --kind hooks ", rows,
              R"(POST /v1/collections {"path":"/p/src","kind":"hooks"})", "7 8"},
             {"settings set --extension ", rows,
              R"(POST /v1/collections {"path":"/p/src","kind":"userLanguages"})", "x y"},
             {"move --group ", "{]", "GET /v1/groups ", ""}}) {
        ScriptedPeer peer({answerResult(result)});
        EXPECT_EQ(completed("--socket " + peer.path() + " " + line), expected) << line;
        const std::string& sent = peer.requests().at(0);
        EXPECT_EQ(sent.substr(0, sent.find("HTTP")) + sent.substr(sent.find("\r\n\r\n") + 4),
                  request);
    }
}

TEST(Completion, GivesUpOnASlowApplication) {
    const std::string endless(100000, 'x');
    for (const std::string& bytes : {std::string(), std::string("H"), endless}) {
        const ScriptedPeer peer({[&](ScriptedPeer::Connection& connection) {
            while (!connection.isGone()) {
                connection.write(bytes);
            }
        }});
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(completed("--socket " + peer.path() + " remove "), "+folders");
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    }
}

TEST(Completion, PrintsNothingWhenSomethingIsWrong) {
    const std::string line =
        "d=$(mktemp -d) && cd $d && rmdir $d && '" + program("libexec/fernlow-complete") + "'";
    for (const auto& [arguments, expected] : std::vector<std::pair<std::string, std::string>>{
             {"", "0"},
             {"zsh /", "0"},
             {"zsh / -1 status",
              "nothing\n--json\tPrint the reply as JSON\n--socket\tTalk to another "
              "socket\n--no-launch\tDo not start Fernlow if it is not running\n0"},
             {"zsh / 4 collections set --kind hooks x", "nothing\n0"},
             {"zsh / 3 settings set \"$(printf '\\377')=\" ''", "nothing\n0"},
             {"bash / 'fernlow \"ad' '' ad", "add\n0"}}) {
        ProgramRun run{{"-c", line + " " + arguments + " 2>&1; printf $?"}};
        run.program = "/bin/sh";
        EXPECT_EQ(runProgram(run).standardOutput, expected) << arguments;
    }
}

TEST(Completion, QuotesRepliesForBash) {
    for (const auto& [line, replaced, expected] :
         std::vector<std::tuple<std::string, std::string, std::string>>{
             {"fernlow log\nls sta", "sta", ""},
             {"fernlow 'wait' --j", "--j", ""},
             {"fernlow wait --no", "--no", "--no-launch |"},
             {"fernlow process $(ls st", "st", ""},
             {"fernlow wait \"$(ls st", "$(ls st", ""},
             {"fernlow \"x$(a)", "$(a)", ""},
             {"fernlow sta", "other", ""},
             {"fernlow log > /et", "/et", "/etc/|"},
             {"fernlow log > ~/loc", "~/loc", "~/local/|"},
             {"fernlow log $(a) > /et", "/et", ""},
             {"fernlow add ~/\"loc", "loc", "local/|"},
             {"fernlow add $x/loc", "$x/loc", ""},
             {"fernlow add ~roo", "~roo", ""},
             {"fernlow log x=(a b) @(a|b) --si", "--si", "--since |"},
             {"fernlow log >| out --si", "--si", "--since |"},
             {"fernlow log 2>&1 &>> x --si", "--si", "--since |"},
             {"fernlow log --project \"$(a \"b\" `c`)\" <(x) $((1+(2))) ${x:-a b} --si", "--si",
              "--since |"},
             {"fernlow wait --since \\2>x --se", "--se", "--settle |"},
             {"fernlow log $'it\\'s' --si", "--si", "--since |"},
             {"fernlow log ${x:- --si", "--si", ""},
             {"fernlow log # it's --si", "--si", ""},
             {"fernlow log $x--si", "--si", ""},
             {"fernlow \"`x`sta", "sta", ""},
             {"fernlow sta*", "sta*", ""},
             {"fernlow " + std::string(200000, '('), "", ""}}) {
        EXPECT_EQ(bashCompleted(line, replaced), expected) << line;
    }
    EXPECT_EQ(bashCompleted("fernlow wait --si", "--si", " $(x) --since 3"), "");
    EXPECT_EQ(bashCompleted("fernlow add --offset 2", "2", ">x"), "");
    EXPECT_EQ(bashCompleted("fernlow wait --si", "--si", ";fernlow log --since 3"), "--since |");
    EXPECT_EQ(bashCompleted("fernlow \"sta", "sta", " b\" --json"), "status|");
    const std::string endless(100000, ' ');
    EXPECT_EQ(bashCompleted("fernlow sta", "sta", endless + "x"), "status |");
    std::string many;
    for (int number = 0; number < 2500; ++number) {
        many += R"({"name":"n)" + std::to_string(number) + R"("},)";
    }
    const std::string longName(500, 'x');
    for (int number = 0; number < 500; ++number) {
        many += R"({"name":")" + longName + std::to_string(number) + R"("},)";
    }
    many += R"({"name":")" + std::string(513, 'y') + R"("},)";
    const auto manyGroups = answerResult("[" + many + "{}]");
    const ScriptedPeer groups({manyGroups, manyGroups, manyGroups});
    const std::string toGroup = "--socket " + groups.path() + " move --group ";
    EXPECT_EQ(completed(toGroup + "n2499"), "n2499");
    EXPECT_EQ(completed(toGroup + "y"), "");
    EXPECT_EQ(completed(toGroup + "x").size() / 1000, 65U);
    ScriptedPeer unasked({answerResult(R"([{"name":"n"}])")});
    for (const std::string word : {"$(x)", "\"`x`\"", "*", "$x"}) {
        EXPECT_EQ(
            bashCompleted("fernlow --socket " + unasked.path() + " move " + word + " --group ", ""),
            "");
    }
    const std::string special = R"([{"name":"k=a: 'b' \"$x"}])";
    const std::string quotes = R"([{"name":"it'"},{"name":"'t"},{"name":"a'b"}])";
    struct Case {
        std::string names, word, replaced, expected;
    };
    for (const auto& [names, word, replaced, expected] :
         std::vector<Case>{{R"([{"name":"a!!"}])", "\"a", "a", ""},
                           {special, "k=", "", R"(a:\ \'b\'\ \"\$x |)"},
                           {special, "k=a", "k=a", R"(k=a:\ \'b\'\ \"\$x |)"},
                           {special, R"(k=a:\ )", R"(\ )", R"(\ \'b\'\ \"\$x |)"},
                           {special, R"("k=)", "k=", R"(k=a: 'b' \"\$x|)"},
                           {special, R"('k=)", "k=", R"(k=a: '\''b'\'' "$x|)"},
                           {special, R"("k=a: 'b' )", "'b' ", R"('b' \"\$x|)"},
                           {special, "other", "other", ""},
                           {quotes, "'", "", R"(a'\''b|)"},
                           {quotes, "a'", "", ""}}) {
        const ScriptedPeer peer({answerResult(names)});
        EXPECT_EQ(
            bashCompleted("fernlow --socket " + peer.path() + " move --group " + word, replaced),
            expected);
    }
}

} // namespace fernlow::test

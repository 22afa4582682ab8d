#include "commands/command_table.h"
#include "commands/global_options.h"
#include "support/command_line.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <regex>
#include <string>

namespace fernlow::test {

namespace {

/// The synopsis of "files set", what is said of that as "files set:", and of its options as
/// "files set --action". Outside such entries it is "rest --limit" and "rest"; "" is the page.
std::map<std::string, std::string> partsOfThePage() {
    std::map<std::string, std::string> parts;
    std::ifstream file(FERNLOW_ROOT "/docs/fernlow.1");
    std::string form, part;
    for (std::string line; std::getline(file, line); parts[""] += line + "\n") {
        line = std::regex_replace(line, std::regex(R"(\\-)"), "-");
        if (parts[""].ends_with("\n.It Xo\n")) {
            part = form = line.substr(4, line.find(" |") - 4);
        } else if (line == ".Xc") {
            part = form + ":";
        } else if (line.starts_with(".It Fl ")) {
            part = form + " -" + line.substr(7, line.find(' ', 7) - 7);
        } else if (line.starts_with(".Sh ") || line.starts_with(".Ss ")) {
            part = form = "rest";
        }
        parts[part] += " " + line;
    }
    return parts;
}

/// What a text has to say of a value, and no other numbers and choices.
void expectFacts(const std::string& text, const ValueDescription& value) {
    SCOPED_TRACE(text);
    const auto& [min, max, defaultValue] = value.range;
    const bool isNumber = value.kind == ValueKind::wholeNumber || value.kind == ValueKind::decimal;
    Words numbers;
    for (const auto number : {min, max, defaultValue.value_or(max)}) {
        numbers.insert(std::to_string(number));
    }
    numbers.erase(std::to_string(NumberRange::noMin));
    numbers.erase(std::to_string(NumberRange::noMax));
    EXPECT_TRUE(!isNumber || matches(text, R"(\b(\d+)\b)") == numbers);
    EXPECT_EQ(matches(text, R"(\.Cm (\w+))"), Words(value.choices.begin(), value.choices.end()));
    EXPECT_NE(text.find(value.defaultText), std::string::npos);
}

} // namespace

TEST(ManualPage, AgreesWithTheDescription) {
    const auto parts = partsOfThePage();
    auto others = parts;
    std::string markup;
    for (const auto* option : GlobalOptions::all()) {
        markup += " Fl " + std::string(option->word.substr(1));
        EXPECT_EQ(others.erase("rest " + std::string(option->word)), 1) << option->word;
    }
    for (const Command* const row : allCommands()) {
        const std::string command = row->name();
        std::string synopsis = " .Ic " + command;
        for (const auto alias : row->aliases) {
            synopsis += " | Fl " + std::string(alias.substr(1));
        }
        for (const Option* const option : row->allOptions()) {
            const std::string word(option->word), value(option->value.name);
            const bool isRequired =
                std::count(row->required.begin(), row->required.end(), option) > 0;
            synopsis += isRequired ? " .Fl " : option->opposite == nullptr ? " .Op Fl " : " | Fl ";
            synopsis += word.substr(1) + (value.empty() ? "" : " Ar ") + value;
            const bool isOwn = parts.contains(command + " " + word);
            const std::string part = (isOwn ? command : "rest") + " " + word;
            expectFacts(parts.at(part), option->value);
            others.erase(part);
        }
        for (const Operand* const operand : row->operands) {
            const auto& [value, isRequired, repeats, option] = *operand;
            synopsis += (isRequired ? " .Ar " : " .Op Ar ") + std::string(value.name);
            synopsis += repeats ? " ..." : "";
            if (!value.choices.empty()) {
                expectFacts(parts.at(command + ":"), value);
            }
        }
        EXPECT_EQ(parts.at(command), synopsis);
        markup += synopsis;
        others.erase(command);
        others.erase(command + ":");
    }
    for (const std::string& word : matches(parts.at(""), R"((Fl [a-z-]+|Ic [a-z -]*[a-z]))")) {
        EXPECT_NE(markup.find(word), std::string::npos) << word;
    }
    EXPECT_EQ(others.size(), 2) << others.rbegin()->first;
}

TEST(ManualPage, ShowsCommandLinesThatAreUnderstood) {
    const auto page = std::regex_replace(partsOfThePage().at(""), std::regex(R"(\\\(aq)"), "'");
    const Words lines = matches(page, R"(\$ (?:\w+=\$\()?fernlow ((?:[^|\n\\]|\\e\n)*))");
    EXPECT_GT(lines.size(), 10U);
    for (std::string line : lines) {
        line = std::regex_replace(line, std::regex(R"(\\e\n)"), "");
        line = std::regex_replace(line, std::regex(R"(\$(\w+|\(\(.*\)\)))"), "7");
        EXPECT_FALSE(matches(outcome(line), "^(GET|POST) ").empty()) << line;
    }
}

TEST(ManualPage, IsCleanToMandoc) {
    if (std::system("command -v mandoc >/dev/null") != 0) {
        GTEST_SKIP() << "mandoc is not installed";
    }
    EXPECT_EQ(std::system("mandoc -T lint -W warning '" FERNLOW_ROOT "/docs/fernlow.1'"), 0);
}

} // namespace fernlow::test

// Compares the manual page with the command table, and runs the command lines that it shows.
#include "commands/command_table.h"
#include "commands/global_options.h"
#include "support/command_line.h"
#include "support/paths.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <regex>
#include <string>

namespace fernlow::test {

namespace {

/// The texts of the page by entry. "files set" is the synopsis of a command, "files set:" its
/// description, and "files set --action" the description of its option. The description of an
/// option of several commands is "shared --limit". The entry "" is the whole page.
using Entries = std::map<std::string, std::string>;

Entries entriesOfThePage() {
    Entries entries;
    std::ifstream file(FERNLOW_ROOT "/docs/fernlow.1");
    std::string command;
    std::string entry;
    for (std::string line; std::getline(file, line);) {
        line = std::regex_replace(line, std::regex(R"(\\-)"), "-");
        if (entries[""].ends_with("\n.It Xo\n")) {
            command = line.substr(4, line.find(" |") - 4);
            entry = command;
        } else if (line == ".Xc") {
            entry = command + ":";
        } else if (line.starts_with(".It Fl ")) {
            entry = command + " -" + line.substr(7, line.find(' ', 7) - 7);
        } else if (line.starts_with(".Sh ") || line.starts_with(".Ss ")) {
            command = "shared";
            entry = command;
        }
        entries[entry] += " " + line;
        entries[""] += line + "\n";
    }
    return entries;
}

/// Expects a text to name the range, the default and the choices of a value, and no other numbers
/// and choices.
void expectFacts(const std::string& text, const ValueDescription& value) {
    SCOPED_TRACE(text);
    const auto& [min, max, defaultValue] = value.range;
    const bool isNumber = value.kind == ValueKind::wholeNumber || value.kind == ValueKind::decimal;
    Words numbers;
    for (const auto& number : {min, max, defaultValue}) {
        if (number) {
            numbers.insert(std::to_string(*number));
        }
    }
    if (isNumber) {
        EXPECT_EQ(matches(text, R"(\b(\d+)\b)"), numbers);
    }
    EXPECT_EQ(matches(text, R"(\.Cm (\w+))"), Words(value.choices.begin(), value.choices.end()));
    EXPECT_NE(text.find(value.defaultText), std::string::npos);
}

/// Returns the synopsis of a command, which the page must contain.
std::string synopsisOf(const Command& row) {
    std::string synopsis = " .Ic " + row.name();
    for (const auto alias : row.aliases) {
        synopsis += " | Fl " + std::string(alias.substr(1));
    }
    for (const Option* const option : row.allOptions()) {
        const bool isRequired = std::count(row.required.begin(), row.required.end(), option) > 0;
        const std::string value(option->value.name);
        if (isRequired) {
            synopsis += " .Fl ";
        } else if (option->opposite == nullptr) {
            synopsis += " .Op Fl ";
        } else {
            // The page shows the two options of a pair on one line.
            synopsis += " | Fl ";
        }
        synopsis += std::string(option->word.substr(1)) + (value.empty() ? "" : " Ar ") + value;
    }
    for (const Operand* const operand : row.operands) {
        synopsis += (operand->isRequired ? " .Ar " : " .Op Ar ") + std::string(operand->value.name);
        synopsis += operand->repeats ? " ..." : "";
    }
    return synopsis;
}

} // namespace

TEST(ManualPage, DescribesEveryCommandAndOption) {
    const Entries entries = entriesOfThePage();
    Entries unclaimed = entries;
    std::string markup;
    for (const auto* option : GlobalOptions::all()) {
        markup += " Fl " + std::string(option->word.substr(1));
        EXPECT_EQ(unclaimed.erase("shared " + std::string(option->word)), 1) << option->word;
    }
    for (const Command* const row : allCommands()) {
        const std::string command = row->name();
        const std::string synopsis = synopsisOf(*row);
        markup += synopsis;
        EXPECT_EQ(entries.contains(command) ? entries.at(command) : "nothing", synopsis)
            << "docs/fernlow.1 needs these lines and a description below them:\n.It Xo"
            << std::regex_replace(synopsis, std::regex(R"( (\.[A-Z]))"), "\n$1") << "\n.Xc";
        for (const Option* const option : row->allOptions()) {
            const std::string word = " " + std::string(option->word);
            const std::string entry =
                (entries.contains(command + word) ? command : "shared") + word;
            if (entries.contains(entry)) {
                expectFacts(entries.at(entry), option->value);
            } else {
                ADD_FAILURE() << "docs/fernlow.1 lacks" << word << " of \"" << command
                              << "\". Add \".It Fl " << word.substr(2)
                              << "\" to that command or to the options shared by several.";
            }
            unclaimed.erase(entry);
        }
        for (const Operand* const operand : row->operands) {
            if (!operand->value.choices.empty() && entries.contains(command)) {
                expectFacts(entries.at(command + ":"), operand->value);
            }
        }
        unclaimed.erase(command);
        unclaimed.erase(command + ":");
    }
    for (const std::string& word : matches(entries.at(""), R"((Fl [a-z-]+|Ic [a-z -]*[a-z]))")) {
        EXPECT_NE(markup.find(word), std::string::npos) << "docs/fernlow.1 mentions " << word;
    }
    for (const auto& [entry, text] : unclaimed) {
        EXPECT_TRUE(entry.empty() || entry == "shared") << "docs/fernlow.1 describes " << entry;
    }
}

TEST(ManualPage, ShowsOnlyValidCommandLines) {
    const auto page = std::regex_replace(entriesOfThePage().at(""), std::regex(R"(\\\(aq)"), "'");
    const Words lines = matches(page, R"(\$ (?:\w+=\$\()?fernlow ((?:[^|\n\\]|\\e\n)*))");
    EXPECT_GT(lines.size(), 10U);
    for (std::string line : lines) {
        line = std::regex_replace(line, std::regex(R"(\\e\n)"), "");
        line = std::regex_replace(line, std::regex(R"(\$(\w+|\(\(.*\)\)))"), "7");
        EXPECT_FALSE(matches(outcome(line), "^(GET|POST) ").empty()) << line;
    }
}

TEST(ManualPage, HasNoMandocWarnings) {
    if (std::system("command -v mandoc >/dev/null") != 0) {
        GTEST_SKIP() << "mandoc is not installed";
    }
    EXPECT_EQ(std::system("mandoc -T lint -W warning " FERNLOW_QUOTED_ROOT "/docs/fernlow.1"), 0);
}

} // namespace fernlow::test

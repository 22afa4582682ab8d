#include "cli/help_text.h"
#include "commands/command_table.h"
#include "commands/global_options.h"
#include "support/command_line.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace fernlow::test {

namespace {

/// A value that the option takes and that isn't its usual one, behind its word.
std::string sample(const Option& option) {
    static const std::map<ValueKind, std::string> values = {{ValueKind::flag, ""},
                                                            {ValueKind::wholeNumber, " 7"},
                                                            {ValueKind::decimal, " 7"},
                                                            {ValueKind::logCursor, " 7"},
                                                            {ValueKind::json, R"( {"k":7})"}};
    const auto& [kind, name, defaultText, choices, range] = option.value;
    const auto found = values.find(kind);
    return " " + std::string(option.word) +
           (!choices.empty()        ? " " + std::string(choices.back())
            : found == values.end() ? " ./option"
                                    : found->second);
}

/// The command with all its operands and the options that it requires, but for one.
std::string wholeLine(const Command& command, const Option* without = nullptr) {
    std::string line = command.name();
    for (const Operand* const operand : command.operands) {
        const auto& choices = operand->value.choices;
        const bool isSetting = operand->value.name == "key=value";
        line += " " + (choices.empty() ? isSetting ? "key=value" : "./operand"
                                       : std::string(choices.front()));
    }
    for (const Option* const option : command.required) {
        line += option != without ? sample(*option) : "";
    }
    return line;
}

bool succeeds(const std::string& line) {
    return !matches(outcome(line), "^(GET|POST|help|version)").empty();
}

} // namespace

TEST(CommandTable, ListsWhatItsParsersUse) {
    for (const Command* const command : allCommands()) {
        const std::string line = wholeLine(*command);
        EXPECT_TRUE(succeeds(line)) << line;
        for (const Option* const option : command->required) {
            EXPECT_FALSE(succeeds(wholeLine(*command, option))) << line << option->word;
        }
        for (const Option* const option : command->options) {
            const std::string longer = line + sample(*option);
            EXPECT_TRUE(succeeds(longer) && outcome(longer) != outcome(line)) << longer;
        }
        for (const Operand* const operand : command->operands) {
            EXPECT_TRUE(!operand->isRequired || !succeeds(command->name())) << command->name();
        }
    }
}

TEST(CommandTable, HoldsWhatTheHelpExplains) {
    const std::string help = usageText();
    const std::string commands = help.substr(0, help.find("\nOPTIONS\n"));
    Words inTable, options;
    for (const Command* const command : allCommands()) {
        inTable.insert(command->name());
        for (const Option* const option : command->allOptions()) {
            options.insert(std::string(option->word));
        }
        for (const auto alias : command->aliases) {
            options.insert(std::string(alias));
        }
    }
    for (const Option* const option : GlobalOptions::all()) {
        options.insert(std::string(option->word));
    }
    Words inHelp = matches(commands, "\n  (?!fernlow)([a-z]+(?: [a-z-]+)?) ");
    // What the help writes as a word of its own is one of the choices here, and it needn't say how
    // one came to read it.
    EXPECT_EQ(inHelp.erase("watch pause"), 1);
    inHelp.insert({"watch", "help", "version"});
    EXPECT_EQ(inTable, inHelp);
    for (const std::string& word : matches(help, "(--[a-z-]+)")) {
        EXPECT_TRUE(options.contains(word)) << word;
    }
}

} // namespace fernlow::test

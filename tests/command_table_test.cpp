#include "cli/help_text.h"
#include "commands/command_table.h"
#include "commands/global_options.h"
#include "support/command_line.h"
#include "support/process.h"
#include "support/temporary_folder.h"
#include "transport/socket_client.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

namespace fernlow::test {

namespace {

/// Returns the option with a valid value that is not the default, after a space.
std::string sample(const Option& option) {
    static const std::map<ValueKind, std::string> values = {{ValueKind::flag, ""},
                                                            {ValueKind::wholeNumber, " 7"},
                                                            {ValueKind::decimal, " 7"},
                                                            {ValueKind::logCursor, " 7"},
                                                            {ValueKind::json, R"( {"k":7})"}};
    const auto& [kind, name, defaultText, choices, range] = option.value;
    const std::string word = " " + std::string(option.word);
    if (!choices.empty()) {
        return word + " " + std::string(choices.back());
    }
    const auto found = values.find(kind);
    return word + (found == values.end() ? " ./option" : found->second);
}

/// Returns a line with the command's operands and required options, without one of these options.
std::string wholeLine(const Command& command, const Option* without = nullptr) {
    std::string line = command.name();
    for (const Operand* const operand : command.operands) {
        const auto& choices = operand->value.choices;
        const bool isSetting = operand->value.name == "key=value";
        if (!choices.empty()) {
            line += " " + std::string(choices.front());
        } else {
            line += isSetting ? " key=value" : " ./operand";
        }
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

TEST(CommandTable, OptionsOfFamiliesMayStandBeforeTheSubcommand) {
    // An option that may only stand after the subcommand.
    const Words exceptions = {"settings set --path"};
    for (const Command* const command : allCommands()) {
        const Command& alone = *findCommand(command->word);
        Words before;
        for (const Option* const option : alone.beforeSubcommand) {
            before.insert(std::string(option->word));
        }
        for (const Option* const option : command->allOptions()) {
            const std::string word(option->word);
            EXPECT_TRUE(!hasSubcommands(alone) || before.contains(word) ||
                        exceptions.contains(command->name() + " " + word))
                << "The row of \"" << command->name() << "\" lists " << word
                << ". Add it to .beforeSubcommand in the row of \"" << alone.word << "\" as well.";
        }
    }
}

TEST(CommandTable, EveryOptionAndOperandHasAnEffect) {
    for (const Command* const command : allCommands()) {
        const std::string line = wholeLine(*command);
        EXPECT_TRUE(succeeds(line)) << line << ": " << outcome(line);
        for (const Option* const option : command->required) {
            EXPECT_FALSE(succeeds(wholeLine(*command, option)))
                << "The row of \"" << command->name() << "\" requires " << option->word
                << ", but the parser does not.";
        }
        for (const Option* const option : command->options) {
            const std::string longer = line + sample(*option);
            EXPECT_TRUE(succeeds(longer) && outcome(longer) != outcome(line))
                << "The row of \"" << command->name() << "\" lists " << option->word
                << ", so its parser must accept and use it. FERNLOW_WIRE_FIELDS of the request "
                << "record must name the field.\n"
                << longer << ": " << outcome(longer);
        }
        for (const Operand* const operand : command->operands) {
            EXPECT_TRUE(!operand->isRequired || !succeeds(command->name()))
                << "The row of \"" << command->name() << "\" requires " << operand->value.name
                << ", but the parser does not.";
        }
    }
}

TEST(CommandTable, TheStandInKnowsEveryRequest) {
    const TemporaryFolder folder;
    const StandIn standIn(folder.file("s"));
    for (const Command* const command : allCommands()) {
        std::string fullLine = wholeLine(*command);
        for (const Option* const option : command->options) {
            fullLine += sample(*option);
        }
        for (const std::string& line : {wholeLine(*command), fullLine}) {
            std::istringstream request(outcome(line));
            std::string method;
            std::string path;
            std::string body;
            std::getline(request >> method >> path, body);
            // Help and the version are printed without a request.
            if (path.empty()) {
                continue;
            }
            const AgentReply reply =
                AgentSocketClient({}).exchange(folder.file("s"), false, {method, path, body});
            EXPECT_TRUE(reply.statusCode == 200 || reply.statusCode == 422)
                << line << "\n"
                << reply.body.view() << "\nThe rows of the stand-in are in "
                << "tools/stand-in/*_endpoints.cpp, the types of members in endpoints.cpp there.";
        }
    }
}

TEST(CommandTable, HasTheCommandsAndOptionsOfTheHelpText) {
    const std::string help = usageText();
    Words inTable;
    for (const Command* const command : allCommands()) {
        inTable.insert(command->name());
        for (const Option* const option : command->allOptions()) {
            inTable.insert(std::string(option->word));
        }
        inTable.insert(command->aliases.begin(), command->aliases.end());
    }
    for (const Option* const option : GlobalOptions::all()) {
        inTable.insert(std::string(option->word));
    }
    Words inHelp =
        matches(help.substr(0, help.find("\nOPTIONS\n")), "\n  (?!fernlow)([a-z]+(?: [a-z-]+)?) ");
    inHelp.merge(matches(help, "(--[a-z-]+)"));
    // The table has "pause" as a choice of "watch". The help text does not explain itself.
    EXPECT_EQ(inHelp.erase("watch pause"), 1);
    inHelp.insert({"watch", "help", "--help", "-h", "version", "--version", "-v"});
    for (const std::string& word : inTable) {
        EXPECT_EQ(inHelp.erase(word), 1)
            << "\"" << word << "\" has no line in the help text (src/cli/help_text.cpp).";
    }
    EXPECT_EQ(inHelp, Words()) << "The help text explains words that no row in src/commands/ has.";
}

} // namespace fernlow::test

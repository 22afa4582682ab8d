#include "cli/help_text.h"
#include "commands/description.h"
#include "support/command_line.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace fernlow::test {

namespace {

constexpr OptionDescription help{"--help", {}, ""};

/// The sources that take words off the command line.
const std::string& sources() {
    static const std::string text = [] {
        std::ostringstream all;
        for (const char* folder : {"/cli", "/commands"}) {
            for (const auto& file :
                 std::filesystem::directory_iterator(FERNLOW_SOURCES + std::string(folder))) {
                all << std::ifstream(file.path()).rdbuf();
            }
        }
        return all.str();
    }();
    return text;
}

bool succeeds(const std::string& line) {
    const std::string result = outcome(line);
    return result == "help" || result == "version" || result.starts_with("POST ") ||
           result.starts_with("GET ");
}

/// A value that is taken where the description says it may stand, behind a space.
std::string sample(const ValueDescription& value, const std::string& other) {
    static const std::map<ValueKind, std::string> values = {{ValueKind::none, ""},
                                                            {ValueKind::number, " 7"},
                                                            {ValueKind::logCursor, " 7"},
                                                            {ValueKind::json, " {}"},
                                                            {ValueKind::setting, " key=value"}};
    if (!value.choices.empty()) {
        return " " + std::string(value.choices.front());
    }
    const auto found = values.find(value.kind);
    return found == values.end() ? " " + other : found->second;
}

std::string sample(const OptionDescription& option) {
    return " " + std::string(option.word) + sample(option.value, "./option");
}

/// The form with an operand of each kind and the options that it requires, but for one.
std::string wholeLine(const CommandDescription& form, const OptionDescription* without = nullptr) {
    std::string line = name(form);
    for (const auto& operand : form.operands) {
        line += sample(operand.value, "./operand");
    }
    for (const auto* option : form.required) {
        line += option == without ? "" : sample(*option);
    }
    return line;
}

using Options = std::map<std::string, const OptionDescription*>;

void add(Options& options, const auto& list) {
    for (const OptionDescription* option : list) {
        options.emplace(option->word, option);
    }
}

} // namespace

TEST(Description, HoldsEveryOptionThatTheParsersTake) {
    Words words = matches(sources(), "\"(--[a-z-]+)\"");
    words.merge(matches(usageText(), "(--[a-z-]+)"));
    Options global;
    add(global, globalOptions());
    Options any{{"--help", &help}, {"--version", &help}};
    for (const auto& form : commandDescriptions()) {
        add(any, form.required);
        add(any, form.options);
    }
    for (const auto& form : commandDescriptions()) {
        Options taken;
        add(taken, form.options);
        add(taken, sharedOptions(form.command));
        const std::string line = wholeLine(form);
        EXPECT_TRUE(succeeds(line)) << line;
        for (const auto* option : form.required) {
            EXPECT_FALSE(succeeds(wholeLine(form, option))) << line << " without " << option->word;
            taken.erase(std::string(option->word));
        }
        for (const std::string& word : words) {
            if (global.contains(word)) {
                EXPECT_EQ(outcome(line + sample(*global[word])), outcome(line));
                continue;
            }
            ASSERT_TRUE(any.contains(word)) << word;
            const auto takes = [&](const std::string& option) {
                return form.ignoresOtherWords ? outcome(line + option) != outcome(line)
                                              : succeeds(line + option);
            };
            if (taken.contains(word)) {
                EXPECT_TRUE(takes(sample(*taken[word]))) << line << " " << word;
            } else {
                EXPECT_FALSE(takes(sample(*any[word])) || takes(" " + word) ||
                             takes(" " + word + " 7"))
                    << line << " " << word;
            }
        }
        if (form.operands.empty()) {
            EXPECT_EQ(succeeds(line + " ./more"), form.ignoresOtherWords) << line;
        } else if (const auto& first = *form.operands.begin();
                   first.isRequired || (!first.value.usually.empty() && form.required.empty())) {
            EXPECT_NE(succeeds(name(form)), first.isRequired) << name(form);
        }
    }
}

TEST(Description, HoldsEveryCommandThatTheParsersKnow) {
    Words forms;
    std::map<std::string, Words> known;
    for (const auto& form : commandDescriptions()) {
        forms.insert(name(form));
        Words& following = known[std::string(form.command)];
        following.emplace(form.subcommand);
        for (const auto& operand : form.operands) {
            following.insert(operand.value.choices.begin(), operand.value.choices.end());
        }
        for (const auto alias : form.aliases) {
            known[std::string(alias)];
        }
    }
    const std::string commands = usageText().substr(0, usageText().find("\nOPTIONS\n"));
    Words inHelp = matches(commands, "\n  (?!fernlow)([a-z]+(?: [a-z-]+)?) ");
    inHelp.insert({"watch resume", "help", "version"});
    EXPECT_EQ(forms, inHelp);

    for (const std::string& word : matches(sources(), "\"(-?-?[A-Za-z][A-Za-z-]*)\"")) {
        if (word != "--json" && word != "--socket" && word != "--no-launch") {
            EXPECT_EQ(outcome(word).starts_with("There is no"), !known.contains(word)) << word;
        }
        for (const auto& [command, following] : known) {
            const std::string line = command + " " + word;
            EXPECT_EQ(outcome(line).starts_with("There is no \"" + line),
                      following != Words{""} && !following.empty() && !following.contains(word) &&
                          !word.starts_with("-"))
                << line;
        }
    }
}

TEST(Description, TellsTheParsersChoicesAndRanges) {
    for (const auto& form : commandDescriptions()) {
        Options options;
        add(options, form.options);
        add(options, form.required);
        for (const auto& [word, option] : options) {
            const std::string start = wholeLine(form, option);
            const auto with = [given = start + ' ' + word + ' '](const auto& value) {
                std::ostringstream line;
                line << given << value;
                return outcome(line.str());
            };
            for (const auto choice : option->value.choices) {
                EXPECT_NE(with(choice).find(choice), std::string::npos) << choice;
            }
            const auto& [least, most, usual] = option->value.range;
            if (option->value.kind == ValueKind::number) {
                EXPECT_TRUE(!usual || with(*usual) == outcome(start)) << word;
                EXPECT_EQ(with("-5") == with(0), least >= 0) << word;
                EXPECT_EQ(with(9000000000) == with(most), most != NumberRange::highest);
            }
            if (option->value.kind == ValueKind::number || !option->value.choices.empty()) {
                EXPECT_NE(with("other").find("needs a number"), std::string::npos) << word;
            }
        }
    }
}

} // namespace fernlow::test

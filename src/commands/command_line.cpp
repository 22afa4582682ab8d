#include "commands/command_line.h"

#include "commands/command_table.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace fernlow {

namespace {

/// Returns whether the words begin with a path and all operands among them look like paths.
bool areAllPaths(const std::vector<std::string>& words) {
    return !words.empty() && looksLikePath(words.front()) &&
           std::all_of(words.begin(), words.end(), [](const std::string& word) {
               return word.starts_with('-') || looksLikePath(word);
           });
}

bool contains(std::span<const Option* const> options, const Option& option) {
    return std::find(options.begin(), options.end(), &option) != options.end();
}

} // namespace

CommandLine::CommandLine(std::vector<std::string> words, const CurrentDirectory& currentDirectory,
                         Validation validation)
    : WordList(std::move(words)), currentDirectory_(&currentDirectory), validation_(validation) {
    const auto word = takeNextWord();
    if (!word) {
        throw AgentCLIUsageError(AgentCLIUsageError::noCommand{});
    }
    command_ = findCommand(*word);
    if (command_ == nullptr) {
        throw AgentCLIUsageError(AgentCLIUsageError::unknownCommand{*word});
    }
    takeOptions(command_->beforeSubcommand);
}

void CommandLine::takeSubcommand() {
    const bool hasOnlyPaths = !command_->operands.empty() && areAllPaths(remaining());
    if (hasSubcommands(*command_) && !hasOnlyPaths) {
        if (const auto word = takeOperand()) {
            const Command* const subcommand = findSubcommand(*command_, *word);
            if (subcommand == nullptr) {
                throw unknownSubcommand(*word);
            }
            command_ = subcommand;
        }
    }
    takeOptions(command_->required);
    takeOptions(command_->options);
}

void CommandLine::takeOptions(std::span<const Option* const> options) {
    for (const Option* const option : options) {
        const auto earlier =
            std::find_if(taken_.begin(), taken_.end(), [=](const TakenOption& taken) {
                return taken.option->word == option->word;
            });
        if (earlier == taken_.end()) {
            takeOption(*option);
        } else {
            // The option stood before the subcommand, and the subcommand's row may have another
            // option with the same word. A repetition is left over and will be reported.
            earlier->option = option;
        }
    }
}

void CommandLine::takeOption(const Option& option) {
    if (option.value.kind == ValueKind::flag) {
        if (takeFlag(option.word)) {
            taken_.push_back({&option, ""});
        }
        return;
    }
    auto text = takeOptionValue(option.word);
    if (!text) {
        return;
    }
    if (validation_ == Validation::whenTaken) {
        option.validate(*text);
    }
    taken_.push_back({&option, *std::move(text)});
}

const std::string* CommandLine::find(const Option& option) const {
    const auto found = std::find_if(taken_.begin(), taken_.end(), [&](const TakenOption& taken) {
        return taken.option->word == option.word;
    });
    return found == taken_.end() ? nullptr : &found->value;
}

AgentCLIUsageError CommandLine::unknownSubcommand(const std::string& word) const {
    return AgentCLIUsageError(AgentCLIUsageError::unknownCommand{command_->name() + " " + word});
}

const std::string* CommandLine::givenText(const Option& option) const {
    if (!contains(command_->required, option) && !contains(command_->options, option)) {
        throw std::logic_error("The parser of \"" + command_->name() + "\" asks for " +
                               std::string(option.word) + ", which its row does not list.");
    }
    const auto found = std::find_if(taken_.begin(), taken_.end(), [&](const TakenOption& taken) {
        return taken.option == &option;
    });
    return found == taken_.end() ? nullptr : &found->value;
}

const std::string& CommandLine::requiredText(const Option& option) const {
    const std::string* const text = givenText(option);
    if (text == nullptr) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingValue{std::string(option.word)});
    }
    return *text;
}

std::optional<std::string> CommandLine::optionalPath(const Path& option) const {
    const std::string* const text = givenText(option);
    return text == nullptr ? std::nullopt : std::optional(resolvePath(*text, *currentDirectory_));
}

std::string CommandLine::pathOrCurrentDirectory(const Path& option) const {
    auto path = optionalPath(option);
    return path ? *std::move(path) : currentDirectory_->path();
}

std::string CommandLine::takeRequiredOperand() {
    auto word = takeOperand();
    if (!word) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingValue{command_->name()});
    }
    return *std::move(word);
}

std::vector<std::string> CommandLine::takePaths() {
    std::vector<std::string> paths = takeRemainingWords();
    for (std::string& path : paths) {
        path = resolvePath(path, *currentDirectory_);
    }
    return paths;
}

std::vector<std::string> CommandLine::takeRequiredPaths() {
    auto paths = takePaths();
    if (paths.empty()) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingPath{command_->name()});
    }
    return paths;
}

std::string CommandLine::takePathOrCurrentDirectory() {
    const auto paths = takeRemainingWords();
    return paths.empty() ? currentDirectory_->path()
                         : resolvePath(paths.front(), *currentDirectory_);
}

const Option* CommandLine::unfinishedOption() const {
    auto options = command_->allOptions();
    options.insert(options.end(), command_->beforeSubcommand.begin(),
                   command_->beforeSubcommand.end());
    const auto unfinished =
        std::find_if(options.begin(), options.end(), [this](const Option* option) {
            return option->value.kind != ValueKind::flag && find(*option) == nullptr &&
                   !remaining().empty() && remaining().back() == option->word;
        });
    return unfinished == options.end() ? nullptr : *unfinished;
}

AgentCLIAction get(const CommandLine& line, const char* path) {
    line.rejectLeftoverWords();
    return {AgentCLIAction::get{path}};
}

AgentCLIAction parseCommand(std::vector<std::string> words,
                            const CurrentDirectory& currentDirectory) {
    CommandLine line(std::move(words), currentDirectory);
    line.takeSubcommand();
    return line.command().parse(line);
}

} // namespace fernlow

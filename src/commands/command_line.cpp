#include "commands/command_line.h"

#include "commands/command_table.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace fernlow {

namespace {

bool readsAsPaths(const std::vector<std::string>& words) {
    return !words.empty() && looksLikePath(words.front()) &&
           std::all_of(words.begin(), words.end(), [](const std::string& word) {
               return word.starts_with('-') || looksLikePath(word);
           });
}

} // namespace

CommandLine::CommandLine(std::vector<std::string> words, const CurrentDirectory& currentDirectory)
    : WordList(std::move(words)), currentDirectory_(&currentDirectory) {
    const auto word = takeNextWord();
    if (!word) {
        throw AgentCLIUsageError(AgentCLIUsageError::noCommand{});
    }
    command_ = findCommand(*word, "");
    if (command_ == nullptr) {
        throw AgentCLIUsageError(AgentCLIUsageError::unknownCommand{*word});
    }
    take(command_->beforeSubcommand);
}

void CommandLine::takeSubcommand() {
    const bool mayBePaths = !command_->operands.empty() && readsAsPaths(remaining());
    if (hasSubcommands(*command_) && !mayBePaths) {
        if (const auto word = takeFirstWord()) {
            // An empty word would name the command alone.
            const auto* const found = word->empty() ? nullptr : findCommand(command_->word, *word);
            command_ = found != nullptr ? found : throw unknownSubcommand(*word);
        }
    }
    take(command_->required);
    take(command_->options);
}

void CommandLine::take(std::span<const Option* const> options) {
    for (const Option* const option : options) {
        // What the command has taken its subcommand leaves alone: a repeated option is an error.
        if (find(*option) != nullptr) {
            continue;
        }
        if (option->value.kind != ValueKind::flag) {
            if (auto text = takeOptionValue(option->word)) {
                taken_.push_back({option, *std::move(text)});
            }
        } else if (takeFlag(option->word)) {
            taken_.push_back({option, ""});
        }
    }
}

void CommandLine::validateValues() const {
    for (const auto& [option, text] : taken_) {
        option->validate(text);
    }
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

const std::string* CommandLine::listed(const Option& option) const {
    [[maybe_unused]] const auto isListed = [&] {
        const auto options = command_->allOptions();
        return std::any_of(options.begin(), options.end(),
                           [&](const Option* listed) { return listed->word == option.word; });
    };
    // Else it would be absent whatever is typed.
    assert(isListed());
    return find(option);
}

const std::string& CommandLine::requireText(const Option& option) const {
    const std::string* const text = listed(option);
    if (text == nullptr) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingValue{std::string(option.word)});
    }
    return *text;
}

std::optional<std::string> CommandLine::value(const Path& option) const {
    const std::string* const text = listed(option);
    return text == nullptr ? std::nullopt : std::optional(resolvePath(*text, *currentDirectory_));
}

std::int64_t CommandLine::value(const WholeNumber& option) const {
    const std::string* const text = listed(option);
    return text == nullptr ? option.defaultValue() : option.read(*text);
}

double CommandLine::value(const Decimal& option) const {
    const std::string* const text = listed(option);
    return text == nullptr ? option.defaultValue() : option.read(*text);
}

std::string CommandLine::pathOrCurrentDirectory(const Path& option) const {
    auto path = value(option);
    return path ? *std::move(path) : currentDirectory_->path();
}

std::string CommandLine::takeRequiredWord() {
    auto word = takeFirstWord();
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

AgentCLIAction parseCommand(std::vector<std::string> words,
                            const CurrentDirectory& currentDirectory) {
    CommandLine line(std::move(words), currentDirectory);
    // Before the subcommand is looked at, and again for what it takes itself.
    line.validateValues();
    line.takeSubcommand();
    line.validateValues();
    return line.command().parse(line);
}

} // namespace fernlow

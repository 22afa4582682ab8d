#include "completion/typed_line.h"

#include "commands/subcommand.h"

#include <algorithm>

namespace fernlow::completion {

namespace {

std::span<const OptionDescription* const> all(const OptionList& list) {
    return {list.begin(), list.size()};
}

const CommandDescription* formNamed(std::string_view command, std::string_view subcommand) {
    for (const CommandDescription& form : commandDescriptions()) {
        const bool isAlias = std::count(form.aliases.begin(), form.aliases.end(), command) > 0;
        if ((form.command == command || isAlias) && form.subcommand == subcommand) {
            return &form;
        }
    }
    return nullptr;
}

bool hasSubcommands(std::string_view command) {
    return std::any_of(commandDescriptions().begin(), commandDescriptions().end(),
                       [command](const CommandDescription& form) {
                           return form.command == command && !form.subcommand.empty();
                       });
}

bool isGlobal(const OptionDescription& option) {
    return std::count(globalOptions().begin(), globalOptions().end(), &option) > 0;
}

} // namespace

TypedLine::TypedLine(const std::vector<std::string>& words, std::size_t index) {
    for (const std::string& word : words) {
        words_.push_back({word, words_.size() == index});
    }
    if (index >= words.size()) {
        words_.push_back({"", true});
    }
    current_ = words_.at(std::min(index, words.size())).text;
    take(globalOptions());
    takeCommand();
    if (!command_.empty()) {
        take(sharedOptions(command_));
        chooseForm();
    }
    if (form_ != nullptr) {
        take(all(form_->required));
        take(all(form_->options));
    }
    bool isBefore = true;
    for (Word& word : words_) {
        isBefore = isBefore && !word.isCurrent;
        operandsBefore_ += isBefore ? 1 : 0;
        if (!word.isCurrent) {
            operands_.push_back(std::move(word.text));
        }
    }
}

void TypedLine::take(std::span<const OptionDescription* const> options) {
    std::vector<Word> kept;
    for (auto word = words_.begin(); word != words_.end(); ++word) {
        const auto option =
            std::find_if(options.begin(), options.end(),
                         [&](const auto* candidate) { return candidate->word == word->text; });
        const bool isFlag = option != options.end() && (*option)->value.kind == ValueKind::none;
        const auto value = isFlag ? word : std::next(word);
        const bool isRepeated =
            option != options.end() && valueOf(word->text) != nullptr && !isGlobal(**option);
        if (option == options.end() || isRepeated || word->isCurrent || value == words_.end()) {
            kept.push_back(std::move(*word));
            continue;
        }
        taken_[word->text] = isFlag ? "" : value->text;
        if (value->isCurrent) {
            awaiting_ = *option;
        }
        word = value;
    }
    words_ = std::move(kept);
}

void TypedLine::takeCommand() {
    if (!words_.empty() && !words_.front().isCurrent) {
        command_ = std::move(words_.front().text);
        words_.erase(words_.begin());
    }
}

void TypedLine::chooseForm() {
    form_ = formNamed(command_, "");
    if (!hasSubcommands(command_)) {
        return;
    }
    const auto end =
        std::find_if(words_.begin(), words_.end(), [](const Word& word) { return word.isCurrent; });
    std::vector<std::string> before;
    std::transform(words_.begin(), end, std::back_inserter(before),
                   [](const Word& word) { return word.text; });
    WordList list(std::move(before));
    const bool takesPath = form_ != nullptr && !form_->operands.empty();
    const auto subcommand = takesPath ? takeSubcommand(list) : list.takeFirstWord();
    if (!subcommand) {
        mayBeSubcommand_ = list.left().empty();
        return;
    }
    form_ = formNamed(command_, *subcommand);
    words_.erase(std::find_if(words_.begin(), words_.end(),
                              [&](const Word& word) { return word.text == *subcommand; }));
}

bool TypedLine::has(const OptionDescription& option) const {
    return taken_.find(option.word) != taken_.end() ||
           (!option.opposite.empty() && taken_.find(option.opposite) != taken_.end());
}

const std::string* TypedLine::valueOf(std::string_view option) const {
    const auto found = taken_.find(option);
    return found == taken_.end() ? nullptr : &found->second;
}

} // namespace fernlow::completion

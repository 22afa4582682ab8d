#include "completion/typed_line.h"

#include "commands/command_table.h"
#include "commands/options.h"
#include "commands/usage_error.h"

#include <utility>

namespace fernlow::completion {

namespace {

CommandLine parsed(std::vector<std::string> words, const CurrentDirectory& currentDirectory) {
    CommandLine line(std::move(words), currentDirectory, Validation::none);
    line.takeSubcommand();
    return line;
}

} // namespace

TypedLine::TypedLine(std::vector<std::string> words, std::size_t index,
                     const CurrentDirectory& currentDirectory) {
    if (index >= words.size()) {
        index = words.size();
        words.emplace_back();
    }
    current_ = words[index];
    std::vector<std::string> after(words.begin() + static_cast<std::ptrdiff_t>(index) + 1,
                                   words.end());
    words.resize(index);

    globals_.take(words);
    awaiting_ = globals_.lacksSocketPath() ? &options::socket : nullptr;
    globals_.take(after);
    if (words.empty()) {
        return;
    }
    before_ = parsed(words, currentDirectory);
    if (awaiting_ == nullptr && before_->unfinishedOption() != nullptr) {
        awaiting_ = before_->unfinishedOption();
        words.push_back(current_);
    }
    words.insert(words.end(), after.begin(), after.end());
    try {
        whole_ = parsed(std::move(words), currentDirectory);
    } catch (const AgentCLIUsageError&) {
        // The subcommand is still being typed, and a word after the cursor was read as one.
        whole_ = before_;
    }
}

bool TypedLine::mayBeSubcommand() const {
    return before_ && before_->command().subcommand.empty() && before_->remaining().empty() &&
           hasSubcommands(before_->command());
}

} // namespace fernlow::completion

#include "commands/words.h"

#include "commands/usage_error.h"

#include <algorithm>

namespace fernlow {

std::optional<std::string> WordList::takeNextWord() {
    if (words_.empty()) {
        return std::nullopt;
    }
    std::string word = std::move(words_.front());
    words_.erase(words_.begin());
    return word;
}

bool WordList::takeFlag(std::string_view flag) {
    const auto found = std::find(words_.begin(), words_.end(), flag);
    if (found == words_.end()) {
        return false;
    }
    words_.erase(found);
    return true;
}

std::optional<std::string> WordList::takeOptionValue(std::string_view option) {
    const auto found = std::find(words_.begin(), words_.end(), option);
    if (found == words_.end() || found + 1 == words_.end()) {
        return std::nullopt;
    }
    std::string value = std::move(found[1]);
    words_.erase(found, found + 2);
    return value;
}

std::optional<std::string> WordList::takeOperand() {
    const auto found = std::find_if(words_.begin(), words_.end(),
                                    [](const std::string& word) { return !word.starts_with('-'); });
    if (found == words_.end()) {
        return std::nullopt;
    }
    std::string word = std::move(*found);
    words_.erase(found);
    return word;
}

std::vector<std::string> WordList::takeRemainingWords() {
    for (const std::string& word : words_) {
        if (word.starts_with("--")) {
            throw AgentCLIUsageError(AgentCLIUsageError::unknownOption{word});
        }
    }
    return std::exchange(words_, {});
}

void WordList::rejectLeftoverWords() const {
    if (words_.empty()) {
        return;
    }
    const std::string& word = words_.front();
    if (word.starts_with('-')) {
        throw AgentCLIUsageError(AgentCLIUsageError::unknownOption{word});
    }
    throw AgentCLIUsageError(AgentCLIUsageError::unexpectedArgument{word});
}

} // namespace fernlow

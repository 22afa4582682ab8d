#include "commands/words.h"

#include "bytes/number.h"
#include "commands/usage_error.h"

#include <algorithm>
#include <cstdlib>

namespace fernlow {

namespace {

std::optional<std::int64_t> readWholeNumber(const std::string& text) {
    return number::readInteger(text);
}

std::optional<std::uint64_t> readCursor(const std::string& text) {
    const auto cursor = number::readInteger(text);
    return cursor && *cursor >= 0 ? std::optional(static_cast<std::uint64_t>(*cursor))
                                  : std::nullopt;
}

std::optional<double> readDecimalNumber(const std::string& text) {
    // strtod skips leading blanks and reads hexadecimal and "nan(...)"; none of them is a decimal
    // number here. No locale is ever set in this process, so the point is a point.
    if (text.empty() || text.find_first_of(" \t\n\v\f\rxX(") != std::string::npos) {
        return std::nullopt;
    }
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (end != text.c_str() + text.size()) {
        return std::nullopt;
    }
    return number;
}

} // namespace

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

template <class Number>
std::optional<Number> WordList::takeNumber(std::string_view option,
                                           std::optional<Number> (*read)(const std::string& text)) {
    const auto text = takeOptionValue(option);
    if (!text) {
        return std::nullopt;
    }
    const auto number = read(*text);
    if (!number) {
        throw AgentCLIUsageError(AgentCLIUsageError::notANumber{std::string(option), *text});
    }
    return number;
}

std::optional<std::int64_t> WordList::takeWholeNumber(std::string_view option) {
    return takeNumber(option, readWholeNumber);
}

std::optional<std::uint64_t> WordList::takeCursor(std::string_view option) {
    return takeNumber(option, readCursor);
}

std::optional<double> WordList::takeDecimalNumber(std::string_view option) {
    return takeNumber(option, readDecimalNumber);
}

std::optional<std::string> WordList::takeFirstWord() {
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
    rejectUnknownOptions();
    return std::exchange(words_, {});
}

std::vector<std::string> WordList::takePaths(const CurrentDirectory& currentDirectory,
                                             std::string_view description, Paths need) {
    std::vector<std::string> paths = takeRemainingWords();
    for (std::string& path : paths) {
        path = resolvePath(path, currentDirectory);
    }
    if (paths.empty() && need == Paths::required) {
        throw AgentCLIUsageError(AgentCLIUsageError::missingPath{std::string(description)});
    }
    return paths;
}

std::string WordList::takePathOrCurrentDirectory(const CurrentDirectory& currentDirectory) {
    const auto paths = takeRemainingWords();
    return paths.empty() ? currentDirectory.path() : resolvePath(paths.front(), currentDirectory);
}

void WordList::rejectLeftoverWords() const {
    if (words_.empty()) {
        return;
    }
    const std::string& word = words_.front();
    throw word.starts_with('-') ? AgentCLIUsageError(AgentCLIUsageError::unknownOption{word})
                                : AgentCLIUsageError(AgentCLIUsageError::unexpectedArgument{word});
}

void WordList::rejectUnknownOptions() const {
    for (const std::string& word : words_) {
        if (word.starts_with("--")) {
            throw AgentCLIUsageError(AgentCLIUsageError::unknownOption{word});
        }
    }
}

} // namespace fernlow

#include "cli/words.h"

#include "cli/usage_error.h"
#include "json/number.h"
#include "platform/platform.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace fernlow {

namespace {

std::optional<std::int64_t> readWholeNumber(const std::string& text) {
    return json::readInteger(text);
}

std::optional<std::uint64_t> readCursor(const std::string& text) {
    const auto number = json::readInteger(text);
    return number && *number >= 0 ? std::optional(static_cast<std::uint64_t>(*number))
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

std::string expandTilde(std::string_view word) {
    const std::size_t nameEnd = std::min(word.find('/'), word.size());
    const std::string_view user = word.substr(1, nameEnd - 1);
    const auto home =
        user.empty() ? platform::homeFolder() : platform::homeFolderOf(std::string(user));
    return home ? *home + std::string(word.substr(nameEnd)) : std::string(word);
}

/// An absolute path without empty, "." and ".." components. ".." at the root stays at the root.
std::string standardized(std::string_view path) {
    std::string result;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        const std::string_view component = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (component == "..") {
            result.erase(std::min(result.rfind('/'), result.size()));
        } else if (!component.empty() && component != ".") {
            result.append("/").append(component);
        }
    }
    return result.empty() ? "/" : result;
}

} // namespace

CurrentDirectory CurrentDirectory::ofProcess() {
    CurrentDirectory directory;
    struct Free {
        void operator()(char* text) const { std::free(text); }
    };
    // Both systems allocate a result of any length when they are given no buffer.
    const std::unique_ptr<char, Free> path(::getcwd(nullptr, 0));
    // Linux reports a folder outside the process's root with "(unreachable)" in front.
    if (path != nullptr && *path == '/') {
        directory.path_ = path.get();
    }
    return directory;
}

const std::string& CurrentDirectory::path() const {
    if (!path_) {
        throw CurrentDirectoryError(
            "The current directory cannot be read, so paths cannot be worked out from it.");
    }
    return *path_;
}

std::string resolvePath(std::string_view word, const CurrentDirectory& currentDirectory) {
    if (word.starts_with('~')) {
        return expandTilde(word);
    }
    if (word.starts_with('/')) {
        return std::string(word);
    }
    return standardized(currentDirectory.path() + "/" + std::string(word));
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

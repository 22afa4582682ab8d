#include "commands/paths.h"

#include "platform/platform.h"

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>

namespace fernlow {

namespace {

std::string expandTilde(std::string_view word) {
    const std::size_t nameEnd = std::min(word.find('/'), word.size());
    const std::string_view user = word.substr(1, nameEnd - 1);
    const auto home =
        user.empty() ? platform::homeFolder() : platform::homeFolderOf(std::string(user));
    return home ? *home + std::string(word.substr(nameEnd)) : std::string(word);
}

/// Removes empty, "." and ".." components from an absolute path. The parent of "/" is "/".
std::string withoutDotComponents(std::string_view path) {
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

/// Returns the absolute path of the folder that this process works in, or nothing if the folder is
/// unreadable.
std::optional<std::string> workingDirectory() {
    struct Free {
        void operator()(char* text) const { std::free(text); }
    };
    // Without a buffer, getcwd allocates one of any length; musl limits it to PATH_MAX.
    const std::unique_ptr<char, Free> path(::getcwd(nullptr, 0));
    return path == nullptr ? std::nullopt : std::optional<std::string>(path.get());
}

} // namespace

const std::string& CurrentDirectory::path() const {
    if (!path_) {
        path_ = workingDirectory();
    }
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
    return withoutDotComponents(currentDirectory.path() + "/" + std::string(word));
}

bool looksLikePath(std::string_view word) {
    if (word.starts_with('/') || word.starts_with('~') || word.starts_with('.')) {
        return true;
    }
    // A word with "=" is a setting whose value contains a "/"; the word "set" was forgotten.
    return word.find('/') != std::string_view::npos && word.find('=') == std::string_view::npos;
}

} // namespace fernlow

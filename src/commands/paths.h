#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace fernlow {

/// The folder that relative paths start from, as the operating system reports it. It can be
/// unreadable, for example because it was deleted. Only commands that use it then fail.
class CurrentDirectory {
public:
    /// Uses the folder with this absolute path.
    explicit CurrentDirectory(std::string path) : path_(std::move(path)) {}

    /// Returns the current directory of this process. The system is asked for the path when the
    /// path is first used, because most commands do not use it.
    static CurrentDirectory ofProcess() { return {}; }

    /// Returns the absolute path. Throws CurrentDirectoryError if the folder is unreadable.
    [[nodiscard]] const std::string& path() const;

private:
    CurrentDirectory() = default;

    /// Nothing until path() has asked the system, or if the folder is unreadable.
    mutable std::optional<std::string> path_;
};

/// The error of a command that uses an unreadable current directory. Its message is a sentence for
/// the user.
class CurrentDirectoryError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Returns the absolute path that a word names. A leading "~" or "~user" is replaced by the home
/// folder, if that is known. An absolute path stays unchanged. Any other path is joined to the
/// current directory, and its ".", ".." and empty components are removed without looking at the
/// disk. Throws CurrentDirectoryError.
std::string resolvePath(std::string_view word, const CurrentDirectory& currentDirectory);

/// Returns whether the word can only be a path: it begins with "/", "~" or ".", or it contains a
/// "/" and no "=".
bool looksLikePath(std::string_view word);

} // namespace fernlow

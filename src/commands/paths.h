#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace fernlow {

/// The folder that relative paths are read against, as the operating system reports it. It may be
/// unreadable (deleted under the shell), which matters only to a command that asks for it.
class CurrentDirectory {
public:
    /// A known folder: an absolute path.
    explicit CurrentDirectory(std::string path) : path_(std::move(path)) {}

    /// The folder of this process.
    static CurrentDirectory ofProcess();

    /// Throws CurrentDirectoryError when the folder is unreadable.
    [[nodiscard]] const std::string& path() const;

private:
    CurrentDirectory() = default;

    std::optional<std::string> path_;
};

/// The current directory is needed and cannot be read. The message is a sentence for the user.
class CurrentDirectoryError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The absolute path that a word names: "~" and "~user" expanded and otherwise left alone, an
/// absolute path unchanged, anything else joined to the current directory with ".", ".." and empty
/// components resolved by name. Nothing on disk is looked at.
std::string resolvePath(std::string_view word, const CurrentDirectory& currentDirectory);

/// Whether the word can only be meant as a path: it begins with "/", "~" or ".", or holds a "/" and
/// no "=".
bool looksLikePath(std::string_view word);

} // namespace fernlow

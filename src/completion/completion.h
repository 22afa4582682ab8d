#pragma once

#include "commands/paths.h"
#include "completion/candidates.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

/// Completes a typed line for the shells.
namespace fernlow::completion {

/// The names on the disk that the word may be, besides the candidates.
enum class PathKind { none, folder, file };

struct Completions {
    std::vector<Candidate> candidates;
    PathKind paths = PathKind::none;
};

/// Stands in a word for text that the shell has yet to expand.
constexpr char unknownText = '\0';

/// Returns whether the program will get the word unchanged.
bool isKnown(const std::string& word);

struct CompletionContext {
    Shell shell;
    /// The folder that the shell puts in place of "~".
    std::string home;
    CurrentDirectory currentDirectory;
    /// When to stop waiting for the application and reading folders.
    std::chrono::steady_clock::time_point deadline;
};

/// Returns the candidates for the word at `index`. `words` are the words after the program's name,
/// and the word at `index` as far as it has been typed. The candidates need not begin with that
/// word, because zsh and fish match words in ways of their own. Asks the application for names
/// that only it knows, if it is running and each of the words isKnown(), and never starts it. A
/// line that is already wrong has no candidates. Throws only std::bad_alloc.
Completions complete(const std::vector<std::string>& words, std::size_t index,
                     const CompletionContext& context);

} // namespace fernlow::completion

#pragma once

#include "commands/paths.h"
#include "completion/candidates.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

/// Completes a typed line for the shells.
namespace fernlow::completion {

/// The kind of names on the disk that the word may be, besides the candidates.
enum class PathKind { none, folder, file };

struct Completions {
    std::vector<Candidate> candidates;
    PathKind paths = PathKind::none;
};

/// The placeholder in a word for text that the shell has not expanded yet.
constexpr char unknownText = '\0';

/// Returns whether the word contains no unknownText.
bool isKnown(const std::string& word);

struct CompletionContext {
    Shell shell;
    /// The folder that the shell puts in place of "~".
    std::string home;
    CurrentDirectory currentDirectory;
    /// The deadline for waiting for the application and for reading folders.
    std::chrono::steady_clock::time_point deadline;
};

/// Returns the candidates for the word at `index`. `words` are the words after the program's name;
/// the word at `index` ends at the cursor. The candidates need not begin with that word, because
/// zsh and fish match words in other ways too. Asks the application for names that only it knows,
/// if it is running and each of the words isKnown(), and never starts it. A line with a mistake
/// before the cursor has no candidates. Throws only std::bad_alloc.
Completions complete(const std::vector<std::string>& words, std::size_t index,
                     const CompletionContext& context);

} // namespace fernlow::completion

#pragma once

#include "commands/paths.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// What completes a typed line, for the shells.
namespace fernlow::completion {

struct Candidate {
    /// The whole word, unquoted; one that ends with "=" is only the beginning of a word.
    std::string value;
    /// One line for a person, or empty.
    std::string description;
};

struct Completions {
    std::vector<Candidate> candidates;
    /// Files, or folders, belong here too; folders where no project begins like what is typed.
    bool files = false;
    bool folders = false;
};

/// Which of the shell's own completions are wanted too: "files", "folders" or "nothing".
std::string_view shellsOwn(const Completions& completions);

/// Stands in a word for what the shell has yet to expand.
constexpr char unknownText = '\0';

/// Whether the program will get the word as it is.
bool isKnown(const std::string& word);

/// Whether the text can neither break a line of output nor play tricks on a terminal: much of what
/// the application tells, and of what lies on the disk, comes from projects that somebody has
/// downloaded.
bool isHarmless(const std::string& text);

/// More than anybody looks through; shells become slow with many.
constexpr std::size_t maxCandidates = 2000;

/// What completing uses of the world around it.
struct CompletionContext {
    CurrentDirectory currentDirectory;
    /// The application is not waited for any longer.
    std::chrono::steady_clock::time_point deadline;
};

/// What the word at `index` may be; `words` are those after the program's name, the one at `index`
/// as far as it has been typed. Candidates are not narrowed to those that begin like it: shells
/// have their own ideas of what fits. Asks the application for what only it knows, if it is
/// running and each of the words isKnown(), and never starts it. A line that is wrong already gives
/// nothing. May throw std::bad_alloc alone.
Completions complete(const std::vector<std::string>& words, std::size_t index,
                     const CompletionContext& context);

} // namespace fernlow::completion

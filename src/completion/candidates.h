#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace fernlow::completion {

enum class Shell { bash, fish, zsh };

struct Candidate {
    /// The whole word, unquoted. A value that ends with "=" or "/" is only the beginning of a word.
    std::string value;
    /// One line for a person, or empty.
    std::string description;
};

/// The limit for one completion. Shells become slow with many candidates.
constexpr std::size_t maxCandidates = 2000;

/// Adds names from the application or the disk to the candidates, each with `folder` in front of
/// it. The names that begin with the typed word come first, because the number and the total size
/// of the candidates are limited.
///
/// This is the only check of names that strangers have chosen. It leaves out a name that the shell
/// would change on the command line, that breaks a line of output or plays tricks on a terminal,
/// or that is too long. It clears a description for the last two reasons.
void addNames(std::vector<Candidate>& candidates, const std::vector<Candidate>& names,
              std::string_view folder, std::string_view typed, Shell shell);

} // namespace fernlow::completion

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

/// The maximum number of candidates of one completion. Shells become slow with more.
constexpr std::size_t maxCandidates = 2000;

/// Adds names from the application or the disk to the candidates, each with `folder` before it. The
/// names that begin with the typed word come first, because the number and the total size of the
/// candidates are limited.
///
/// No other function checks names that strangers have chosen. This function leaves out a name that
/// the shell would change on the command line, that contains a control character, a line break or
/// ill-formed UTF-8, or that is too long. It clears a description that is too long or contains one
/// of these.
void addNames(std::vector<Candidate>& candidates, const std::vector<Candidate>& names,
              std::string_view folder, std::string_view typed, Shell shell);

} // namespace fernlow::completion

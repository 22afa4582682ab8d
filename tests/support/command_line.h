#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace fernlow::test {

/// Splits a line into words at spaces. A word with spaces, or an empty word, is in 'single quotes'.
std::vector<std::string> splitWords(std::string_view line);

/// Parses a command line and returns the result as one line: "GET /path", "POST /path {body}",
/// "help", "version" or the error message.
std::string outcome(std::string_view line, const std::string& currentDirectory = "/p/src");

/// Returns `text` with each occurrence of `piece` replaced.
std::string replaceAll(std::string text, std::string_view piece, std::string_view replacement);

using Words = std::set<std::string>;

/// Returns all matches of the first group of a regular expression in a text.
Words matches(const std::string& text, const char* pattern);

} // namespace fernlow::test

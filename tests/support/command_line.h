#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace fernlow::test {

/// The words of a line as a shell would split it: at spaces, with 'single quotes' around words that
/// hold spaces or nothing.
std::vector<std::string> splitWords(std::string_view line);

/// What a command line typed in `currentDirectory` comes to, as one line: "GET /path",
/// "POST /path {body}", "help", "version", or the message of the error that it ends with.
std::string outcome(std::string_view line, const std::string& currentDirectory = "/p/src");

/// Returns `text` with each occurrence of `piece` replaced.
std::string replaceAll(std::string text, std::string_view piece, std::string_view replacement);

using Words = std::set<std::string>;

/// What a regular expression's first group matches, anywhere in a text.
Words matches(const std::string& text, const char* pattern);

} // namespace fernlow::test

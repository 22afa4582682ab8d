#pragma once

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

} // namespace fernlow::test

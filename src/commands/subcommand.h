#pragma once

#include "commands/words.h"

#include <optional>
#include <string>

namespace fernlow {

/// Whether the word can only be meant as a path: it begins with "/", "~" or ".", or holds a "/" and
/// no "=".
bool looksLikePath(const std::string& word);

/// The subcommand of a family whose listing takes a path: "settings", "files" and "collections".
///
/// It is the first word that doesn't begin with "-", unless all that is left reads as paths: the
/// first word, and every other one that doesn't begin with "-", begins with "/", "~" or ".", or
/// holds a "/" and no "=". Then there is no subcommand and the words stay where they are. So
/// "settings ./site" lists a project, a bare folder name has to be written "./name", and a mistyped
/// or forgotten subcommand is still reported.
std::optional<std::string> takeSubcommand(WordList& words);

} // namespace fernlow

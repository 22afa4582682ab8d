#include "commands/subcommand.h"

#include <algorithm>

namespace fernlow {

bool looksLikePath(const std::string& word) {
    if (word.starts_with('/') || word.starts_with('~') || word.starts_with('.')) {
        return true;
    }
    // A "/" behind a "=" is that of a setting's value, where "set" was forgotten.
    return word.find('/') != std::string::npos && word.find('=') == std::string::npos;
}

std::optional<std::string> takeSubcommand(WordList& words) {
    const auto& left = words.left();
    if (left.empty()) {
        return std::nullopt;
    }
    const bool onlyPaths = looksLikePath(left.front()) &&
                           std::all_of(left.begin(), left.end(), [](const std::string& word) {
                               return word.starts_with('-') || looksLikePath(word);
                           });
    return onlyPaths ? std::nullopt : words.takeFirstWord();
}

} // namespace fernlow

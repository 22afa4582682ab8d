#include "completion/candidates.h"

#include "bytes/utf8.h"
#include "terminal/visible_controls.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace fernlow::completion {

namespace {

/// In bytes, without the typed word that a name may begin with.
constexpr std::size_t maxTotalSize = std::size_t{64} * 1024;
constexpr std::size_t maxTextLength = 512;

/// Whether the text is one short line of UTF-8 without control characters.
bool isPrintable(std::string_view text) {
    const bool hasControl = std::any_of(text.begin(), text.end(), [](char character) {
        return static_cast<unsigned char>(character) < ' ';
    });
    return text.size() <= maxTextLength && !hasControl && utf8::isWellFormed(text) &&
           !withVisibleControls(text);
}

/// Whether the text begins with a character that some C library counts as white space.
bool beginsWithUnicodeSpace(std::string_view text) {
    constexpr auto others = std::to_array<std::string_view>({
        "\u0085",
        "\u00A0",
        "\u1680",
        "\u180E",
        "\u2028",
        "\u2029",
        "\u202F",
        "\u205F",
        "\u2060",
        "\u3000",
        "\uFEFF",
    });
    // U+2000 to U+200B are spaces of various widths.
    return (text >= "\u2000" && text < "\u200C") ||
           std::any_of(others.begin(), others.end(),
                       [&](std::string_view space) { return text.starts_with(space); });
}

/// Whether the shell passes a word that begins with the name on as that very word.
bool isKeptBy(Shell shell, std::string_view name) {
    // The shell would expand it where a person has typed "~/" without quotes.
    if (name.starts_with("~/")) {
        return false;
    }
    // fish quotes neither a "~" at the beginning nor its own process id, and skips such spaces.
    return shell != Shell::fish ||
           !(name.starts_with('~') || name.starts_with("%self") || beginsWithUnicodeSpace(name));
}

} // namespace

void addNames(std::vector<Candidate>& candidates, const std::vector<Candidate>& names,
              std::string_view folder, std::string_view typed, Shell shell) {
    std::size_t totalSize = 0;
    for (const bool beginsAsTyped : {true, false}) {
        for (const auto& [name, description] : names) {
            const std::string value = std::string(folder) + name;
            if (value.starts_with(typed) != beginsAsTyped || !isPrintable(name) ||
                (folder.empty() && !isKeptBy(shell, name))) {
                continue;
            }
            const std::string shown = isPrintable(description) ? description : "";
            totalSize += name.size() + shown.size();
            if (candidates.size() >= maxCandidates || totalSize > maxTotalSize) {
                return;
            }
            candidates.push_back({value, shown});
        }
    }
}

} // namespace fernlow::completion

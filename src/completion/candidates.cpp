#include "completion/candidates.h"

#include "terminal/visible_controls.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace fernlow::completion {

namespace {

/// The maximum size in bytes of all names and descriptions, without the folder before the names.
constexpr std::size_t maxTotalSize = std::size_t{64} * 1024;
/// The maximum size in bytes of one name or description.
constexpr std::size_t maxTextSize = 512;

/// Returns whether the text is one short line of UTF-8 without control characters.
bool isPrintable(std::string_view text) {
    const bool hasControl = std::any_of(text.begin(), text.end(), [](char character) {
        return static_cast<unsigned char>(character) < ' ';
    });
    return text.size() <= maxTextSize && !hasControl && !withVisibleControls(text);
}

/// Returns whether the text begins with a character that some C library counts as white space.
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

/// Returns whether the shell leaves the name unchanged at the beginning of a word.
bool isKeptBy(Shell shell, std::string_view name) {
    // The shell would expand the name after an unquoted "~/".
    if (name.starts_with("~/")) {
        return false;
    }
    // At the beginning of a word, fish quotes neither "~" nor "%self" and skips Unicode spaces.
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

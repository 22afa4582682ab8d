#include "terminal/visible_controls.h"

#include "bytes/utf8.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace fernlow {

namespace {

constexpr char escape = '\x1B';
constexpr std::string_view colourReset = "\x1B[0m";

/// Nearly every character of nearly every text.
bool isPrintableASCII(char character) {
    return character >= ' ' && character <= '~';
}

/// Whether the text begins with eight of them, told at once.
bool beginsPrintable(std::string_view text) {
    std::uint64_t eight = 0;
    if (text.size() < sizeof eight) {
        return false;
    }
    std::memcpy(&eight, text.data(), sizeof eight);
    // A byte's highest bit is set here when the byte lies beyond "~" or, less a space, below zero.
    const std::uint64_t odd = eight | (eight + 0x0101010101010101U) | (eight - 0x2020202020202020U);
    return (odd & 0x8080808080808080U) == 0;
}

/// The length of the colour sequence that the text begins with; 0 where it begins with none.
std::size_t colourLength(std::string_view text) {
    if (!text.starts_with("\x1B[")) {
        return 0;
    }
    const std::size_t end = text.find_first_not_of("0123456789;", 2);
    return end != std::string_view::npos && text[end] == 'm' ? end + 1 : 0;
}

bool isControl(std::string_view character) {
    if (character.size() == 1) {
        return character.front() < ' ' || character.front() == '\x7F';
    }
    // C1 is U+0080 to U+009F; the others are U+202A to U+202E and U+2066 to U+2069.
    // NOLINTBEGIN(misc-misleading-bidirectional): they are what is looked for.
    return (character >= "\xC2\x80" && character <= "\xC2\x9F") ||
           (character >= "\xE2\x80\xAA" && character <= "\xE2\x80\xAE") ||
           (character >= "\xE2\x81\xA6" && character <= "\xE2\x81\xA9");
    // NOLINTEND(misc-misleading-bidirectional)
}

enum class Passed : std::uint8_t { harmless, unfit, colour, endOfColour };

/// One step through a text: how far it leads, and over what.
struct Step {
    std::size_t length;
    Passed passed;
};

/// The step over the escape character that the text begins with.
Step stepOverEscape(std::string_view text) {
    const std::size_t length = colourLength(text);
    if (length == 0) {
        return {1, Passed::unfit};
    }
    const bool ends = text.substr(0, length).find_first_of("123456789") == std::string_view::npos;
    return {length, ends ? Passed::endOfColour : Passed::colour};
}

Step firstStep(std::string_view text) {
    switch (text.front()) {
    case '\t':
    case '\n':
        return {1, Passed::harmless};
    case '\r':
        // The text's own end counts: a line break is written behind it.
        return {1, text.size() > 1 && text[1] != '\n' ? Passed::unfit : Passed::harmless};
    case escape:
        return stepOverEscape(text);
    default: {
        const auto [length, wellFormed] = utf8::firstSequence(text);
        const bool fit = wellFormed && !isControl(text.substr(0, length));
        return {length, fit ? Passed::harmless : Passed::unfit};
    }
    }
}

/// The length of what is fit at the text's beginning. Keeps track of whether a colour is on.
std::size_t fitLength(std::string_view text, bool& coloured) {
    std::size_t at = 0;
    while (at < text.size()) {
        if (beginsPrintable(text.substr(at))) {
            at += 8;
            continue;
        }
        if (isPrintableASCII(text[at])) {
            ++at;
            continue;
        }
        const Step step = firstStep(text.substr(at));
        if (step.passed == Passed::unfit) {
            break;
        }
        if (step.passed != Passed::harmless) {
            coloured = step.passed == Passed::colour;
        }
        at += step.length;
    }
    return at;
}

} // namespace

std::optional<ByteBuffer> withVisibleControls(std::string_view text) {
    bool coloured = false;
    std::size_t fit = fitLength(text, coloured);
    if (fit == text.size() && !coloured) {
        return std::nullopt;
    }
    ByteBuffer visible;
    for (;;) {
        visible.append(text.substr(0, fit));
        text.remove_prefix(fit);
        if (text.empty()) {
            break;
        }
        visible.append(utf8::replacementCharacter);
        text.remove_prefix(firstStep(text).length);
        fit = fitLength(text, coloured);
    }
    if (coloured) {
        visible.append(colourReset);
    }
    return visible;
}

} // namespace fernlow

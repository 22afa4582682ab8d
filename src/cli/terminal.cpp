#include "cli/terminal.h"

#include "bytes/utf8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace fernlow {

namespace {

constexpr char escape = '\x1B';

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
        const auto byte = static_cast<unsigned char>(character.front());
        return byte < 0x20 || (byte >= 0x7F && byte < 0xA0);
    }
    // C1 is U+0080 to U+009F; the others are U+202A to U+202E and U+2066 to U+2069.
    // NOLINTBEGIN(misc-misleading-bidirectional): they are what is looked for.
    return (character >= "\xC2\x80" && character <= "\xC2\x9F") ||
           (character >= "\xE2\x80\xAA" && character <= "\xE2\x80\xAE") ||
           (character >= "\xE2\x81\xA6" && character <= "\xE2\x81\xA9");
    // NOLINTEND(misc-misleading-bidirectional)
}

/// One step through a text: how far it leads, and whether it is over a control character.
struct Step {
    std::size_t length;
    bool overControl;
};

Step firstStep(std::string_view text) {
    switch (text.front()) {
    case '\t':
    case '\n':
        return {1, false};
    case '\r':
        // The text's own end counts: a line break is written behind it.
        return {1, text.size() > 1 && text[1] != '\n'};
    case escape: {
        const std::size_t colour = colourLength(text);
        return {std::max<std::size_t>(colour, 1), colour == 0};
    }
    default: {
        const std::size_t length = utf8::firstSequence(text).length;
        return {length, isControl(text.substr(0, length))};
    }
    }
}

/// Where the first control character stands; the text's size where there is none.
std::size_t firstControl(std::string_view text) {
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
        if (step.overControl) {
            break;
        }
        at += step.length;
    }
    return at;
}

} // namespace

std::optional<ByteBuffer> withVisibleControls(std::string_view text) {
    std::size_t harmless = firstControl(text);
    if (harmless == text.size()) {
        return std::nullopt;
    }
    ByteBuffer visible;
    for (;;) {
        visible.append(text.substr(0, harmless));
        text.remove_prefix(harmless);
        if (text.empty()) {
            return visible;
        }
        visible.append(utf8::replacementCharacter);
        text.remove_prefix(firstStep(text).length);
        harmless = firstControl(text);
    }
}

} // namespace fernlow

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

/// Whether a well-formed character is one that a terminal obeys.
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

/// Goes through a text from one place that isn't fit for a terminal to the next.
class Scan {
public:
    explicit Scan(std::string_view text) : text_(text) {}

    /// The text up to the next such place.
    std::string_view takeHarmless() {
        std::size_t at = 0;
        while (at < text_.size()) {
            if (beginsPrintable(text_.substr(at))) {
                at += 8;
            } else if (isPrintableASCII(text_[at])) {
                ++at;
            } else if (const std::size_t length = harmlessLength(text_.substr(at)); length > 0) {
                at += length;
            } else {
                break;
            }
        }
        const std::string_view harmless = text_.substr(0, at);
        text_.remove_prefix(at);
        return harmless;
    }

    /// Passes over that place.
    void skip() { text_.remove_prefix(utf8::firstSequence(text_).length); }

    [[nodiscard]] bool isOver() const { return text_.empty(); }

    /// Whether a colour has been switched on since the last that switched all off.
    [[nodiscard]] bool isColoured() const { return isColoured_; }

private:
    /// How long the character or colour is that the text begins with; 0 where it isn't harmless.
    std::size_t harmlessLength(std::string_view text) {
        switch (text.front()) {
        case '\t':
        case '\n':
            return 1;
        case '\r':
            // The text's own end counts: a line break is written behind it.
            return text.size() == 1 || text[1] == '\n' ? 1 : 0;
        case escape: {
            const std::size_t length = colourLength(text);
            if (length > 0) {
                isColoured_ =
                    text.substr(0, length).find_first_not_of("\x1B[0;m") != std::string_view::npos;
            }
            return length;
        }
        default: {
            const auto [length, wellFormed] = utf8::firstSequence(text);
            return wellFormed && !isControl(text.substr(0, length)) ? length : 0;
        }
        }
    }

    std::string_view text_;
    bool isColoured_ = false;
};

} // namespace

std::optional<ByteBuffer> withVisibleControls(std::string_view text) {
    Scan scan(text);
    std::string_view harmless = scan.takeHarmless();
    if (scan.isOver() && !scan.isColoured()) {
        return std::nullopt;
    }
    ByteBuffer visible;
    visible.append(harmless);
    while (!scan.isOver()) {
        visible.append(utf8::replacementCharacter);
        scan.skip();
        visible.append(scan.takeHarmless());
    }
    if (scan.isColoured()) {
        visible.append("\x1B[0m");
    }
    return visible;
}

} // namespace fernlow

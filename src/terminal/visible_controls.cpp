#include "terminal/visible_controls.h"

#include "bytes/utf8.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace fernlow {

namespace {

constexpr char escape = '\x1B';
constexpr std::string_view colourReset = "\x1B[0m";

bool isPrintableASCII(char character) {
    return character >= ' ' && character <= '~';
}

/// Returns whether the text begins with eight printable ASCII characters. Most text consists of
/// them, and testing eight at once is faster than one by one.
bool beginsPrintable(std::string_view text) {
    std::uint64_t bytes = 0;
    if (text.size() < sizeof bytes) {
        return false;
    }
    std::memcpy(&bytes, text.data(), sizeof bytes);
    // A byte's highest bit is set in the first term if the byte is not ASCII, in the second if it
    // is DEL, and in the third if it is a control character. A carry or borrow comes only from such
    // a byte.
    const std::uint64_t marked =
        bytes | (bytes + 0x0101010101010101U) | (bytes - 0x2020202020202020U);
    return (marked & 0x8080808080808080U) == 0;
}

/// Returns the length of the colour sequence at the beginning of the text, or 0 if there is none.
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
    // These ranges are C1 (U+0080 to U+009F), U+202A to U+202E, and U+2066 to U+2069.
    // NOLINTBEGIN(misc-misleading-bidirectional): the function compares with these characters.
    return (character >= "\xC2\x80" && character <= "\xC2\x9F") ||
           (character >= "\xE2\x80\xAA" && character <= "\xE2\x80\xAE") ||
           (character >= "\xE2\x81\xA6" && character <= "\xE2\x81\xA9");
    // NOLINTEND(misc-misleading-bidirectional)
}

enum class TokenKind : std::uint8_t { safe, unsafe, colour, reset };

/// A character, a colour sequence or a malformed sequence of bytes.
struct Token {
    std::size_t length;
    TokenKind kind;
};

/// Returns the first token of a text that begins with the escape character.
Token firstEscape(std::string_view text) {
    const std::size_t length = colourLength(text);
    if (length == 0) {
        return {1, TokenKind::unsafe};
    }
    const std::string_view sequence = text.substr(0, length);
    const bool isReset = sequence.find_first_of("123456789") == std::string_view::npos;
    return {length, isReset ? TokenKind::reset : TokenKind::colour};
}

Token firstToken(std::string_view text) {
    switch (text.front()) {
    case '\t':
    case '\n':
        return {1, TokenKind::safe};
    case '\r':
        // A carriage return at the end of the text is safe too, because a line break is written
        // after the text.
        return {1, text.size() > 1 && text[1] != '\n' ? TokenKind::unsafe : TokenKind::safe};
    case escape:
        return firstEscape(text);
    default: {
        const auto [length, wellFormed] = utf8::firstSequence(text);
        const bool isSafe = wellFormed && !isControl(text.substr(0, length));
        return {length, isSafe ? TokenKind::safe : TokenKind::unsafe};
    }
    }
}

/// Returns the length of the text before its first unsafe token. Updates whether a colour is on.
std::size_t safeLength(std::string_view text, bool& colourIsOn) {
    std::size_t offset = 0;
    while (offset < text.size()) {
        if (beginsPrintable(text.substr(offset))) {
            offset += 8;
            continue;
        }
        if (isPrintableASCII(text[offset])) {
            ++offset;
            continue;
        }
        const Token token = firstToken(text.substr(offset));
        if (token.kind == TokenKind::unsafe) {
            break;
        }
        if (token.kind != TokenKind::safe) {
            colourIsOn = token.kind == TokenKind::colour;
        }
        offset += token.length;
    }
    return offset;
}

} // namespace

std::optional<ByteBuffer> withVisibleControls(std::string_view text) {
    bool colourIsOn = false;
    std::size_t safe = safeLength(text, colourIsOn);
    if (safe == text.size() && !colourIsOn) {
        return std::nullopt;
    }
    ByteBuffer visible;
    for (;;) {
        visible.append(text.substr(0, safe));
        text.remove_prefix(safe);
        if (text.empty()) {
            break;
        }
        visible.append(utf8::replacementCharacter);
        text.remove_prefix(firstToken(text).length);
        safe = safeLength(text, colourIsOn);
    }
    if (colourIsOn) {
        visible.append(colourReset);
    }
    return visible;
}

} // namespace fernlow

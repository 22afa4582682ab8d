#include "bytes/utf8.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace fernlow::utf8 {

namespace {

/// The length of a sequence and the range of its second byte, both determined by its lead byte. The
/// range is narrower than 80 to BF if the full range would include overlong forms, surrogates or
/// values above U+10FFFF.
struct Lead {
    std::size_t length;
    std::uint8_t secondMin;
    std::uint8_t secondMax;
};

Lead leadOf(std::uint8_t byte) {
    if (byte >= 0xC2 && byte <= 0xDF) {
        return {2, 0x80, 0xBF};
    }
    if (byte >= 0xE0 && byte <= 0xEF) {
        return {3, static_cast<std::uint8_t>(byte == 0xE0 ? 0xA0 : 0x80),
                static_cast<std::uint8_t>(byte == 0xED ? 0x9F : 0xBF)};
    }
    if (byte >= 0xF0 && byte <= 0xF4) {
        return {4, static_cast<std::uint8_t>(byte == 0xF0 ? 0x90 : 0x80),
                static_cast<std::uint8_t>(byte == 0xF4 ? 0x8F : 0xBF)};
    }
    return {1, 0, 0};
}

} // namespace

Sequence firstSequence(std::string_view text) {
    const auto first = static_cast<std::uint8_t>(text[0]);
    if (first < 0x80) {
        return {1, true};
    }
    const Lead lead = leadOf(first);
    std::uint8_t min = lead.secondMin;
    std::uint8_t max = lead.secondMax;
    for (std::size_t index = 1; index < lead.length; ++index) {
        const auto byte =
            index < text.size() ? static_cast<std::uint8_t>(text[index]) : std::uint8_t{0};
        if (byte < min || byte > max) {
            return {index, false};
        }
        min = 0x80;
        max = 0xBF;
    }
    return {lead.length, lead.length > 1};
}

namespace {

/// Returns the length of the longest well-formed prefix.
std::size_t wellFormedLength(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size()) {
        // Nearly all text is ASCII, which is checked eight bytes at a time.
        std::uint64_t word = 0;
        if (text.size() - length >= sizeof word) {
            std::memcpy(&word, text.data() + length, sizeof word);
            if ((word & 0x8080808080808080U) == 0) {
                length += sizeof word;
                continue;
            }
        }
        const Sequence sequence = firstSequence(text.substr(length));
        if (!sequence.wellFormed) {
            break;
        }
        length += sequence.length;
    }
    return length;
}

} // namespace

bool isWellFormed(std::string_view text) {
    return wellFormedLength(text) == text.size();
}

ByteBuffer replaceIllFormed(std::string_view text) {
    ByteBuffer repaired;
    while (!text.empty()) {
        const std::size_t good = wellFormedLength(text);
        repaired.append(text.substr(0, good));
        text.remove_prefix(good);
        if (!text.empty()) {
            repaired.append(replacementCharacter);
            text.remove_prefix(firstSequence(text).length);
        }
    }
    return repaired;
}

} // namespace fernlow::utf8

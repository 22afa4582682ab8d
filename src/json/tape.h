#pragma once

#include "bytes/byte_buffer.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// How a Document is held in memory; for the document's own sources only.
namespace fernlow::json::detail {

enum class Kind : std::uint8_t { null, yes, no, number, text, unescapedText, list, object };

/// One value or key. 8 bytes, because large replies are paid for by the memory they touch.
struct Node {
    Kind kind : 4;
    /// Of a text or number, its bytes.
    std::uint32_t size : 28;
    /// Of a text or number, where it begins; of a list or object, the index behind its last node.
    std::uint32_t place;
};
static_assert(sizeof(Node) == 8);

constexpr std::uint32_t largestSize = (1U << 28U) - 1;
constexpr std::size_t deepestNesting = 1024;

/// A document laid out flat in its own order: a container's node is followed by those of its
/// elements, a key's by that of its value.
struct Tape {
    std::string_view source;
    /// The texts that had escapes, decoded; all others lie in the source.
    ByteBuffer unescaped;
    std::vector<Node> nodes;

    [[nodiscard]] std::string_view slice(const Node& node) const {
        const std::string_view whole = node.kind == Kind::unescapedText ? unescaped.view() : source;
        return {whole.data() + node.place, node.size};
    }

    [[nodiscard]] std::uint32_t after(std::uint32_t index) const {
        const Node& node = nodes[index];
        return node.kind >= Kind::list ? node.place : index + 1;
    }

    /// The index of the first of the members between two indices that has this key, or `end`.
    [[nodiscard]] std::uint32_t find(std::string_view key, std::uint32_t first,
                                     std::uint32_t end) const {
        // Most keys differ in length, which tells without a look at their bytes.
        while (first < end && (nodes[first].size != key.size() || slice(nodes[first]) != key)) {
            first = after(first + 1);
        }
        return first;
    }
};

} // namespace fernlow::json::detail

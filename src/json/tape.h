#pragma once

#include "bytes/byte_buffer.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// The memory layout of a Document; only for the source files that implement it.
namespace fernlow::json::detail {

enum class Kind : std::uint8_t { null, yes, no, number, text, unescapedText, list, object };

/// One value or key. Memory access dominates the time for a large reply, so a node takes only 8
/// bytes.
struct Node {
    Kind kind : 4;
    /// The length of a text or number in bytes.
    std::uint32_t size : 28;
    /// For a text or number, the offset of its first byte. For a list or object, the index after
    /// its last node.
    std::uint32_t position;
};
static_assert(sizeof(Node) == 8);

/// The maximum size of a document, and so of a text, in bytes.
constexpr std::uint32_t maxSize = (1U << 28U) - 1;
constexpr std::size_t maxDepth = 1024;

/// The nodes of a document in document order: a container is followed by the nodes of its elements,
/// and a key by the nodes of its value.
struct Tape {
    std::string_view source;
    /// The decoded texts that contain escapes. All other texts are read from the source.
    ByteBuffer unescaped;
    std::vector<Node> nodes;

    /// Returns the bytes of a key, text or number.
    [[nodiscard]] std::string_view slice(const Node& node) const {
        const std::string_view whole = node.kind == Kind::unescapedText ? unescaped.view() : source;
        return {whole.data() + node.position, node.size};
    }

    /// Returns the index after the last node of the value at the index.
    [[nodiscard]] std::uint32_t after(std::uint32_t index) const {
        const Node& node = nodes[index];
        return node.kind >= Kind::list ? node.position : index + 1;
    }

    /// Returns the index of the first key between two indices that is equal to `key`, or `end`.
    [[nodiscard]] std::uint32_t find(std::string_view key, std::uint32_t first,
                                     std::uint32_t end) const {
        // Most keys have different lengths, so most comparisons do not read their bytes.
        while (first < end && (nodes[first].size != key.size() || slice(nodes[first]) != key)) {
            first = after(first + 1);
        }
        return first;
    }
};

} // namespace fernlow::json::detail

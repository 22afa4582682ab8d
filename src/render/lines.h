#pragma once

#include "json/byte_buffer.h"

#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <exception>
#include <string_view>
#include <utility>

namespace fernlow {

/// A text that grew beyond all use.
class TextTooLong : public std::exception {
public:
    [[nodiscard]] const char* what() const noexcept override { return "The text is too long."; }
};

/// The lines that a view makes of a reply.
///
/// A hostile reply can ask for far more text than it holds itself (a path is shown again with each
/// of its issues), so all that adds to them throws TextTooLong beyond 256 MiB.
class Lines {
public:
    static constexpr std::size_t longestText = std::size_t{256} * 1024 * 1024;

    /// Adds one line made of the parts, one after the other: texts, and integers in decimal.
    template <class... Parts>
    void add(const Parts&... parts) {
        start();
        (append(parts), ...);
    }

    /// start() and append() make a line piece by piece, where add() would need all of it at once.
    void start() {
        if (started_) {
            append("\n");
        }
        started_ = true;
    }
    void append(std::string_view text) {
        if (text.size() > longestText - text_.view().size()) {
            throw TextTooLong();
        }
        text_.append(text);
    }
    template <std::integral Integer>
    void append(Integer value) {
        std::array<char, 24> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
        append(std::string_view{digits.data(), static_cast<std::size_t>(end - digits.data())});
    }

    /// The lines joined with line breaks, without one at the end.
    [[nodiscard]] ByteBuffer join() && { return std::move(text_); }

private:
    ByteBuffer text_;
    bool started_ = false;
};

} // namespace fernlow

#pragma once

#include "json/byte_buffer.h"

#include <array>
#include <charconv>
#include <concepts>
#include <string_view>
#include <utility>

namespace fernlow {

/// The lines that a view makes of a reply.
class Lines {
public:
    /// Adds one line made of the parts, one after the other: texts, and integers in decimal.
    template <class... Parts>
    void add(const Parts&... parts) {
        start();
        (append(parts), ...);
    }

    /// start() and append() make a line piece by piece, where add() would need all of it at once.
    void start() {
        if (started_) {
            text_.append("\n");
        }
        started_ = true;
    }
    void append(std::string_view text) { text_.append(text); }
    template <std::integral Integer>
    void append(Integer value) {
        std::array<char, 24> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
        text_.append({digits.data(), static_cast<std::size_t>(end - digits.data())});
    }

    /// The lines joined with line breaks, without one at the end.
    [[nodiscard]] ByteBuffer join() && { return std::move(text_); }

private:
    ByteBuffer text_;
    bool started_ = false;
};

} // namespace fernlow

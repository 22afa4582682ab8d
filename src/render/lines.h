#pragma once

#include "bytes/byte_buffer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <exception>
#include <string_view>
#include <utility>

namespace fernlow {

/// Thrown when a text would exceed its limit.
class TextTooLong : public std::exception {
public:
    [[nodiscard]] const char* what() const noexcept override { return "The text is too long."; }
};

/// A text whose ASCII letters are shown in upper case. The application's own words are ASCII.
struct UpperCase {
    std::string_view text;
};

/// The lines of a view.
///
/// A hostile reply can cause much more text than it contains, because a path is shown again with
/// each of its issues. Every function that adds text throws TextTooLong beyond 256 MiB.
class Lines {
public:
    static constexpr std::size_t maxSize = std::size_t{256} * 1024 * 1024;

    /// Adds a line that consists of the parts: texts, texts in upper case, and integers in decimal.
    template <class... Parts>
    void add(const Parts&... parts) {
        start();
        (append(parts), ...);
    }

    /// Starts a line whose parts are added with append().
    void start() {
        if (started_) {
            append("\n");
        }
        started_ = true;
    }
    void append(std::string_view text) {
        checkSize(text.size());
        text_.append(text);
    }
    void append(UpperCase shown) {
        checkSize(shown.text.size());
        std::transform(shown.text.begin(), shown.text.end(), text_.prepare(shown.text.size()),
                       [](char letter) {
                           return letter >= 'a' && letter <= 'z'
                                      ? static_cast<char>(letter - 'a' + 'A')
                                      : letter;
                       });
        text_.commit(shown.text.size());
    }
    template <std::integral Integer>
    void append(Integer value) {
        std::array<char, 24> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
        append(std::string_view{digits.data(), static_cast<std::size_t>(end - digits.data())});
    }

    /// Returns the lines joined with line breaks, without a final line break.
    [[nodiscard]] ByteBuffer join() && { return std::move(text_); }

private:
    void checkSize(std::size_t count) const {
        if (count > maxSize - text_.view().size()) {
            throw TextTooLong();
        }
    }

    ByteBuffer text_;
    bool started_ = false;
};

} // namespace fernlow

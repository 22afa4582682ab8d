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

/// A text that grew beyond all use.
class TextTooLong : public std::exception {
public:
    [[nodiscard]] const char* what() const noexcept override { return "The text is too long."; }
};

/// A text to be shown with its ASCII letters in upper case: the application's own words are ASCII.
struct UpperCase {
    std::string_view text;
};

/// The lines that a view makes of a reply.
///
/// A hostile reply can ask for far more text than it holds itself (a path is shown again with each
/// of its issues), so all that adds to them throws TextTooLong beyond 256 MiB.
class Lines {
public:
    static constexpr std::size_t longestText = std::size_t{256} * 1024 * 1024;

    /// Adds one line made of the parts, one after the other: texts, upper-cased texts, and integers
    /// in decimal.
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
        checkRoom(text.size());
        text_.append(text);
    }
    void append(UpperCase shown) {
        checkRoom(shown.text.size());
        std::transform(
            shown.text.begin(), shown.text.end(), text_.room(shown.text.size()), [](char letter) {
                return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A')
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

    /// The lines joined with line breaks, without one at the end.
    [[nodiscard]] ByteBuffer join() && { return std::move(text_); }

private:
    void checkRoom(std::size_t count) const {
        if (count > longestText - text_.view().size()) {
            throw TextTooLong();
        }
    }

    ByteBuffer text_;
    bool started_ = false;
};

} // namespace fernlow

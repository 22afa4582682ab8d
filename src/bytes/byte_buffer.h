#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace fernlow {

/// Bytes held once, from the socket to the screen: a reply is read straight into one, parsed where
/// it lies, and written out of it.
///
/// It differs from std::string where large replies are felt: room for new bytes is not zeroed, it
/// grows through realloc (which moves pages instead of copying them), and removing a prefix costs
/// nothing. Growing throws std::bad_alloc. Views into it end with the next call that changes it.
class ByteBuffer {
public:
    ByteBuffer() = default;
    explicit ByteBuffer(std::string_view text) { append(text); }
    ByteBuffer(ByteBuffer&& other) noexcept;
    ByteBuffer& operator=(ByteBuffer&& other) noexcept;
    ByteBuffer(const ByteBuffer&) = delete;
    ByteBuffer& operator=(const ByteBuffer&) = delete;
    ~ByteBuffer() = default;

    [[nodiscard]] std::string_view view() const { return {bytes_.get() + begin_, end_ - begin_}; }

    void append(std::string_view text);

    /// At least `count` writable, uninitialised bytes behind the last one. What was written there
    /// becomes part of the buffer with commit().
    [[nodiscard]] char* room(std::size_t count);
    void commit(std::size_t count) { end_ += count; }

    /// `count` may not exceed the size.
    void removePrefix(std::size_t count) { begin_ += count; }

private:
    struct Free {
        void operator()(char* bytes) const { std::free(bytes); }
    };

    std::unique_ptr<char, Free> bytes_;
    std::size_t capacity_ = 0;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
};

} // namespace fernlow

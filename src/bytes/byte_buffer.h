#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace fernlow {

/// A growing array of bytes. A reply is read into one, parsed in place and written from it, so that
/// its bytes are never copied.
///
/// It is faster than std::string for large replies: new bytes are not zeroed, it grows through
/// realloc (which moves pages instead of copying them), and removing a prefix takes constant time.
/// Growing throws std::bad_alloc. A change to the buffer invalidates all views of it.
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

    /// Returns a pointer to at least `count` writable, uninitialised bytes after the last byte of
    /// the buffer. They join the buffer when commit() is called.
    [[nodiscard]] char* prepare(std::size_t count);

    /// Adds the first `count` of the bytes that prepare() returned to the buffer.
    void commit(std::size_t count) { end_ += count; }

    /// Removes the first `count` bytes; the buffer must hold as many.
    void removePrefix(std::size_t count) { begin_ += count; }

private:
    struct Deallocator {
        void operator()(char* bytes) const { std::free(bytes); }
    };

    std::unique_ptr<char, Deallocator> bytes_;
    std::size_t capacity_ = 0;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
};

} // namespace fernlow

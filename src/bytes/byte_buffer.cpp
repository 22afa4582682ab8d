#include "bytes/byte_buffer.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace fernlow {

namespace {

/// The smallest allocation, in bytes. A short text that is built piece by piece would otherwise be
/// reallocated several times.
constexpr std::size_t minCapacity = 1024;

} // namespace

ByteBuffer::ByteBuffer(ByteBuffer&& other) noexcept
    : bytes_(std::move(other.bytes_)), capacity_(std::exchange(other.capacity_, 0)),
      begin_(std::exchange(other.begin_, 0)), end_(std::exchange(other.end_, 0)) {}

ByteBuffer& ByteBuffer::operator=(ByteBuffer&& other) noexcept {
    bytes_ = std::move(other.bytes_);
    capacity_ = std::exchange(other.capacity_, 0);
    begin_ = std::exchange(other.begin_, 0);
    end_ = std::exchange(other.end_, 0);
    return *this;
}

void ByteBuffer::append(std::string_view text) {
    if (text.empty()) {
        return;
    }
    std::memcpy(prepare(text.size()), text.data(), text.size());
    commit(text.size());
}

char* ByteBuffer::prepare(std::size_t count) {
    if (capacity_ - end_ < count) {
        // Twice the count, so that the next call with this count needs no larger block. The last
        // read of a reply, which returns no bytes, is such a call.
        const std::size_t capacity = std::max({minCapacity, 2 * count, 2 * capacity_});
        auto* grown = static_cast<char*>(std::realloc(bytes_.get(), capacity));
        if (grown == nullptr) {
            throw std::bad_alloc();
        }
        // realloc has already freed the old block.
        static_cast<void>(bytes_.release());
        bytes_.reset(grown);
        capacity_ = capacity;
    }
    return bytes_.get() + end_;
}

} // namespace fernlow

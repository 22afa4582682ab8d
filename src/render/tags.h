#pragma once

#include "render/lines.h"

#include <string_view>

namespace fernlow {

/// Puts tags behind the line being made: two spaces and the tags between brackets, separated by a
/// comma. Nothing is put there without a tag.
class Tags {
public:
    explicit Tags(Lines& lines) : lines_(lines) {}

    template <class... Parts>
    void add(const Parts&... parts) {
        lines_.append(any_ ? std::string_view(", ") : std::string_view("  ["));
        (lines_.append(parts), ...);
        any_ = true;
    }

    void close() {
        if (any_) {
            lines_.append(std::string_view("]"));
        }
    }

private:
    Lines& lines_;
    bool any_ = false;
};

} // namespace fernlow

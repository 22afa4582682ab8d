#pragma once

#include "render/lines.h"

#include <string_view>

namespace fernlow {

/// Appends tags to the current line: two spaces, then the tags in brackets, separated by commas.
/// Appends nothing if there are no tags. Call close() after the last tag.
class Tags {
public:
    explicit Tags(Lines& lines) : lines_(lines) {}

    template <class... Parts>
    void add(const Parts&... parts) {
        lines_.append(hasTags_ ? std::string_view(", ") : std::string_view("  ["));
        (lines_.append(parts), ...);
        hasTags_ = true;
    }

    void close() {
        if (hasTags_) {
            lines_.append(std::string_view("]"));
        }
    }

private:
    Lines& lines_;
    bool hasTags_ = false;
};

} // namespace fernlow

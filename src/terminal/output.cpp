#include "terminal/output.h"

#include "terminal/visible_controls.h"

#include <poll.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>

namespace fernlow {

namespace {

/// Whether the write that just failed is worth another try, after waiting for room if that was
/// what it lacked: a terminal or pipe may have been made non-blocking by whoever shares it.
bool mayRetry(int descriptor) {
    if (errno == EINTR) {
        return true;
    }
    if (errno != EAGAIN && errno != EWOULDBLOCK) {
        return false;
    }
    pollfd room{descriptor, POLLOUT, 0};
    return ::poll(&room, 1, -1) == 1 || errno == EINTR;
}

} // namespace

bool writeLine(int descriptor, std::string_view text) {
    std::string_view lineBreak = "\n";
    while (!lineBreak.empty()) {
        // writev only reads what it is given, but its parameter has no way to say so.
        const std::array<iovec, 2> parts{{{const_cast<char*>(text.data()), text.size()},
                                          {const_cast<char*>(lineBreak.data()), lineBreak.size()}}};
        const ssize_t written = ::writev(descriptor, parts.data(), static_cast<int>(parts.size()));
        if (written < 0 && mayRetry(descriptor)) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        const auto count = static_cast<std::size_t>(written);
        if (count > text.size()) {
            lineBreak.remove_prefix(count - text.size());
        }
        text.remove_prefix(std::min(count, text.size()));
    }
    return true;
}

bool writeTextLine(int descriptor, std::string_view text) {
    if (::isatty(descriptor) == 1) {
        if (const auto visible = withVisibleControls(text)) {
            return writeLine(descriptor, visible->view());
        }
    }
    return writeLine(descriptor, text);
}

} // namespace fernlow

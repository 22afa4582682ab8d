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

/// Returns whether the write that has just failed can be repeated. If it would have blocked, waits
/// until the descriptor accepts bytes: another program that shares a terminal or pipe may have made
/// it non-blocking.
bool canRetry(int descriptor) {
    if (errno == EINTR) {
        return true;
    }
    if (errno != EAGAIN && errno != EWOULDBLOCK) {
        return false;
    }
    pollfd waiting{descriptor, POLLOUT, 0};
    return ::poll(&waiting, 1, -1) == 1 || errno == EINTR;
}

} // namespace

bool writeLine(int descriptor, std::string_view text) {
    std::string_view lineBreak = "\n";
    while (!lineBreak.empty()) {
        // writev does not change the bytes, although its parameter type is not const.
        const std::array<iovec, 2> parts{{{const_cast<char*>(text.data()), text.size()},
                                          {const_cast<char*>(lineBreak.data()), lineBreak.size()}}};
        const ssize_t written = ::writev(descriptor, parts.data(), static_cast<int>(parts.size()));
        if (written < 0 && canRetry(descriptor)) {
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

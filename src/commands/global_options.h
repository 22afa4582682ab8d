#pragma once

#include "commands/option.h"

#include <span>
#include <string>
#include <vector>

namespace fernlow {

/// The options that may stand anywhere on a command line, even in the place of another option's
/// value.
class GlobalOptions {
public:
    /// Removes the global options from the words and adds them to the options taken earlier. The
    /// last --socket prevails.
    void take(std::vector<std::string>& words);

    /// Returns whether the global option was given.
    [[nodiscard]] bool has(const Option& option) const { return valueOf(option) != nullptr; }

    /// Returns the path of the socket as typed, or null.
    [[nodiscard]] const std::string* socketPath() const;

    /// Returns whether the last word was --socket, which then lacks its value.
    [[nodiscard]] bool lacksSocketPath() const { return lacksSocketPath_; }

    /// Returns the global options in the order of the help text.
    static std::span<const Option* const> all();

private:
    [[nodiscard]] const std::string* valueOf(const Option& option) const;

    std::vector<TakenOption> taken_;
    bool lacksSocketPath_ = false;
};

} // namespace fernlow

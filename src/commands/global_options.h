#pragma once

#include "commands/option.h"

#include <span>
#include <string>
#include <vector>

namespace fernlow {

/// The options that may stand anywhere on a command line, the value of another option included.
class GlobalOptions {
public:
    /// Takes them off the words. What was taken before stays; a later --socket prevails.
    void take(std::vector<std::string>& words);

    [[nodiscard]] bool has(const Option& option) const { return valueOf(option) != nullptr; }

    /// The socket's path as it was typed, or null.
    [[nodiscard]] const std::string* socketPath() const;

    /// Whether a --socket was the last word, so that no path follows it.
    [[nodiscard]] bool lackSocketPath() const { return lackSocketPath_; }

    static std::span<const Option* const> all();

private:
    [[nodiscard]] const std::string* valueOf(const Option& option) const;

    std::vector<TakenOption> taken_;
    bool lackSocketPath_ = false;
};

} // namespace fernlow

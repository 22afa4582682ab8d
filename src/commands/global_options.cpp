#include "commands/global_options.h"

#include "commands/options.h"

#include <algorithm>
#include <array>
#include <utility>

namespace fernlow {

namespace {

constexpr auto globals =
    std::to_array<const Option*>({&options::json, &options::socket, &options::noLaunch});

} // namespace

std::span<const Option* const> GlobalOptions::all() {
    return globals;
}

void GlobalOptions::take(std::vector<std::string>& words) {
    std::vector<std::string> others;
    for (auto word = words.begin(); word != words.end(); ++word) {
        const auto* const global =
            std::find_if(globals.begin(), globals.end(),
                         [&](const Option* option) { return option->word == *word; });
        if (global == globals.end()) {
            others.push_back(std::move(*word));
        } else if ((*global)->value.kind == ValueKind::flag) {
            taken_.push_back({*global, ""});
        } else if (std::next(word) == words.end()) {
            lacksSocketPath_ = true;
        } else {
            taken_.push_back({*global, std::move(*++word)});
        }
    }
    words = std::move(others);
}

const std::string* GlobalOptions::socketPath() const {
    return valueOf(options::socket);
}

const std::string* GlobalOptions::valueOf(const Option& option) const {
    const auto last = std::find_if(taken_.rbegin(), taken_.rend(), [&](const TakenOption& taken) {
        return taken.option == &option;
    });
    return last == taken_.rend() ? nullptr : &last->value;
}

} // namespace fernlow

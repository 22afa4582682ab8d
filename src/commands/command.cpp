#include "commands/command.h"

namespace fernlow {

std::string Command::name() const {
    return std::string(word) + (subcommand.empty() ? "" : " ") + std::string(subcommand);
}

std::vector<const Option*> Command::allOptions() const {
    std::vector<const Option*> all(required.begin(), required.end());
    all.insert(all.end(), options.begin(), options.end());
    return all;
}

} // namespace fernlow

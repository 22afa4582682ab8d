#include "support/command_line.h"

#include "cli/invocation.h"
#include "support/seeds.h"

#include <algorithm>
#include <exception>
#include <regex>
#include <variant>

namespace fernlow::test {

std::vector<std::string> splitWords(std::string_view line) {
    std::vector<std::string> words;
    while (!line.empty()) {
        if (line.front() == ' ') {
            line.remove_prefix(1);
            continue;
        }
        const bool quoted = line.front() == '\'';
        line.remove_prefix(quoted ? 1 : 0);
        const std::size_t end = std::min(line.find(quoted ? '\'' : ' '), line.size());
        words.emplace_back(line.substr(0, end));
        line.remove_prefix(std::min(end + 1, line.size()));
    }
    return words;
}

std::string outcome(std::string_view line, const std::string& currentDirectory) {
    struct {
        std::string operator()(const AgentCLIAction::get& get) const { return "GET " + get.path; }
        std::string operator()(const AgentCLIAction::post& post) const {
            return "POST " + post.path + " " + post.body;
        }
        std::string operator()(const AgentCLIAction::help& /*help*/) const { return "help"; }
        std::string operator()(const AgentCLIAction::version& /*version*/) const {
            return "version";
        }
    } const describe;
    const auto words = splitWords(line);
    std::string seed;
    for (const std::string& word : words) {
        seed += word + "\n";
    }
    keepSeed("arguments", seed);
    try {
        const auto invocation = parseInvocation(words, CurrentDirectory(currentDirectory), true);
        return std::visit(describe, invocation.action.kind);
    } catch (const std::exception& error) {
        return error.what();
    }
}

std::string replaceAll(std::string text, std::string_view piece, std::string_view replacement) {
    std::size_t index = text.find(piece);
    while (index != std::string::npos) {
        text.replace(index, piece.size(), replacement);
        index = text.find(piece, index + replacement.size());
    }
    return text;
}

Words matches(const std::string& text, const char* pattern) {
    const std::regex regex(pattern);
    Words words;
    for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
        words.insert((*match)[1]);
    }
    return words;
}

} // namespace fernlow::test

#include "completion/bash_line.h"

#include <algorithm>

namespace fernlow::completion {

namespace {

class Splitter {
public:
    /// Whether the character ended the command, as ";" does.
    bool read(char character) {
        typed_ += character;
        if (quote_ == '\\') {
            quote_ = outer_;
            outer_ = '\0';
            // Between double quotes a backslash is a character of its own in front of most others.
            word_ += quote_ != '\0' && std::string_view("\"\\$`").find(character) == npos
                         ? std::string{'\\', character}
                         : std::string{character};
        } else if (character == '\\' && quote_ != '\'') {
            outer_ = quote_;
            quote_ = '\\';
        } else if (quote_ != '\0') {
            quote_ == character ? void(quote_ = '\0') : word_.push_back(character);
        } else if (character == '"' || character == '\'') {
            quote_ = character;
            isWord_ = true;
        } else {
            return readUnquoted(character);
        }
        return false;
    }

    void startCommand() {
        words_.clear();
        isRedirection_ = false;
        startWord();
    }

    /// Has the word count as one even if it stays empty.
    void beginWord() { isWord_ = true; }

    void endWord() {
        if ((isWord_ || !word_.empty()) && !isRedirection_) {
            words_.push_back(word_);
        }
        isRedirection_ = isRedirection_ && !isWord_ && word_.empty();
        startWord();
    }

    /// Those that have ended.
    [[nodiscard]] const std::vector<std::string>& words() const { return words_; }

    [[nodiscard]] BashLine line() const {
        BashLine line{words_, words_.size(), typed_, quote_ == '\\' ? outer_ : quote_,
                      isRedirection_};
        line.words.push_back(word_);
        return line;
    }

private:
    static constexpr auto npos = std::string_view::npos;

    void startWord() {
        word_.clear();
        typed_.clear();
        isWord_ = false;
    }

    bool readUnquoted(char character) {
        if (std::string_view(" \t").find(character) != npos) {
            endWord();
        } else if (std::string_view(";|&(\n").find(character) != npos) {
            return true;
        } else if (character == '<' || character == '>') {
            // The number of a descriptor belongs to the redirection.
            if (!word_.empty() && word_.find_first_not_of("0123456789") == npos) {
                startWord();
            }
            endWord();
            isRedirection_ = true;
        } else {
            word_ += character;
        }
        return false;
    }

    std::vector<std::string> words_;
    std::string word_;
    std::string typed_;
    char quote_ = '\0';
    /// The quote around a backslash.
    char outer_ = '\0';
    /// Whether a word has begun, though it may be empty yet.
    bool isWord_ = false;
    bool isRedirection_ = false;
};

/// The text as bash reads it back, within the quote that is open.
std::string quoted(std::string_view text, char openQuote) {
    std::string result;
    for (const char character : text) {
        if (openQuote == '\'') {
            result += character == '\'' ? std::string("'\\''") : std::string{character};
            continue;
        }
        const std::string_view special =
            openQuote == '"' ? "\"\\$`" : " \t\"'\\$`&|;<>(){}[]*?!#~^";
        if (special.find(character) != std::string_view::npos) {
            result += '\\';
        }
        result += character;
    }
    return result;
}

/// The unquoted form of a part of a word.
std::string unquoted(std::string_view typed) {
    Splitter splitter;
    for (const char character : typed) {
        splitter.read(character);
    }
    return splitter.line().words.back();
}

} // namespace

BashLine splitBashLine(std::string_view beforeCursor, std::string_view afterCursor) {
    Splitter splitter;
    for (const char character : beforeCursor) {
        if (splitter.read(character)) {
            splitter.startCommand();
        }
    }
    BashLine line = splitter.line();
    if (line.isRedirection) {
        return line;
    }
    splitter.beginWord();
    for (const char character : afterCursor) {
        if (splitter.read(character)) {
            break;
        }
    }
    splitter.endWord();
    // What is left of the word being typed belongs to no other word.
    const auto rest = splitter.words().begin() + static_cast<std::ptrdiff_t>(line.words.size());
    line.words.insert(line.words.end(), rest, splitter.words().end());
    return line;
}

std::vector<std::string> completeBashLine(const BashRequest& request,
                                          const Surroundings& surroundings) {
    const BashLine line = splitBashLine(request.beforeCursor, request.afterCursor);
    if (line.isRedirection) {
        return {"files"};
    }
    if (line.index == 0) {
        return {"nothing"};
    }
    const auto completions =
        complete({line.words.begin() + 1, line.words.end()}, line.index - 1, surroundings);
    // What bash leaves of the word stands in front of every candidate.
    std::string_view kept = line.typed;
    if (kept.ends_with(request.replaced)) {
        kept.remove_suffix(request.replaced.size());
    }
    if (line.openQuote != '\0' && kept.ends_with(line.openQuote)) {
        kept.remove_suffix(1);
    }
    const std::size_t start = unquoted(kept).size();
    // Before version 4 a function can't change how bash goes on, so nothing is left to bash there.
    const bool mayChangeOptions = request.version >= 4;
    std::vector<std::string> lines{""};
    for (const Candidate& candidate : completions.candidates) {
        // Between double quotes bash would put a command of its history in place of "!", and
        // nothing can keep it from that.
        const bool isSafe = line.openQuote != '"' || candidate.value.find('!') == std::string::npos;
        if (isSafe && candidate.value.starts_with(line.words[line.index])) {
            const auto rest = std::string_view(candidate.value).substr(start);
            lines.push_back(completions.folders && mayChangeOptions ? std::string(rest)
                                                                    : quoted(rest, line.openQuote));
        }
    }
    const bool goesOn = lines.size() == 2 && lines.back().ends_with('=');
    lines.front() = goesOn ? "nospace" : shellsOwn(completions);
    if (goesOn && !mayChangeOptions) {
        // Two that begin alike are completed so far without a space behind them.
        lines.push_back(lines.back() + "...");
    }
    return lines;
}

} // namespace fernlow::completion

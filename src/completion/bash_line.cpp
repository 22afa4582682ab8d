#include "completion/bash_line.h"

#include "completion/disk_names.h"

#include <algorithm>
#include <utility>

namespace fernlow::completion {

namespace {

constexpr auto npos = std::string_view::npos;

/// Reads a command as bash does, a character at a time. What bash will expand is not looked into:
/// it stands as unknownText in its word, however deep substitutions lie within each other.
class Splitter {
public:
    /// Whether the character ended the command, as ";" does.
    bool read(char character) {
        if (std::exchange(isAmpersand_, false) && character != '>') {
            return true;
        }
        typed_ += character;
        const char previous = std::exchange(previous_, isEscaped_ ? '\0' : character);
        const char within = open_.empty() ? '\0' : open_.back();
        if (isEscaped_) {
            isEscaped_ = false;
            // Between double quotes a backslash is a character of its own in front of most others.
            if (within == '"' && std::string_view("\"\\$`").find(character) == npos) {
                put('\\');
            }
            put(character);
        } else if (character == '\\' && (within != '\'' || isAnsiQuote_)) {
            isEscaped_ = true;
        } else if (within != '\0' && character == within) {
            open_.pop_back();
            isAnsiQuote_ = false;
        } else if (within == '\'' || !opens(character, previous, within)) {
            if (!open_.empty()) {
                put(character);
            } else {
                return readUnquoted(character, previous);
            }
        }
        return false;
    }

    /// Ends the word at the cursor; what may be left of it belongs to no word.
    void cut() {
        isWord_ = true;
        isRedirection_ = false;
        endWord();
        isRest_ = true;
    }

    void endWord() {
        const bool isWord = isWord_ || !word_.empty();
        if (isWord && !isRedirection_ && !isRest_) {
            words_.push_back(word_);
        }
        isRedirection_ = isRedirection_ && !isWord;
        isRest_ = false;
        startWord();
    }

    /// Those that have ended.
    [[nodiscard]] const std::vector<std::string>& words() const { return words_; }

    [[nodiscard]] BashLine line() const {
        const bool isQuote = open_ == "\"" || (open_ == "'" && !isAnsiQuote_);
        BashLine line{words_,         words_.size(),
                      typed_,         isQuote ? open_.front() : '\0',
                      isRedirection_, isAmpersand_ || (!open_.empty() && !isQuote)};
        line.words.push_back(word_);
        return line;
    }

private:
    void startWord() {
        word_.clear();
        typed_.clear();
        isWord_ = false;
    }

    /// Adds to the word, unless the character is a part of what is not looked into.
    void put(char character) {
        const bool isValue =
            open_.empty() || (open_.size() == 1 && (open_ == "\"" || open_ == "'"));
        if (isValue && !isAnsiQuote_) {
            word_ += character;
        }
    }

    /// Whether a quote or a substitution begins there.
    bool opens(char character, char previous, char within) {
        const bool isQuoted = within == '"';
        if (character == '"' && !isQuoted) {
            isWord_ = true;
            open_ += '"';
        } else if (character == '\'' && !isQuoted) {
            isWord_ = true;
            isAnsiQuote_ = previous == '$';
            open_ += '\'';
        } else if (character == '`') {
            put(unknownText);
            open_ += '`';
        } else if (character == '{' && previous == '$') {
            open_ += '}';
        } else if (character == '(' && (!isQuoted || previous == '$')) {
            // That of "<(" is no redirection.
            isRedirection_ = isRedirection_ && previous != '<' && previous != '>';
            put(unknownText);
            open_ += ')';
        } else {
            // History is looked up between double quotes too.
            const bool isExpanded =
                character == '$' || character == '!' ||
                (open_.empty() && std::string_view("*?[{").find(character) != npos);
            if (isExpanded) {
                put(unknownText);
            }
            return isExpanded;
        }
        return true;
    }

    bool readUnquoted(char character, char previous) {
        const bool isOperator = previous == '<' || previous == '>';
        if (character == ' ' || character == '\t') {
            endWord();
        } else if (character == '&' && !isOperator) {
            // It may be that of "&>".
            endWord();
            isAmpersand_ = true;
        } else if (isOperator && (character == '|' || character == '&')) {
            // A part of ">|", ">&" and "<&".
        } else if (std::string_view(";|)\n").find(character) != npos ||
                   (character == '#' && !isWord_ && word_.empty())) {
            return true;
        } else if (character == '<' || character == '>') {
            // The number of a descriptor, quoted nowhere, belongs to the redirection.
            if (typed_.find_first_not_of("0123456789") + 1 == typed_.size()) {
                startWord();
            }
            endWord();
            isRedirection_ = true;
        } else {
            const bool isHome = character == '~' && (previous == '=' || previous == ':');
            word_ += isHome ? unknownText : character;
            return false;
        }
        typed_.clear();
        return false;
    }

    std::vector<std::string> words_;
    std::string word_;
    std::string typed_;
    /// What ends each of the quotes and substitutions that are open.
    std::string open_;
    char previous_ = '\0';
    bool isEscaped_ = false;
    /// Whether the single quote that is open began as "$'", in which a backslash escapes.
    bool isAnsiQuote_ = false;
    /// Whether a word has begun, though it may be empty yet.
    bool isWord_ = false;
    bool isRedirection_ = false;
    bool isAmpersand_ = false;
    /// Whether the word is what the cursor has cut off another.
    bool isRest_ = false;
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

/// Whether bash leaves the quoted text as it is. Between double quotes it would put a command of
/// its history in place of "!"; and it takes the open quote at either end for the opening or the
/// closing one.
bool canStandIn(char openQuote, const std::string& text) {
    return openQuote == '\0' || (!text.starts_with(openQuote) && !text.ends_with(openQuote) &&
                                 (openQuote == '\'' || text.find('!') == std::string::npos));
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
            return {{""}, 0, "", '\0', false, true};
        }
    }
    BashLine line = splitter.line();
    if (line.isElsewhere || line.isRedirection) {
        return line;
    }
    splitter.cut();
    for (const char character : afterCursor) {
        if (splitter.read(character)) {
            break;
        }
    }
    splitter.endWord();
    line.words = splitter.words();
    return line;
}

std::vector<std::string> completeBashLine(const BashRequest& request,
                                          const CompletionContext& context) {
    const BashLine line = splitBashLine(request.beforeCursor, request.afterCursor);
    const std::string& word = line.words[line.index];
    // Of what bash expands itself, only the home folder in front of a path is known.
    const bool isBelowHome = line.typed.starts_with("~/");
    if (line.isElsewhere || (line.index == 0 && !line.isRedirection) ||
        !line.typed.ends_with(request.replaced) || !isKnown(word) ||
        (line.typed.starts_with('~') && !isBelowHome)) {
        return {};
    }
    Completions completions{{}, line.isRedirection, false};
    if (!line.isRedirection) {
        completions = complete({line.words.begin() + 1, line.words.end()}, line.index - 1, context);
    }
    auto& candidates = completions.candidates;
    if (isBelowHome) {
        candidates.clear();
    }
    const auto isOther = [&](const Candidate& candidate) {
        return !candidate.value.starts_with(word) || !canStandIn(line.openQuote, candidate.value);
    };
    std::erase_if(candidates, isOther);
    if (candidates.empty() && (completions.files || completions.folders)) {
        const std::string home(isBelowHome ? request.home : "");
        const std::string path = home + word.substr(isBelowHome ? 1 : 0);
        candidates = namesOnDisk(path, completions.files, context.deadline);
        for (Candidate& candidate : candidates) {
            candidate.value.replace(0, home.size(), isBelowHome ? "~" : "");
        }
        std::erase_if(candidates, isOther);
    }
    // What bash leaves of the word stands in front of every candidate.
    std::string_view kept = line.typed;
    kept.remove_suffix(request.replaced.size());
    if (line.openQuote != '\0' && kept.ends_with(line.openQuote)) {
        kept.remove_suffix(1);
    }
    const std::size_t start = unquoted(kept).size();
    const std::string_view home(isBelowHome && start == 0 ? "~" : "");
    std::vector<std::string> lines;
    for (const Candidate& candidate : candidates) {
        const std::string& value = candidate.value;
        const bool goesOn = value.ends_with('=') || value.ends_with('/');
        lines.push_back(
            std::string(home) +
            quoted(std::string_view(value).substr(start + home.size()), line.openQuote) +
            (goesOn || line.openQuote != '\0' ? "" : " "));
    }
    return lines;
}

} // namespace fernlow::completion

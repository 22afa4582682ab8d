#include "completion/bash_line.h"

#include <utility>

namespace fernlow::completion {

namespace {

constexpr auto npos = std::string_view::npos;

/// Reads a line of bash as far as it takes to tell its words apart.
class Splitter {
public:
    /// Reads a character with the one behind it (0 at the end). Gives whether it ended the command,
    /// as ";" does.
    bool read(char character, char next) {
        state_.typed += character;
        const char previous = std::exchange(previous_, '\0');
        char& quote = state_.quote;
        if (quote == '#') {
            return character == '\n';
        }
        if (quote == '\\') {
            readEscaped(character);
        } else if (character == '\\' && quote != '\'') {
            state_.outerQuote = quote;
            quote = '\\';
        } else if (quote == '\'' || quote == '$') {
            if (character == '\'') {
                endQuote();
            } else {
                append(character);
            }
        } else {
            previous_ = character;
            return readExpanded(character, previous, next);
        }
        return false;
    }

    void startCommand() {
        state_.words.clear();
        state_.isRedirection = false;
        startWord();
    }

    /// Has the word count as one even if it stays empty.
    void beginWord() { state_.isWord = true; }

    void endWord() {
        const bool isWord = state_.isWord || !state_.word.empty();
        if (isWord && !state_.isRedirection) {
            state_.words.push_back(state_.word);
        }
        state_.isRedirection = state_.isRedirection && !isWord;
        startWord();
    }

    /// Those that have ended.
    [[nodiscard]] const std::vector<std::string>& words() const { return state_.words; }

    /// The end of the substitution that is being read now ends its command, and nothing around it
    /// is read on.
    void stayWithin() { floor_ = around_.size(); }

    [[nodiscard]] BashLine line() const {
        const char quote = state_.quote == '\\' ? state_.outerQuote : state_.quote;
        BashLine line;
        line.typed = state_.typed;
        line.openQuote = quote;
        line.isRedirection = state_.isRedirection;
        line.isKnown = state_.isKnown;
        // Elsewhere there are no words.
        if (state_.closer != '}' && quote != '#' && !isTooDeep_) {
            line.words = state_.words;
        }
        line.index = line.words.size();
        line.words.push_back(state_.word);
        return line;
    }

private:
    struct State {
        std::vector<std::string> words;
        std::string word;
        std::string typed;
        /// The one that is open; "$" for $'...', "\\" behind a backslash, "#" in a comment.
        char quote = '\0';
        /// The quote around a backslash.
        char outerQuote = '\0';
        /// Whether a word has begun, though it may be empty yet.
        bool isWord = false;
        bool isRedirection = false;
        /// Whether the word will be what its text says: nothing in it is expanded.
        bool isKnown = true;
        /// What ends the substitution that all this stands in, or 0.
        char closer = '\0';
        /// Parentheses that are open within it.
        int parentheses = 0;
    };

    void startWord() {
        state_.word.clear();
        state_.typed.clear();
        state_.isWord = false;
        state_.isKnown = true;
    }

    void append(char character) { state_.word += character; }

    void endQuote() { state_.quote = '\0'; }

    void readEscaped(char character) {
        state_.quote = std::exchange(state_.outerQuote, '\0');
        // Between double quotes a backslash is a character of its own in front of most others.
        if (state_.quote != '\0' && std::string_view("\"\\$`").find(character) == npos) {
            append('\\');
        }
        append(character);
    }

    /// Where "$" and "`" have their meaning: outside quotes and between double ones.
    bool readExpanded(char character, char previous, char next) {
        const bool isQuoted = state_.quote == '"';
        if (character == '`' && state_.closer == '`') {
            return leave();
        }
        if (character == '$' || character == '`' || character == '!') {
            state_.isKnown = false;
        }
        if (character == '`') {
            enter('`');
        } else if (previous == '$' && character == '(') {
            enter(')');
        } else if (previous == '$' && character == '{') {
            enter('}');
        } else if (isQuoted && character == '"') {
            endQuote();
        } else if (isQuoted) {
            append(character);
        } else {
            return readUnquoted(character, previous, next);
        }
        return false;
    }

    bool readUnquoted(char character, char previous, char next) {
        if (character == state_.closer && state_.parentheses-- == 0) {
            return leave();
        }
        const bool isInWord = state_.isWord || !state_.word.empty();
        switch (character) {
        case '\'':
        case '"':
            state_.quote = character == '\'' && previous == '$' ? '$' : character;
            beginWord();
            return false;
        case ' ':
        case '\t':
            endWord();
            return false;
        case '<':
        case '>':
            // The number of a descriptor belongs to the redirection.
            if (!state_.isWord && state_.word.find_first_not_of("0123456789") == npos) {
                startWord();
            }
            endWord();
            state_.isRedirection = true;
            return false;
        case '(':
            if (previous == '<' || previous == '>') {
                state_.isRedirection = false;
                state_.isKnown = false;
                enter(')');
                return false;
            }
            state_.parentheses += state_.closer == ')' ? 1 : 0;
            return true;
        case '|':
        case '&':
            // A part of ">|", ">&" or "&>".
            return previous != '>' && previous != '<' && !(character == '&' && next == '>');
        case ')':
        case ';':
        case '\n':
            return true;
        case '#':
            state_.quote = isInWord ? '\0' : '#';
            break;
        case '~':
            state_.isKnown = state_.isKnown && isInWord && previous != '=' && previous != ':';
            break;
        case '*':
        case '?':
        case '[':
        case '{':
            state_.isKnown = false;
            break;
        default:
            break;
        }
        append(character);
        return false;
    }

    /// A substitution has words of its own; around it, it is a part of a word that nobody knows.
    void enter(char closer) {
        beginWord();
        if (around_.size() == deepest) {
            isTooDeep_ = true;
            return;
        }
        around_.push_back(std::move(state_));
        state_ = State{};
        state_.closer = closer;
        previous_ = '\0';
    }

    /// As read().
    bool leave() {
        previous_ = '\0';
        if (around_.size() == floor_) {
            return true;
        }
        state_ = std::move(around_.back());
        around_.pop_back();
        return false;
    }

    static constexpr std::size_t deepest = 100;

    State state_;
    std::vector<State> around_;
    std::size_t floor_ = 0;
    bool isTooDeep_ = false;
    /// The character before, where it had its meaning.
    char previous_ = '\0';
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
/// its history in place of "!"; and it takes a text that ends with the open quote for closed.
bool canStandIn(char openQuote, const std::string& text) {
    return openQuote == '\0' || (!text.ends_with(openQuote) &&
                                 (openQuote == '\'' || text.find('!') == std::string::npos));
}

/// The unquoted form of a part of a word.
std::string unquoted(std::string_view typed) {
    Splitter splitter;
    for (const char character : typed) {
        splitter.read(character, '\0');
    }
    return splitter.line().words.back();
}

} // namespace

BashLine splitBashLine(std::string_view beforeCursor, std::string_view afterCursor) {
    const auto next = [](std::string_view text, std::size_t place) {
        return place + 1 < text.size() ? text[place + 1] : '\0';
    };
    Splitter splitter;
    for (std::size_t place = 0; place < beforeCursor.size(); ++place) {
        if (splitter.read(beforeCursor[place], next(beforeCursor, place))) {
            splitter.startCommand();
        }
    }
    BashLine line = splitter.line();
    if (line.isRedirection) {
        return line;
    }
    splitter.beginWord();
    splitter.stayWithin();
    for (std::size_t place = 0; place < afterCursor.size(); ++place) {
        if (splitter.read(afterCursor[place], next(afterCursor, place))) {
            break;
        }
    }
    splitter.endWord();
    // What is left of the word being typed belongs to no other word.
    const auto& words = splitter.words();
    for (std::size_t place = line.words.size(); place < words.size(); ++place) {
        line.words.push_back(words[place]);
    }
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
    std::vector<std::string> lines{""};
    for (const Candidate& candidate : completions.candidates) {
        if (line.isKnown && candidate.value.starts_with(line.words[line.index]) &&
            canStandIn(line.openQuote, candidate.value)) {
            lines.push_back(
                quoted(std::string_view(candidate.value).substr(start), line.openQuote));
        }
    }
    const bool goesOn = lines.size() == 2 && lines.back().ends_with('=');
    // Bash quotes what it finds itself, and nothing of what it is given; so it gets to do the one
    // or the other.
    lines.front() = goesOn ? "nospace" : lines.size() == 1 ? shellsOwn(completions) : "nothing";
    // Before version 4 a function can't change how bash goes on.
    if (goesOn && request.version < 4) {
        // Two that begin alike are completed so far without a space behind them.
        lines.push_back(lines.back() + "...");
    }
    return lines;
}

} // namespace fernlow::completion

#include "completion/bash_line.h"

#include "completion/disk_names.h"

#include <algorithm>
#include <cstddef>

namespace fernlow::completion {

namespace {

bool isOneOf(char character, std::string_view characters) {
    return characters.find(character) != std::string_view::npos;
}

struct Word {
    /// Unquoted.
    std::string text;
    /// The offset of the first character on the line.
    std::size_t start = 0;
};

/// Splits a command into words as bash does. Text that bash will expand becomes unknownText.
class BashLine {
public:
    /// Keeps a reference to the line.
    explicit BashLine(std::string_view line) : line_(line) {
        while (next_ < line_.size() && state_ != State::ended) {
            const char character = line_[next_++];
            if (state_ == State::singleQuotes) {
                readSingleQuoted(character);
            } else if (state_ == State::doubleQuotes) {
                readDoubleQuoted(character);
            } else {
                readUnquoted(character);
            }
        }
    }

    /// Returns the words before the last word.
    [[nodiscard]] const std::vector<Word>& words() const { return words_; }

    /// Returns the word at the end of the line, which may be empty.
    [[nodiscard]] const Word& lastWord() const { return lastWord_; }

    /// Ends the last word and, unless it is the file of a redirection, adds it to the words().
    void endWord() {
        const bool isWord = !lastWord_.text.empty() || state_ == State::inWord;
        if (isWord && !isRedirection_) {
            words_.push_back(lastWord_);
        }
        if (isWord) {
            isRedirection_ = false;
        }
        lastWord_ = {"", next_};
        state_ = State::betweenWords;
    }

    /// Returns the quote that is open at the end of the line, or 0.
    [[nodiscard]] char openQuote() const {
        if (state_ == State::doubleQuotes) {
            return '"';
        }
        return state_ == State::singleQuotes ? '\'' : '\0';
    }

    /// Returns whether the last word is the file of a redirection.
    [[nodiscard]] bool isRedirection() const { return isRedirection_; }

    /// Returns whether the end of the line is outside the command: in a substitution, in a comment
    /// or after the command's end.
    [[nodiscard]] bool isOutsideCommand() const { return state_ == State::ended; }

private:
    enum class State { betweenWords, inWord, singleQuotes, doubleQuotes, ended };

    [[nodiscard]] char nextCharacter() const { return next_ < line_.size() ? line_[next_] : '\0'; }

    void append(char character) {
        lastWord_.text += character;
        if (state_ == State::betweenWords) {
            state_ = State::inWord;
        }
    }

    void readSingleQuoted(char character) {
        if (character == '\'') {
            state_ = State::inWord;
        } else {
            append(character);
        }
    }

    void readDoubleQuoted(char character) {
        if (character == '"') {
            state_ = State::inWord;
        } else if (character == '\\' && isOneOf(nextCharacter(), "\"\\$`")) {
            readEscaped();
        } else if (isOneOf(character, "$`!")) {
            readExpansion(character);
        } else {
            append(character);
        }
    }

    void readUnquoted(char character) {
        if (isOneOf(character, " \t")) {
            endWord();
        } else if (character == '\'') {
            state_ = State::singleQuotes;
        } else if (character == '"') {
            state_ = State::doubleQuotes;
        } else if (character == '\\') {
            readEscaped();
        } else if (isOneOf(character, "$`!*?[{(")) {
            readExpansion(character);
        } else if (isOneOf(character, "<>") || (character == '&' && nextCharacter() == '>')) {
            readRedirection();
        } else if (isOneOf(character, ";|&)\n") ||
                   (character == '#' && state_ == State::betweenWords)) {
            endWord();
            state_ = State::ended;
        } else {
            // bash also expands a "~" that follows "=" or ":".
            const bool isHome = character == '~' && next_ > 1 && isOneOf(line_[next_ - 2], "=:");
            append(isHome ? unknownText : character);
        }
    }

    void readEscaped() {
        if (next_ < line_.size()) {
            append(line_[next_++]);
        }
    }

    void readRedirection() {
        // An unquoted number directly before the operator is a descriptor, not a word.
        const std::string_view typed = line_.substr(lastWord_.start, next_ - 1 - lastWord_.start);
        if (typed.find_first_not_of("0123456789") == std::string_view::npos) {
            lastWord_ = {};
            state_ = State::betweenWords;
        }
        endWord();
        while (next_ < line_.size() && isOneOf(nextCharacter(), "<>&|")) {
            ++next_;
        }
        lastWord_.start = next_;
        // "<(" and ">(" begin a word instead.
        isRedirection_ = nextCharacter() != '(';
    }

    /// Reads a character that bash will expand, or a whole substitution.
    void readExpansion(char character) {
        append(unknownText);
        const bool isQuoted = state_ == State::doubleQuotes;
        if (character == '`' || (character == '(' && !isQuoted)) {
            skipSubstitution(character);
        } else if (character == '$' && isOneOf(nextCharacter(), isQuoted ? "({" : "({'")) {
            skipSubstitution(line_[next_++]);
        }
    }

    /// Skips to the end of the substitution. Ignores the quotes inside it, so it may find another
    /// end than bash. This does no harm: in a line that bash expands, only the program's own words
    /// are offered, and they need no quotes.
    void skipSubstitution(char begin) {
        char end = begin;
        if (begin == '(') {
            end = ')';
        } else if (begin == '{') {
            end = '}';
        }
        std::size_t depth = 1;
        while (next_ < line_.size()) {
            const char character = line_[next_++];
            if (character == '\\') {
                ++next_;
            } else if (character == end && --depth == 0) {
                return;
            } else if (character == begin) {
                ++depth;
            }
        }
        state_ = State::ended;
    }

    std::string_view line_;
    std::size_t next_ = 0;
    State state_ = State::betweenWords;
    bool isRedirection_ = false;
    std::vector<Word> words_;
    Word lastWord_;
};

/// Returns the words after the program's name. The word at the cursor ends at the cursor.
std::vector<std::string> wordsOf(const BashLine& before, const BashRequest& request) {
    std::vector<std::string> words;
    for (const Word& word : before.words()) {
        words.push_back(word.text);
    }
    words.push_back(before.lastWord().text);
    const std::string line = std::string(request.beforeCursor) + std::string(request.afterCursor);
    BashLine whole(line);
    whole.endWord();
    for (const Word& word : whole.words()) {
        // A word that starts at the cursor is the rest of the word at the cursor.
        if (word.start > request.beforeCursor.size()) {
            words.push_back(word.text);
        }
    }
    words.erase(words.begin());
    return words;
}

/// Returns the characters that bash does not read literally within the open quote.
std::string_view specialCharacters(char openQuote) {
    switch (openQuote) {
    case '\'':
        return "'";
    case '"':
        return "\"\\$`";
    default:
        return " \t\"'\\$`&|;<>(){}[]*?!#~^";
    }
}

/// Returns the text quoted, so that bash reads back exactly the text within the open quote.
std::string quoted(std::string_view text, char openQuote) {
    std::string result;
    for (const char character : text) {
        if (isOneOf(character, specialCharacters(openQuote))) {
            // Single quotes have no escapes: '\'' ends them, adds a quote and begins them again.
            result += openQuote == '\'' ? R"('\')" : "\\";
        }
        result += character;
    }
    return result;
}

/// Returns whether bash leaves the text unchanged within the open quote. Between double quotes it
/// expands "!". It takes a quote at either end of the text for the opening or the closing quote.
bool isKeptInQuote(char openQuote, std::string_view text) {
    return openQuote == '\0' || (!text.starts_with(openQuote) && !text.ends_with(openQuote) &&
                                 (openQuote == '\'' || !isOneOf('!', text)));
}

/// Returns how many bytes of the unquoted word bash keeps on the line. It replaces only the end of
/// the word, so its replies must not contain these bytes. `rawWord` is the word as typed.
std::size_t keptSize(std::string_view rawWord, std::string_view replaced, char openQuote) {
    rawWord.remove_suffix(replaced.size());
    if (openQuote != '\0' && rawWord.ends_with(openQuote)) {
        rawWord.remove_suffix(1);
    }
    return BashLine(rawWord).lastWord().text.size();
}

/// Returns the reply for a candidate of which bash keeps the first bytes on the line.
std::string replyFor(std::string_view candidate, std::size_t kept, char openQuote) {
    // bash expands only an unquoted "~".
    const std::string_view home(kept == 0 && candidate.starts_with("~/") ? "~" : "");
    const bool isComplete =
        !candidate.ends_with('=') && !candidate.ends_with('/') && openQuote == '\0';
    return std::string(home) + quoted(candidate.substr(kept + home.size()), openQuote) +
           (isComplete ? " " : "");
}

} // namespace

std::vector<std::string> completeBashLine(const BashRequest& request,
                                          const CompletionContext& context) {
    const BashLine line(request.beforeCursor);
    const std::string& word = line.lastWord().text;
    const std::string_view rawWord = request.beforeCursor.substr(line.lastWord().start);
    const bool isProgramName = line.words().empty() && !line.isRedirection();
    const bool isUserHome = rawWord.starts_with('~') && !rawWord.starts_with("~/");
    if (line.isOutsideCommand() || isProgramName || !isKnown(word) || isUserHome ||
        !rawWord.ends_with(request.replaced)) {
        return {};
    }
    const auto words = wordsOf(line, request);
    Completions completions{{}, PathKind::file};
    if (!line.isRedirection()) {
        completions = complete(words, line.words().size() - 1, context);
    } else if (std::all_of(words.begin(), words.end(), isKnown)) {
        addNamesOnDisk(completions, word, context);
    }
    const std::size_t kept = keptSize(rawWord, request.replaced, line.openQuote());
    std::vector<std::string> replies;
    for (const auto& [value, description] : completions.candidates) {
        if (value.starts_with(word) &&
            isKeptInQuote(line.openQuote(), std::string_view(value).substr(kept))) {
            replies.push_back(replyFor(value, kept, line.openQuote()));
        }
    }
    return replies;
}

} // namespace fernlow::completion

#include "completion/bash_line.h"

#include "completion/disk_names.h"

#include <algorithm>
#include <cstddef>
#include <utility>

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

/// Reads a command as bash does. Text that bash will expand becomes unknownText.
class BashLine {
public:
    /// Keeps a reference to the line.
    explicit BashLine(std::string_view line) : line_(line) {
        while (at_ < line_.size() && state_ != State::elsewhere) {
            const char character = line_[at_++];
            const bool endsQuote = openQuote() != '\0' && character == openQuote();
            if (endsQuote) {
                state_ = State::inWord;
            } else if (state_ == State::singleQuotes) {
                put(character);
            } else if (state_ == State::doubleQuotes) {
                readDoubleQuoted(character);
            } else {
                readUnquoted(character);
            }
        }
    }

    /// The words in front of the last one.
    [[nodiscard]] const std::vector<Word>& words() const { return words_; }

    /// The word at the end of the line, which may be empty.
    [[nodiscard]] const Word& lastWord() const { return lastWord_; }

    /// Ends the last word, so that it is one of the words().
    void endWord() {
        const bool isWord = !lastWord_.text.empty() || state_ == State::inWord;
        if (isWord && !std::exchange(isRedirection_, false)) {
            words_.push_back(lastWord_);
        }
        lastWord_ = {"", at_};
        state_ = State::betweenWords;
    }

    /// The quote that is open at the end of the line, or 0.
    [[nodiscard]] char openQuote() const {
        const bool isDouble = state_ == State::doubleQuotes;
        return isDouble ? '"' : state_ == State::singleQuotes ? '\'' : '\0';
    }

    /// Whether the last word is the file of a redirection.
    [[nodiscard]] bool isRedirection() const { return isRedirection_; }

    /// Whether the line ends in a substitution or a comment, or behind the end of the command.
    [[nodiscard]] bool endsElsewhere() const { return state_ == State::elsewhere; }

private:
    enum class State { betweenWords, inWord, singleQuotes, doubleQuotes, elsewhere };

    [[nodiscard]] char next() const { return at_ < line_.size() ? line_[at_] : '\0'; }

    void put(char character) {
        lastWord_.text += character;
        state_ = state_ == State::betweenWords ? State::inWord : state_;
    }

    void readDoubleQuoted(char character) {
        if (character == '\\' && isOneOf(next(), "\"\\$`")) {
            readEscaped();
        } else if (isOneOf(character, "$`!")) {
            readExpansion(character);
        } else {
            put(character);
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
        } else if (isOneOf(character, "<>") || (character == '&' && next() == '>')) {
            readRedirection();
        } else if (isOneOf(character, ";|&)\n") ||
                   (character == '#' && state_ == State::betweenWords)) {
            endWord();
            state_ = State::elsewhere;
        } else {
            const bool isHome = character == '~' && at_ > 1 && isOneOf(line_[at_ - 2], "=:");
            put(isHome ? unknownText : character);
        }
    }

    void readEscaped() {
        if (at_ < line_.size()) {
            put(line_[at_++]);
        }
    }

    void readRedirection() {
        // The number of a descriptor, quoted nowhere, belongs to the redirection.
        const std::string_view typed = line_.substr(lastWord_.start, at_ - 1 - lastWord_.start);
        if (typed.find_first_not_of("0123456789") == std::string_view::npos) {
            lastWord_ = {};
            state_ = State::betweenWords;
        }
        endWord();
        while (at_ < line_.size() && isOneOf(next(), "<>&|")) {
            ++at_;
        }
        lastWord_.start = at_;
        // "<(" and ">(" begin a word instead.
        isRedirection_ = next() != '(';
    }

    /// Reads a character that bash will expand, or a whole substitution.
    void readExpansion(char character) {
        put(unknownText);
        const bool isQuoted = state_ == State::doubleQuotes;
        if (character == '`' || (character == '(' && !isQuoted)) {
            skipSubstitution(character);
        } else if (character == '$' && isOneOf(next(), isQuoted ? "({" : "({'")) {
            skipSubstitution(line_[at_++]);
        }
    }

    /// Skips to the character that ends the substitution, without a look at quotes in it: where
    /// bash expands a line, only the program's own words are offered, and they need no quotes.
    void skipSubstitution(char begin) {
        const char end = begin == '(' ? ')' : begin == '{' ? '}' : begin;
        std::size_t depth = 1;
        while (at_ < line_.size()) {
            const char character = line_[at_++];
            if (character == '\\') {
                ++at_;
            } else if (character == end && --depth == 0) {
                return;
            } else if (character == begin) {
                ++depth;
            }
        }
        state_ = State::elsewhere;
    }

    std::string_view line_;
    std::size_t at_ = 0;
    State state_ = State::betweenWords;
    bool isRedirection_ = false;
    std::vector<Word> words_;
    Word lastWord_;
};

/// The words of the whole line behind the program's name. The word at the cursor ends there.
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
        // The rest of the word at the cursor is not a word of its own.
        if (word.start > request.beforeCursor.size()) {
            words.push_back(word.text);
        }
    }
    words.erase(words.begin());
    return words;
}

/// The text as bash reads it back, within the open quote.
std::string quoted(std::string_view text, char openQuote) {
    std::string result;
    for (const char character : text) {
        if (openQuote == '\'') {
            result += character == '\'' ? R"('\')" : "";
        } else if (isOneOf(character,
                           openQuote == '"' ? "\"\\$`" : " \t\"'\\$`&|;<>(){}[]*?!#~^")) {
            result += '\\';
        }
        result += character;
    }
    return result;
}

/// Whether bash leaves the text unchanged within the open quote. Between double quotes it expands
/// "!", and it takes that quote at either end of the text for the opening or closing one.
bool isKeptInQuote(char openQuote, std::string_view text) {
    return openQuote == '\0' || (!text.starts_with(openQuote) && !text.ends_with(openQuote) &&
                                 (openQuote == '\'' || !isOneOf('!', text)));
}

} // namespace

std::vector<std::string> completeBashLine(const BashRequest& request,
                                          const CompletionContext& context) {
    const BashLine line(request.beforeCursor);
    const std::string& word = line.lastWord().text;
    std::string_view kept = request.beforeCursor.substr(line.lastWord().start);
    const bool isUserHome = kept.starts_with('~') && !kept.starts_with("~/");
    if (line.endsElsewhere() || (line.words().empty() && !line.isRedirection()) || !isKnown(word) ||
        isUserHome || !kept.ends_with(request.replaced)) {
        return {};
    }
    const auto words = wordsOf(line, request);
    Completions completions{{}, PathKind::file};
    if (!line.isRedirection()) {
        completions = complete(words, line.words().size() - 1, context);
    } else if (std::all_of(words.begin(), words.end(), isKnown)) {
        addNamesOnDisk(completions, word, context);
    }
    // bash keeps the beginning of the word, and so the replies must lack it.
    kept.remove_suffix(request.replaced.size());
    if (line.openQuote() != '\0' && kept.ends_with(line.openQuote())) {
        kept.remove_suffix(1);
    }
    const std::size_t start = BashLine(kept).lastWord().text.size();
    std::vector<std::string> replies;
    for (const Candidate& candidate : completions.candidates) {
        const std::string_view value(candidate.value);
        if (!value.starts_with(word) || !isKeptInQuote(line.openQuote(), value.substr(start))) {
            continue;
        }
        // A path below the home folder: bash expands only an unquoted "~".
        const std::string_view home(start == 0 && value.starts_with("~/") ? "~" : "");
        const bool isComplete =
            !value.ends_with('=') && !value.ends_with('/') && line.openQuote() == '\0';
        replies.push_back(std::string(home) +
                          quoted(value.substr(start + home.size()), line.openQuote()) +
                          (isComplete ? " " : ""));
    }
    return replies;
}

} // namespace fernlow::completion

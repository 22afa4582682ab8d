#pragma once

#include "completion/completion.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The ways of bash, which hands a completion the line as it was typed, quotes and all, and puts
/// what it is given in place of a part of the last word.
namespace fernlow::completion {

struct BashLine {
    /// Unquoted, the program's name included; the last one before the cursor is being typed.
    std::vector<std::string> words;
    std::size_t index = 0;
    /// That last word as typed, up to the cursor.
    std::string typed;
    /// The quote that is open at the cursor, or 0.
    char openQuote = '\0';
    /// Whether the word being typed is the file of a redirection.
    bool isRedirection = false;
    /// Whether bash will take that word as it is: nothing in it is expanded.
    bool isKnown = true;
};

/// Splits a command line at the cursor, as bash would. Nothing is expanded: where a substitution
/// is open, the words are those of the command in it, and one that is closed is a part of a word.
BashLine splitBashLine(std::string_view beforeCursor, std::string_view afterCursor);

/// How bash asks: COMP_LINE in two pieces, its major version, and the part of the last word that it
/// will replace.
struct BashRequest {
    std::string_view beforeCursor;
    std::string_view afterCursor;
    int version = 0;
    std::string_view replaced;
};

/// The lines of the answer: which of bash's own completions are wanted ("files", "folders",
/// "nospace", "nothing"), then what goes into COMPREPLY, quoted so that bash takes it for that very
/// word.
std::vector<std::string> completeBashLine(const BashRequest& request,
                                          const Surroundings& surroundings);

} // namespace fernlow::completion

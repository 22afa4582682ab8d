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
    /// Whether the cursor is in a substitution, a comment, or behind the end of the command.
    bool isElsewhere = false;
};

/// Splits a command line at the cursor, as bash would. Nothing is expanded: see unknownText.
BashLine splitBashLine(std::string_view beforeCursor, std::string_view afterCursor);

/// How bash asks: COMP_LINE in two pieces, the part of the last word that it will replace, and what
/// it puts in place of a "~".
struct BashRequest {
    std::string_view beforeCursor;
    std::string_view afterCursor;
    std::string_view replaced;
    std::string_view home;
};

/// What goes into COMPREPLY, a line each: quoted so that bash takes it for that very word, and with
/// the space behind a whole one. Nothing for a word that bash has yet to expand: of its own
/// completions it quotes none then.
std::vector<std::string> completeBashLine(const BashRequest& request,
                                          const CompletionContext& context);

} // namespace fernlow::completion

#pragma once

#include "completion/completion.h"

#include <string>
#include <string_view>
#include <vector>

/// Bash passes the completion function the raw command line, including quotes. It replaces the end
/// of the word at the cursor with a reply, and does not quote the reply.
namespace fernlow::completion {

struct BashRequest {
    /// The command line (COMP_LINE), split at the cursor.
    std::string_view beforeCursor;
    std::string_view afterCursor;
    /// The end of the word at the cursor that bash will replace.
    std::string_view replaced;
};

/// Returns the elements for COMPREPLY: quoted so that bash reads back exactly the candidate, with a
/// space after a complete word. Returns none if bash would expand the word at the cursor.
std::vector<std::string> completeBashLine(const BashRequest& request,
                                          const CompletionContext& context);

} // namespace fernlow::completion

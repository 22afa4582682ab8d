#pragma once

#include "completion/completion.h"

#include <string>
#include <string_view>
#include <vector>

/// Bash passes the completion function the raw command line, including quotes, and replaces a part
/// of the word at the cursor with a candidate as it is.
namespace fernlow::completion {

struct BashRequest {
    /// COMP_LINE in two pieces.
    std::string_view beforeCursor;
    std::string_view afterCursor;
    /// The end of the word at the cursor that bash will replace.
    std::string_view replaced;
};

/// Returns the elements for COMPREPLY: quoted so that bash reads back exactly the candidate, with a
/// space behind a complete word. Returns none where bash has yet to expand the word at the cursor.
std::vector<std::string> completeBashLine(const BashRequest& request,
                                          const CompletionContext& context);

} // namespace fernlow::completion

#pragma once

#include "completion/completion.h"
#include "completion/typed_line.h"

#include <vector>

namespace fernlow::completion {

/// Asks the running application for values of a kind that only it knows (ValueKind::project and the
/// kinds after it), as they fit the line being typed. The answer is not essential: one that is late
/// or wrong counts as none, without a message, and the application is never started. A setting is
/// "key=", or "key=value" once a key is typed. Throws json::EncodingError and
/// CurrentDirectoryError.
std::vector<Candidate> knownValues(ValueKind kind, const TypedLine& line,
                                   const CompletionContext& context);

} // namespace fernlow::completion

#pragma once

#include "completion/completion.h"
#include "completion/typed_line.h"

#include <vector>

namespace fernlow::completion {

/// Asks the running application for the values of a kind, for which isKnownOnlyToApplication(),
/// that fit the line being typed. Never starts the application. Returns no values if the reply is
/// late or malformed. A setting is offered as "key=", and as "key=value" once its key is typed.
/// Throws json::EncodingError and CurrentDirectoryError.
std::vector<Candidate> knownValues(ValueKind kind, const TypedLine& line,
                                   const CompletionContext& context);

} // namespace fernlow::completion

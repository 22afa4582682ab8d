#pragma once

#include "completion/application.h"
#include "completion/completion.h"
#include "completion/typed_line.h"

#include <vector>

namespace fernlow::completion {

/// Asks the application for values of the kind that fit the line being typed. Returns none where
/// the application does not answer, or for a kind that it does not know. A setting is "key=", or
/// "key=value" once a key is typed. Throws json::EncodingError and CurrentDirectoryError.
std::vector<Candidate> knownValues(ValueKind kind, const TypedLine& line,
                                   const CurrentDirectory& currentDirectory,
                                   Application& application);

} // namespace fernlow::completion

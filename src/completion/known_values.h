#pragma once

#include "completion/application.h"
#include "completion/completion.h"
#include "completion/typed_line.h"

#include <vector>

namespace fernlow::completion {

/// What the application knows of values of that kind, for the line that is being typed; empty when
/// it doesn't answer, or for kinds that it doesn't know. Settings are "key=", or "key=value" once a
/// key is typed.
std::vector<Candidate> knownValues(ValueKind kind, const TypedLine& line,
                                   const CurrentDirectory& currentDirectory,
                                   Application& application);

} // namespace fernlow::completion

#pragma once

#include "completion/completion.h"

namespace fernlow::completion {

/// Adds names on the disk of the kind `completions.paths` that begin with the typed path. A
/// folder's name ends with "/". Hidden names are added only after a typed ".".
///
/// For bash, adds names only if no candidate begins with the typed path. For fish, adds all names
/// of the folder if none begins with the typed path. For zsh, adds none: zsh lists names itself,
/// because it also completes parts of a path and shows colours. Adds none if the folder cannot be
/// read before the deadline, because users would think that an incomplete list is complete.
void addNamesOnDisk(Completions& completions, const std::string& typed,
                    const CompletionContext& context);

} // namespace fernlow::completion

#pragma once

#include "completion/completion.h"

namespace fernlow::completion {

/// Adds the names on the disk that the typed path may become, as far as the completions ask for
/// them. A folder's name has a "/" at its end, and hidden names need their "." typed.
///
/// bash gets names only where no candidate begins as typed, and fish gets all names of the folder
/// where none begins as typed. zsh gets none: it lists names itself, because it also completes
/// parts of a path and shows colours. Nobody gets any where the folder cannot be read, or not
/// before the deadline, because people would take a part of the names for all of them.
void addNamesOnDisk(Completions& completions, const std::string& typed,
                    const CompletionContext& context);

} // namespace fernlow::completion

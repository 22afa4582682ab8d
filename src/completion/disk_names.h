#pragma once

#include "completion/completion.h"

namespace fernlow::completion {

/// The folders, and with `files` all else too, that a path may become which has been typed so far.
/// A folder has a "/" at its end. What is hidden needs its "." typed. Nothing where the folder
/// cannot be read, or not before the deadline: some names would look like all.
std::vector<Candidate> namesOnDisk(const std::string& typed, bool files,
                                   std::chrono::steady_clock::time_point deadline);

} // namespace fernlow::completion

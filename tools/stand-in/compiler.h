#pragma once

#include "state.h"

namespace fernlow::standin {

/// Compiles a source: checks that the brackets in it and in its imports balance, then copies it to
/// its output path. Logs the result. Throws std::runtime_error if copying fails.
void compile(State& state, const Project& project, const fs::path& source);
/// Returns the files to compile after `saved` were saved: these files and all files that import
/// them directly or indirectly, except files without output.
std::vector<fs::path> affectedBy(const Project& project, const std::vector<fs::path>& saved);
/// Returns all files that have output.
std::vector<fs::path> filesWithOutput(const Project& project);
/// Checks the brackets of a source, without its imports, and logs the result.
void checkSyntax(State& state, const Project& project, const fs::path& source);

/// Returns a work report from the log entries after the cursor `since`. Includes only entries about
/// the project in the folder `project`, unless that is empty.
Json workReport(const State& state, std::uint64_t since, const fs::path& project);

} // namespace fernlow::standin

#pragma once

#include "state.h"

namespace fernlow::standin {

/// Compiles one source the way the stand-in understands it: its braces must balance, and then it
/// is copied to where its output goes. What happened is written to the log.
void compile(State& state, const Project& project, const fs::path& source);
/// The files to compile when these were saved: themselves and whatever imports them, however
/// indirectly, without those that have no output of their own.
std::vector<fs::path> affectedBy(const Project& project, const std::vector<fs::path>& saved);
/// Every file that has output.
std::vector<fs::path> filesWithOutput(const Project& project);
/// Looks for faults in one source and logs them, without writing anything.
void checkSyntax(State& state, const Project& project, const fs::path& source);

/// What the log holds after `since` as a work report; only about the project in that folder, unless
/// it is empty.
Json workReport(const State& state, std::uint64_t since, const fs::path& project);

} // namespace fernlow::standin

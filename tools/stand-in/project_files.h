#pragma once

#include "state.h"

#include <optional>

namespace fernlow::standin {

/// The folder a project's sources are in.
fs::path sourceFolder(const Project& project);
/// The folder a project's output goes to: its build folder, or its source folder without one.
fs::path outputRoot(const Project& project);

/// Brings the skipped folders in line with the setting that lists them.
void readSkippedFolders(Project& project);

/// The language a file's extension tells; empty for a file that is not compiled.
std::string languageOf(const fs::path& file);
/// Whether a file is only there to be imported by others.
bool isPartial(const fs::path& file);

/// Every file of a project, and with `includeFolders` every folder, in order of path. Leaves out
/// the build folder, skipped folders and whatever begins with a dot.
std::vector<fs::path> indexedPaths(const Project& project, bool includeFolders = false);

/// An import statement: the name it gives and the file that name leads to, if there is one.
struct Import {
    std::string name;
    std::optional<fs::path> file;
};
/// The lines of the form @import "name" in a file, in order.
std::vector<Import> importsOf(const fs::path& file);

/// What becomes of a file: "compile", "ignore" or "copy".
std::string outputActionOf(const Project& project, const fs::path& file);
/// Where a file's output goes; none when it has no output.
std::optional<fs::path> outputPathOf(const Project& project, const fs::path& file);
/// A file as the listing shows it.
Json fileRow(const Project& project, const fs::path& file);

} // namespace fernlow::standin

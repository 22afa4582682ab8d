#pragma once

#include "state.h"

#include <optional>

namespace fernlow::standin {

/// Returns the folder with a project's sources.
fs::path sourceFolder(const Project& project);
/// Returns the folder for a project's output: its build folder or, if that is inactive, its source
/// folder.
fs::path outputRoot(const Project& project);

/// Updates the skipped folders from the setting that lists them.
void readSkippedFolders(Project& project);

/// Returns the language of a file according to its extension, or an empty text if the file is not
/// compiled.
std::string languageOf(const fs::path& file);
/// Returns whether a file has no output and only serves to be imported.
bool isPartial(const fs::path& file);

/// Returns the files of a project, and its folders if `includeFolders`, sorted by path. Omits the
/// build folder, skipped folders and names that begin with a dot.
std::vector<fs::path> indexedPaths(const Project& project, bool includeFolders = false);

/// An import statement: the imported name and the file with this name, if there is one.
struct Import {
    std::string name;
    std::optional<fs::path> file;
};
/// Returns the statements of the form @import "name" in a file, in their order.
std::vector<Import> importsOf(const fs::path& file);

/// Returns how a file is processed: "compile", "ignore" or "copy".
std::string outputActionOf(const Project& project, const fs::path& file);
/// Returns the path of a file's output, if it has output.
std::optional<fs::path> outputPathOf(const Project& project, const fs::path& file);
/// Returns a file's row in a listing.
Json fileRow(const Project& project, const fs::path& file);

} // namespace fernlow::standin

#pragma once

#include <filesystem>
#include <string>

namespace fernlow::standin {

/// Returns the contents of a regular file, or an empty text if the file cannot be read, is not a
/// regular file or is larger than 16 MB. Follows links: a source may import files from anywhere.
std::string textOf(const std::filesystem::path& file);

/// Throws std::runtime_error if `file` does not exist, or if it is a link that leads out of the
/// project's folder.
void requireInside(const std::filesystem::path& project, const std::filesystem::path& file);

/// Copies `source` to `output`, both of which lie in the project's folder, and creates the folders
/// that `output` needs. Whoever wrote the project may have filled it with links, so the copy reads
/// no file outside the project's folder and writes through no link at all; a link at `output`
/// itself is replaced. Throws std::runtime_error on failure.
void copyInside(const std::filesystem::path& project, const std::filesystem::path& source,
                const std::filesystem::path& output);

} // namespace fernlow::standin

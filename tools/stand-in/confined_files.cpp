#include "confined_files.h"

#include "state.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace fernlow::standin {

namespace {

/// Owns a file descriptor, or a negative number if opening failed.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }

    [[nodiscard]] int number() const { return number_; }

private:
    int number_;
};

[[noreturn]] void throwSystemError(const fs::path& path) {
    throw std::runtime_error(path.string() + ": " + std::strerror(errno));
}

/// Opens an entry of a folder without following a link and without waiting for another process, as
/// opening a named pipe would. `path` is the entry's path, for the error message.
Descriptor openEntry(const Descriptor& folder, const fs::path& path, int flags) {
    Descriptor entry(openat(folder.number(), path.filename().c_str(),
                            flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666));
    if (entry.number() < 0) {
        throwSystemError(path);
    }
    return entry;
}

/// Opens the folder that contains `path`. Opens each folder on the way from `root`, so that a link
/// cannot lead out of `root` even if the link is created meanwhile.
Descriptor openFolderOf(const fs::path& root, const fs::path& path, bool createsFolders) {
    Descriptor folder(open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.number() < 0) {
        throwSystemError(root);
    }
    fs::path opened = root;
    for (const fs::path& name : path.lexically_relative(root).parent_path()) {
        opened /= name;
        if (name == "..") {
            throw std::runtime_error(path.string() + " is not in " + root.string() + ".");
        }
        if (createsFolders) {
            // The result is ignored: the folder may exist already, and after any other failure,
            // opening the folder fails too.
            (void)mkdirat(folder.number(), name.c_str(), 0777);
        }
        if (fs::is_symlink(opened)) {
            throw std::runtime_error(opened.string() + " is a link, which builds do not follow.");
        }
        folder = openEntry(folder, opened, O_RDONLY | O_DIRECTORY);
    }
    return folder;
}

bool isRegularFile(const Descriptor& file) {
    struct stat status{};
    return fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode);
}

/// Reads the next bytes of a file into the buffer and returns a view of them. The view is empty at
/// the end of the file. Returns nothing if reading fails.
std::optional<std::string_view> readPiece(const Descriptor& file, std::array<char, 65536>& buffer) {
    const ssize_t count = read(file.number(), buffer.data(), buffer.size());
    if (count < 0) {
        return std::nullopt;
    }
    return std::string_view(buffer.data(), static_cast<std::size_t>(count));
}

/// Returns the path of `file` without links. Throws std::runtime_error if that path is outside the
/// folder `root`, whose path must contain no links.
fs::path realPathInside(const fs::path& root, const fs::path& file) {
    fs::path real = fs::canonical(file);
    if (!isWithin(real, root)) {
        throw std::runtime_error(file.string() + " is a link that leads out of the project.");
    }
    return real;
}

} // namespace

std::string textOf(const fs::path& file) {
    constexpr std::size_t maxSize = 16U << 20;
    const Descriptor input(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (input.number() < 0 || !isRegularFile(input)) {
        return "";
    }
    std::string text;
    std::array<char, 65536> buffer{};
    for (;;) {
        const auto piece = readPiece(input, buffer);
        if (!piece || text.size() + piece->size() > maxSize) {
            return "";
        }
        if (piece->empty()) {
            return text;
        }
        text += *piece;
    }
}

void requireInside(const fs::path& project, const fs::path& file) {
    realPathInside(fs::canonical(project), file);
}

void copyInside(const fs::path& project, const fs::path& source, const fs::path& output) {
    const fs::path root = fs::canonical(project);
    const fs::path real = realPathInside(root, source);
    const Descriptor input = openEntry(openFolderOf(root, real, false), real, O_RDONLY);
    if (!isRegularFile(input)) {
        throw std::runtime_error(source.string() + " is not a file.");
    }
    const Descriptor folder = openFolderOf(project, output, true);
    // Replaces an existing file instead of writing to it. The file may be a link, or may have a
    // second name (a hard link) outside the project.
    if (unlinkat(folder.number(), output.filename().c_str(), 0) != 0 && errno != ENOENT) {
        throwSystemError(output);
    }
    const Descriptor copy = openEntry(folder, output, O_WRONLY | O_CREAT | O_EXCL);
    std::array<char, 65536> buffer{};
    for (;;) {
        auto piece = readPiece(input, buffer);
        if (!piece) {
            throwSystemError(source);
        }
        if (piece->empty()) {
            return;
        }
        while (!piece->empty()) {
            const ssize_t count = write(copy.number(), piece->data(), piece->size());
            if (count <= 0) {
                throwSystemError(output);
            }
            piece->remove_prefix(static_cast<std::size_t>(count));
        }
    }
}

} // namespace fernlow::standin

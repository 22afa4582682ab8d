#include "completion/disk_names.h"

#include <dirent.h>
#include <sys/stat.h>

#include <memory>

namespace fernlow::completion {

namespace {

struct Closer {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// Whether a name may be offered: it is no stranger's trick, and neither hidden nor, as the
/// beginning of a path, somebody's home folder or an option.
bool isMeant(const std::string& name, const std::string& beginning, bool isWholePath) {
    const bool isHidden = name.starts_with('.') && !beginning.starts_with('.');
    const bool isOther = isWholePath && (name.starts_with('~') || name.starts_with("--"));
    return name.starts_with(beginning) && name != "." && name != ".." && !isHidden && !isOther &&
           isHarmless(name);
}

bool isFolder(const std::string& path) {
    struct stat status{};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

std::vector<Candidate> namesOnDisk(const std::string& typed, bool files,
                                   std::chrono::steady_clock::time_point deadline) {
    const std::size_t slash = typed.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : typed.substr(0, slash + 1);
    const std::string beginning = typed.substr(folder.size());
    const std::unique_ptr<DIR, Closer> open(::opendir(folder.empty() ? "." : folder.c_str()));
    std::vector<Candidate> names;
    while (open && names.size() < maxCandidates) {
        const dirent* const entry = ::readdir(open.get());
        if (entry == nullptr) {
            break;
        }
        if (std::chrono::steady_clock::now() > deadline) {
            return {};
        }
        const std::string path = folder + entry->d_name;
        if (isMeant(entry->d_name, beginning, folder.empty())) {
            if (isFolder(path)) {
                names.push_back({path + "/", ""});
            } else if (files) {
                names.push_back({path, ""});
            }
        }
    }
    return names;
}

} // namespace fernlow::completion

#include "completion/disk_names.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>

namespace fernlow::completion {

namespace {

struct Closer {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

bool isFolder(const std::string& path) {
    struct stat status{};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// A typed path: a folder, which is empty or ends with "/", and the beginning of a name.
struct TypedPath {
    std::string folder;
    std::string beginning;

    /// Whether the name may follow the folder. At the beginning of a path, fernlow would take a
    /// "~" for a home folder and "--" for an option.
    [[nodiscard]] bool mayBecome(const std::string& name) const {
        const bool isHidden = name.starts_with('.') && !beginning.starts_with('.');
        const bool isOther = folder.empty() && (name.starts_with('~') || name.starts_with("--"));
        return name != "." && name != ".." && !isHidden && !isOther;
    }

    /// The folder with the home folder in place of "~".
    [[nodiscard]] std::string onDisk(const CompletionContext& context) const {
        if (folder.empty()) {
            return "./";
        }
        if (folder.starts_with("~/")) {
            return context.home + folder.substr(1);
        }
        return folder.starts_with('~') ? resolvePath(folder, context.currentDirectory) : folder;
    }
};

std::vector<Candidate> namesIn(const TypedPath& typed, std::string_view beginning, PathKind kind,
                               const CompletionContext& context) {
    const std::string folder = typed.onDisk(context);
    const std::unique_ptr<DIR, Closer> open(::opendir(folder.c_str()));
    std::vector<Candidate> names;
    while (open && names.size() < maxCandidates) {
        const dirent* const entry = ::readdir(open.get());
        if (entry == nullptr) {
            break;
        }
        if (std::chrono::steady_clock::now() > context.deadline) {
            return {};
        }
        const std::string name(entry->d_name);
        if (!name.starts_with(beginning) || !typed.mayBecome(name)) {
            continue;
        }
        if (isFolder(folder + name)) {
            names.push_back({name + "/", ""});
        } else if (kind == PathKind::file) {
            names.push_back({name, ""});
        }
    }
    return names;
}

} // namespace

void addNamesOnDisk(Completions& completions, const std::string& typed,
                    const CompletionContext& context) {
    auto& candidates = completions.candidates;
    const bool hasMatch =
        std::any_of(candidates.begin(), candidates.end(),
                    [&](const Candidate& candidate) { return candidate.value.starts_with(typed); });
    if (completions.paths == PathKind::none || context.shell == Shell::zsh ||
        (context.shell == Shell::bash && hasMatch)) {
        return;
    }
    const std::size_t nameStart = typed.rfind('/') + 1;
    const TypedPath path{typed.substr(0, nameStart), typed.substr(nameStart)};
    auto names = namesIn(path, path.beginning, completions.paths, context);
    if (names.empty() && context.shell == Shell::fish) {
        names = namesIn(path, "", completions.paths, context);
    }
    addNames(candidates, names, path.folder, typed, context.shell);
}

} // namespace fernlow::completion

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

/// Returns the folder with the home folder in place of "~".
std::string expanded(const std::string& folder, const CompletionContext& context) {
    if (folder.starts_with("~/")) {
        return context.home + folder.substr(1);
    }
    return folder.starts_with('~') ? resolvePath(folder, context.currentDirectory) : folder;
}

/// Returns the entries of the folder that begin with `beginning`. The folder's path ends with "/".
std::vector<Candidate> namesIn(const std::string& folder, std::string_view beginning, PathKind kind,
                               const CompletionContext& context) {
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
        const bool isHidden = name.starts_with('.') && !beginning.starts_with('.');
        if (!name.starts_with(beginning) || isHidden || name == "." || name == "..") {
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
    // Without a "/", rfind() returns npos, and npos + 1 is 0.
    const std::size_t nameStart = typed.rfind('/') + 1;
    const std::string folder = typed.substr(0, nameStart);
    const std::string beginning = typed.substr(nameStart);
    const std::string path = folder.empty() ? "./" : expanded(folder, context);
    auto names = namesIn(path, beginning, completions.paths, context);
    if (names.empty() && context.shell == Shell::fish) {
        names = namesIn(path, "", completions.paths, context);
    }
    // At the beginning of a path, fernlow takes "~" for a home folder and "--" for an option.
    std::erase_if(names, [&](const Candidate& name) {
        return folder.empty() && (name.value.starts_with('~') || name.value.starts_with("--"));
    });
    addNames(candidates, names, folder, typed, context.shell);
}

} // namespace fernlow::completion

#include "state.h"

#include "settings_catalogue.h"

#include <algorithm>

namespace fernlow::standin {

State::State() : groups{"Projects", "Frameworks"}, defaults(defaultSettings()) {}

Project& State::projectAt(const std::string& path) {
    const fs::path folder = absolutePath(path);
    const auto found = std::ranges::find(projects, folder, &Project::folder);
    if (found == projects.end()) {
        throw Refusal("There is no project at " + folder.string() + ".");
    }
    return *found;
}

Project& State::projectOf(const fs::path& file) {
    Project* innermost = nullptr;
    for (Project& project : projects) {
        if (!isWithin(file, project.folder)) {
            continue;
        }
        if (innermost == nullptr || isWithin(project.folder, innermost->folder)) {
            innermost = &project;
        }
    }
    if (innermost == nullptr) {
        throw Refusal(file.string() + " is not in any project.");
    }
    if (!innermost->isEnabled) {
        throw Refusal("The project \"" + innermost->name + "\" is switched off. Enable it first.");
    }
    return *innermost;
}

void State::record(const Json& entry) {
    constexpr std::size_t capacity = 1000;
    Json numbered = {{"cursor", ++logCursor}};
    numbered.update(entry);
    log.push_back(std::move(numbered));
    if (log.size() > capacity) {
        log.pop_front();
    }
}

bool State::isTruncatedAfter(std::uint64_t cursor) const {
    return !log.empty() && log.front()["cursor"].get<std::uint64_t>() > cursor + 1;
}

void State::advance() {
    const auto now = Clock::now();
    std::set<fs::path> busy;
    std::erase_if(jobs, [&](Job& job) {
        // Only the first job of each project makes progress.
        const bool isFirst = busy.insert(job.project).second;
        if (!isFirst) {
            return false;
        }
        const bool hasStarted = job.nextStep != Clock::time_point{};
        if (!hasStarted) {
            job.nextStep = now + workTime;
        }
        try {
            for (; job.stepsDone < job.steps.size() && job.nextStep <= now; ++job.stepsDone) {
                job.steps[job.stepsDone]();
                job.nextStep += workTime;
            }
        } catch (const std::exception& error) {
            record({{"severity", "error"},
                    {"title", "Work stopped"},
                    {"message", error.what()},
                    {"path", job.project.string()},
                    {"projectPath", job.project.string()}});
            return true;
        }
        return job.stepsDone == job.steps.size();
    });
}

bool isFile(const fs::path& path) {
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

bool isFolder(const fs::path& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

bool isPathText(const std::string& text) {
    return std::ranges::none_of(text, [](char character) {
        return static_cast<unsigned char>(character) < ' ' || character == '\x7F';
    });
}

bool isPlainName(const std::string& text) {
    return isPathText(text) && text.find('/') == std::string::npos && text != "." && text != "..";
}

fs::path absolutePath(const std::string& text) {
    if (!isPathText(text)) {
        throw Refusal("A path can't hold control characters.");
    }
    const fs::path path = fs::path(text).lexically_normal();
    if (!path.is_absolute()) {
        throw Refusal("The path \"" + text + "\" is not absolute.");
    }
    // A path that ends with a slash has no file name. Except for the root, remove the slash.
    const bool endsWithSlash = !path.has_filename() && path != path.root_path();
    return endsWithSlash ? path.parent_path() : path;
}

bool isWithin(const fs::path& path, const fs::path& folder) {
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first ==
           folder.end();
}

} // namespace fernlow::standin

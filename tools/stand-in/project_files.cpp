#include "project_files.h"

#include "confined_files.h"
#include "settings_catalogue.h"

#include <algorithm>
#include <array>

namespace fernlow::standin {

namespace {

struct FileKind {
    const char* extension;
    const char* language;
    const char* outputExtension;
};

constexpr std::array kinds = {
    FileKind{".coffee", "CoffeeScript", ".js"}, FileKind{".js", "Javascript", ".js"},
    FileKind{".less", "Less", ".css"},          FileKind{".sass", "Sass", ".css"},
    FileKind{".scss", "Sass", ".css"},          FileKind{".styl", "Stylus", ".css"},
    FileKind{".ts", "Typescript", ".js"},       FileKind{".weft", "Weft", ".html"},
};

const FileKind* kindOf(const fs::path& file) {
    const auto* const found =
        std::ranges::find(kinds, file.extension().string(),
                          [](const FileKind& kind) { return std::string(kind.extension); });
    return found == kinds.end() ? nullptr : &*found;
}

/// Returns a setting that the user chose for one file, or an empty text.
std::string choiceFor(const Project& project, const fs::path& file, const char* member) {
    const auto choice = project.fileChoices.find(file);
    return choice == project.fileChoices.end() ? "" : choice->second.value(member, "");
}

std::string stemWithoutUnderscore(const fs::path& file) {
    const std::string stem = file.stem().string();
    return stem.starts_with('_') ? stem.substr(1) : stem;
}

/// Returns the file that an import of `name` means: a file in the folder of the name, either with
/// exactly this name, or with the importer's extension and perhaps an underscore at its beginning.
std::optional<fs::path> resolveImport(const fs::path& importer, const std::string& name) {
    const fs::path target = (importer.parent_path() / name).lexically_normal();
    std::error_code noSuchFolder;
    for (const auto& entry : fs::directory_iterator(target.parent_path(), noSuchFolder)) {
        const fs::path& candidate = entry.path();
        const bool isNamed = candidate.filename() == target.filename() ||
                             (candidate.extension() == importer.extension() &&
                              stemWithoutUnderscore(candidate) == target.filename());
        if (isNamed && isFile(candidate)) {
            return candidate;
        }
    }
    return std::nullopt;
}

} // namespace

fs::path sourceFolder(const Project& project) {
    return project.folder / project.settings["project"]["sourceFolderName"].get<std::string>();
}

void readSkippedFolders(Project& project) {
    const std::string list = project.settings["project"]["skippedFoldersString"];
    project.skippedFolders.clear();
    for (const std::string& folder : splitAtCommas(list)) {
        project.skippedFolders.insert((project.folder / folder).lexically_normal());
    }
}

fs::path outputRoot(const Project& project) {
    const Json& settings = project.settings["project"];
    if (!settings["buildFolderActive"].get<bool>()) {
        return sourceFolder(project);
    }
    return project.folder / settings["buildFolderName"].get<std::string>();
}

std::string languageOf(const fs::path& file) {
    const FileKind* kind = kindOf(file);
    return kind == nullptr ? "" : kind->language;
}

bool isPartial(const fs::path& file) {
    return file.filename().string().starts_with('_');
}

std::vector<fs::path> indexedPaths(const Project& project, bool includeFolders) {
    std::vector<fs::path> paths;
    fs::recursive_directory_iterator walk(project.folder,
                                          fs::directory_options::skip_permission_denied);
    for (; walk != fs::recursive_directory_iterator(); ++walk) {
        const fs::path& path = walk->path();
        const bool isOutput = path == outputRoot(project) && path != sourceFolder(project);
        if (isOutput || project.skippedFolders.contains(path) ||
            path.filename().string().starts_with('.')) {
            walk.disable_recursion_pending();
        } else if (isFile(path) || (includeFolders && isFolder(path))) {
            paths.push_back(path);
        }
    }
    std::ranges::sort(paths);
    return paths;
}

std::vector<Import> importsOf(const fs::path& file) {
    static const std::string keyword = "@import ";
    constexpr std::size_t maxImports = 1000;
    if (languageOf(file).empty()) {
        return {};
    }
    std::vector<Import> imports;
    const std::string text = textOf(file);
    std::size_t start = text.find(keyword);
    for (; start != std::string::npos && imports.size() < maxImports;
         start = text.find(keyword, start)) {
        start += keyword.size();
        const char quote = start < text.size() ? text[start] : '\0';
        if (quote != '"' && quote != '\'') {
            continue;
        }
        const auto end = text.find_first_of({quote, '\n', '\0'}, start + 1);
        if (end == std::string::npos || text[end] != quote) {
            continue;
        }
        const std::string name = text.substr(start + 1, end - start - 1);
        imports.push_back({name, resolveImport(file, name)});
    }
    return imports;
}

std::string outputActionOf(const Project& project, const fs::path& file) {
    if (auto action = choiceFor(project, file, "outputAction"); !action.empty()) {
        return action;
    }
    if (isPartial(file) || !isWithin(file, sourceFolder(project))) {
        return "ignore";
    }
    return languageOf(file).empty() ? "copy" : "compile";
}

std::optional<fs::path> outputPathOf(const Project& project, const fs::path& file) {
    const std::string action = outputActionOf(project, file);
    if (action == "ignore") {
        return std::nullopt;
    }
    fs::path name = file.filename();
    fs::path folder = outputRoot(project);
    if (const FileKind* kind = kindOf(file); kind != nullptr && action == "compile") {
        name.replace_extension(kind->outputExtension);
        folder /= project.appliedLanguages[kind->language]["outputFolderName"].get<std::string>();
    }
    const fs::path relativeFolder = file.parent_path().lexically_relative(sourceFolder(project));
    folder = (folder / relativeFolder).lexically_normal();
    if (const auto choice = choiceFor(project, file, "outputFolder"); !choice.empty()) {
        folder = choice;
    }
    if (const auto choice = choiceFor(project, file, "outputFilename"); !choice.empty()) {
        name = choice;
    }
    return (folder / name).lexically_normal();
}

Json fileRow(const Project& project, const fs::path& file) {
    Json row = {{"path", file.string()},
                {"relativePath", file.lexically_relative(project.folder).string()},
                {"language", languageOf(file)},
                {"outputAction", outputActionOf(project, file)},
                {"outputActionIsChosen", !choiceFor(project, file, "outputAction").empty()},
                {"outputPathIsChosen", !choiceFor(project, file, "outputFolder").empty()},
                {"isShadowItem", !isWithin(file, project.folder)},
                {"isFolder", isFolder(file)},
                {"exists", isFile(file) || isFolder(file)}};
    const auto output = outputPathOf(project, file);
    if (output && !isFolder(file)) {
        row["outputPath"] = output->string();
    }
    return row;
}

} // namespace fernlow::standin

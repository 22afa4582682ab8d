#include "endpoints.h"
#include "project_files.h"
#include "settings_catalogue.h"

#include <algorithm>

namespace fernlow::standin {

namespace {

fs::path existingFile(const Json& body) {
    fs::path file = absolutePath(body["path"]);
    if (!isFile(file)) {
        throw Refusal("There is no file at " + file.string() + ".");
    }
    return file;
}

/// Returns the files outside the project that its files import.
std::set<fs::path> shadowItems(const Project& project) {
    std::set<fs::path> outside;
    for (const fs::path& file : indexedPaths(project)) {
        for (const Import& import : importsOf(file)) {
            if (import.file && !isWithin(*import.file, project.folder)) {
                outside.insert(*import.file);
            }
        }
    }
    return outside;
}

Json listFiles(State& state, const Json& body) {
    const Project& project = state.projectAt(body["path"]);
    std::vector<fs::path> paths = indexedPaths(project, body["includeFolders"]);
    if (body["includeShadowItems"]) {
        for (const fs::path& file : shadowItems(project)) {
            paths.push_back(file);
        }
    }
    const auto limit = body["limit"].get<std::int64_t>();
    const auto offset = body["offset"].get<std::int64_t>();
    if (limit < 1 || offset < 0) {
        throw Refusal("The limit or the offset is out of range.", 400);
    }
    Json page = Json::array();
    std::int64_t total = 0;
    for (const fs::path& path : paths) {
        Json row = fileRow(project, path);
        if (body.value("language", row["language"]) != row["language"]) {
            continue;
        }
        if (body.value("outputAction", row["outputAction"]) != row["outputAction"]) {
            continue;
        }
        if (total >= offset && std::ssize(page) < limit) {
            page.push_back(std::move(row));
        }
        ++total;
    }
    const bool isTruncated = offset < total - std::ssize(page);
    return {{"files", std::move(page)},
            {"total", total},
            {"truncated", isTruncated},
            {"offset", offset}};
}

Json fileSettings(State& state, const Json& body) {
    const fs::path file = existingFile(body);
    const Project& project = state.projectOf(file);
    Json values = project.settings["languages"].value(languageOf(file), Json::object());
    const auto choice = project.fileChoices.find(file);
    if (choice != project.fileChoices.end()) {
        values.update(choice->second["values"]);
    }
    return {{"file", fileRow(project, file)}, {"values", std::move(values)}};
}

Json setFile(State& state, const Json& body) {
    const fs::path file = existingFile(body);
    Project& project = state.projectOf(file);
    if (body.contains("outputFilename") && !body.contains("outputFolder")) {
        throw Refusal("An output name needs an output folder.");
    }
    if (!isPlainName(body.value("outputFilename", ""))) {
        throw Refusal("An output name is no path.");
    }
    Json output = Json::object();
    for (const char* member : {"outputAction", "outputFolder", "outputFilename"}) {
        if (body.contains(member)) {
            output[member] = body[member];
        }
    }
    if (output.contains("outputFolder") &&
        !isWithin(absolutePath(output["outputFolder"]), outputRoot(project))) {
        throw Refusal("The output folder is not in the project's build folder.");
    }
    const bool hasValues = !body["values"].empty() || !body["literals"].empty();
    if (hasValues && languageOf(file).empty()) {
        throw Refusal(file.string() + " has no settings.");
    }
    const Json applied = hasValues ? readPatch(body, {languageOf(file), ""}) : Json::object();
    // Keeps the earlier choices for the file, if there are any.
    project.fileChoices.try_emplace(file, Json{{"values", Json::object()}});
    Json& choice = project.fileChoices.at(file);
    choice["values"].update(applied);
    choice.update(output);
    return fileSettings(state, {{"path", file.string()}});
}

Json fileSchema(State& /*unused*/, const Json& body) {
    if (body.contains("path")) {
        return settingsSchema(languageOf(existingFile(body)));
    }
    if (!body.contains("language")) {
        throw Refusal("A file or a language is needed.");
    }
    return settingsSchema(body["language"]);
}

Json skipFolders(State& state, const Json& body) {
    std::vector<fs::path> folders;
    for (const auto& text : body["paths"]) {
        folders.push_back(absolutePath(text.get<std::string>()));
        if (!isFolder(folders.back())) {
            throw Refusal("There is no folder at " + folders.back().string() + ".");
        }
        state.projectOf(folders.back());
    }
    Json skipped = Json::array();
    for (const fs::path& folder : folders) {
        Project& project = state.projectOf(folder);
        project.skippedFolders.erase(folder);
        if (body["skipped"]) {
            project.skippedFolders.insert(folder);
        }
        std::string list;
        for (const fs::path& skippedFolder : project.skippedFolders) {
            list += list.empty() ? "" : ",";
            list += skippedFolder.lexically_relative(project.folder).string();
        }
        project.settings["project"]["skippedFoldersString"] = list;
        skipped.push_back(folder.string());
    }
    return {{"paths", std::move(skipped)}, {"skipped", body["skipped"]}};
}

} // namespace

const Endpoints& fileEndpoints() {
    static const Endpoints rows = {
        {"POST", "/v1/files", "A project's files, a page at a time.",
         "path language? outputAction? includeFolders includeShadowItems limit offset", listFiles},
        {"POST", "/v1/files/settings", "One file and its settings.", "path", fileSettings},
        {"POST", "/v1/files/set", "Change one file, wholly or not at all.",
         "path outputAction? outputFolder? outputFilename? values literals", setFile},
        {"POST", "/v1/files/schema", "Which settings a file has.", "path? language?", fileSchema},
        {"POST", "/v1/files/skip", "Stop or resume indexing folders.",
         "paths skipped wait timeoutSeconds", skipFolders},
    };
    return rows;
}

} // namespace fernlow::standin

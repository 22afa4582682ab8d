#include "endpoints.h"
#include "settings_catalogue.h"

#include <algorithm>

namespace fernlow::standin {

namespace {

constexpr const char* permanentGroup = "Projects";
constexpr const char* frameworkGroup = "Frameworks";

Json projectRow(const Project& project) {
    return {{"name", project.name},
            {"path", project.folder.string()},
            {"isEnabled", project.isEnabled},
            {"isFramework", project.isFramework},
            {"group", project.group}};
}

Json addProject(State& state, const Json& body) {
    const fs::path folder = absolutePath(body["path"]);
    if (!isFolder(folder)) {
        throw Refusal("There is no folder at " + folder.string() + ".");
    }
    if (std::ranges::find(state.projects, folder, &Project::folder) != state.projects.end()) {
        throw Refusal(folder.string() + " is a project already.");
    }
    if (!folder.has_filename()) {
        throw Refusal("The whole disk can't be a project.");
    }
    const bool isFramework = body["asFramework"];
    Project project;
    project.folder = folder;
    project.name = folder.filename().string();
    project.group = isFramework ? frameworkGroup : permanentGroup;
    project.isFramework = isFramework;
    project.settings = state.defaults;
    project.appliedLanguages = state.defaults["languages"];
    for (const char* kind : {"hooks", "buildSteps", "webpPresets", "userLanguages"}) {
        project.collections[kind] = Json::array();
    }
    project.collections["buildSteps"].push_back({{"id", std::to_string(++state.lastRowId)},
                                                 {"buildStepType", "processRemainingItems"},
                                                 {"isRequired", true},
                                                 {"values", defaultRowValues("buildSteps")}});
    state.projects.push_back(std::move(project));
    return projectRow(state.projects.back());
}

Json removeProject(State& state, const Json& body) {
    Project& project = state.projectAt(body["path"]);
    Json row = projectRow(project);
    state.projects.erase(state.projects.begin() + (&project - state.projects.data()));
    return row;
}

Json enableProject(State& state, const Json& body) {
    Project& project = state.projectAt(body["path"]);
    project.isEnabled = body["enabled"];
    return projectRow(project);
}

Json renameProject(State& state, const Json& body) {
    Project& project = state.projectAt(body["path"]);
    if (body["name"] == "") {
        throw Refusal("A project needs a name.");
    }
    project.name = body["name"];
    return projectRow(project);
}

void requireGroup(const State& state, const std::string& name) {
    if (std::ranges::find(state.groups, name) == state.groups.end()) {
        throw Refusal("There is no group \"" + name + "\".");
    }
}

/// Returns the group. Throws Refusal if there is none or if it is permanent.
std::string& editableGroup(State& state, const std::string& name) {
    requireGroup(state, name);
    if (name == permanentGroup || name == frameworkGroup) {
        throw Refusal("The group \"" + name + "\" is Fernlow's own and can't be changed.");
    }
    return *std::ranges::find(state.groups, name);
}

std::string unusedGroupName(const State& state, const std::string& name) {
    if (name.empty()) {
        throw Refusal("A group needs a name.");
    }
    if (std::ranges::find(state.groups, name) != state.groups.end()) {
        throw Refusal("There is a group \"" + name + "\" already.");
    }
    return name;
}

Json moveProject(State& state, const Json& body) {
    Project& project = state.projectAt(body["path"]);
    const std::string group = body.value("group", std::string(permanentGroup));
    requireGroup(state, group);
    if (project.isFramework) {
        throw Refusal("A framework can't be moved.");
    }
    if (group == frameworkGroup) {
        throw Refusal("Only frameworks are in that group.");
    }
    project.group = group;
    return projectRow(project);
}

Json addGroup(State& state, const Json& body) {
    state.groups.push_back(unusedGroupName(state, body["name"]));
    return {{"name", body["name"]}};
}

Json renameGroup(State& state, const Json& body) {
    const auto name = body["name"].get<std::string>();
    std::string& group = editableGroup(state, name);
    group = unusedGroupName(state, body["newName"]);
    for (Project& project : state.projects) {
        if (project.group == name) {
            project.group = group;
        }
    }
    return {{"name", group}};
}

Json removeGroup(State& state, const Json& body) {
    const std::string name = editableGroup(state, body["name"]);
    std::erase(state.groups, name);
    for (Project& project : state.projects) {
        if (project.group == name) {
            project.group = permanentGroup;
        }
    }
    return {{"name", name}};
}

Json listGroups(State& state, const Json& /*unused*/) {
    Json rows = Json::array();
    for (const std::string& group : state.groups) {
        Json members = Json::array();
        std::string summary;
        for (const Project& project : state.projects) {
            if (project.group != group) {
                continue;
            }
            members.push_back(projectRow(project));
            summary += (summary.empty() ? "" : ", ") + project.name;
        }
        rows.push_back({{"name", group},
                        {"path", summary},
                        {"isEnabled", true},
                        {"isFramework", false},
                        {"projects", std::move(members)}});
    }
    return rows;
}

Json listProjects(State& state, const Json& /*unused*/) {
    Json rows = Json::array();
    for (const Project& project : state.projects) {
        rows.push_back(projectRow(project));
    }
    return rows;
}

Json setWatching(State& state, const Json& body) {
    state.isFileWatchingPaused = body["paused"];
    return {{"isFileWatchingPaused", body["paused"]}};
}

} // namespace

const Endpoints& projectEndpoints() {
    static const Endpoints rows = {
        {"GET", "/v1/projects", "Every project and framework.", "", listProjects},
        {"POST", "/v1/projects/add", "Add a folder as a project.",
         "path asFramework timeoutSeconds", addProject},
        {"POST", "/v1/projects/remove", "Remove a project.", "path", removeProject},
        {"POST", "/v1/projects/enabled", "Switch a project on or off.", "path enabled",
         enableProject},
        {"POST", "/v1/projects/move", "Move a project into a group.", "path group?", moveProject},
        {"POST", "/v1/projects/rename", "Rename a project.", "path name", renameProject},
        {"POST", "/v1/watching", "Pause or resume file watching.", "paused", setWatching},
        {"GET", "/v1/groups", "Every group, and what is in it.", "", listGroups},
        {"POST", "/v1/groups/add", "Make a group.", "name", addGroup},
        {"POST", "/v1/groups/remove", "Delete a group, not its projects.", "name", removeGroup},
        {"POST", "/v1/groups/rename", "Rename a group.", "name newName", renameGroup},
    };
    return rows;
}

} // namespace fernlow::standin

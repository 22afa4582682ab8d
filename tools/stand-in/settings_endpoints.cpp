#include "endpoints.h"
#include "project_files.h"
#include "settings_catalogue.h"

namespace fernlow::standin {

namespace {

/// Applies a patch to `settings` and returns the new values. Changes nothing if any value is
/// invalid.
Json applyPatch(Json& settings, const Json& body) {
    if (body.contains("fileExtension")) {
        throw Refusal("The stand-in has no settings by extension.");
    }
    const std::string language = body.value("language", "");
    Json applied = readPatch(body, {language, ""});
    Json& values = language.empty() ? settings["project"] : settings["languages"][language];
    values.update(applied);
    return applied;
}

Json setSettings(State& state, const Json& body) {
    Project& project = state.projectAt(body["path"]);
    const Json applied = applyPatch(project.settings, body);
    const std::string language = body.value("language", "");
    Json stale = Json::array();
    for (const auto& [name, value] : applied.items()) {
        if (concernsNewFilesOnly(name)) {
            stale = Json::array({language});
            continue;
        }
        // The setting of a language replaces the setting of each of its files.
        for (auto& [file, choice] : project.fileChoices) {
            if (languageOf(file) == language) {
                choice["values"].erase(name);
            }
        }
    }
    return {{"applied", applied}, {"outputPathsStale", stale}};
}

Json applyOutputPaths(State& state, const Json& body) {
    Project& project = state.projectAt(body["path"]);
    const std::string language = body["language"];
    requireLanguage(language);
    if (body.contains("fileExtension")) {
        throw Refusal("The stand-in has no settings by extension.");
    }
    project.appliedLanguages[language] = project.settings["languages"][language];
    int overwritten = 0;
    for (auto& [file, choice] : project.fileChoices) {
        if (languageOf(file) != language) {
            continue;
        }
        overwritten += choice.size() > 1 ? 1 : 0;
        choice = {{"values", choice["values"]}};
    }
    return {{"language", language}, {"overwrittenChoiceCount", overwritten}};
}

Json projectSettings(State& state, const Json& body) {
    return state.projectAt(body["path"]).settings;
}

Json defaults(State& state, const Json& /*unused*/) {
    return state.defaults;
}

Json setDefaults(State& state, const Json& body) {
    return {{"applied", applyPatch(state.defaults, body)}};
}

Json describeSettings(State& /*unused*/, const Json& body) {
    return settingsSchema(body.value("language", ""));
}

} // namespace

const Endpoints& settingsEndpoints() {
    static const Endpoints rows = {
        {"POST", "/v1/settings", "Every setting of a project.", "path", projectSettings},
        {"POST", "/v1/settings/set", "Change settings, wholly or not at all.",
         "path language? fileExtension? values literals", setSettings},
        {"POST", "/v1/settings/schema", "Which settings there are.", "path language?",
         describeSettings},
        {"POST", "/v1/settings/apply-output-paths", "Work out output paths afresh.",
         "path language fileExtension? timeoutSeconds", applyOutputPaths},
        {"GET", "/v1/defaults", "The settings a new project gets.", "", defaults},
        {"POST", "/v1/defaults/set", "Change the defaults.", "language? values literals",
         setDefaults},
        {"POST", "/v1/defaults/schema", "Which defaults there are.", "language?", describeSettings},
    };
    return rows;
}

} // namespace fernlow::standin

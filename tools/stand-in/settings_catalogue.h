#pragma once

#include "state.h"

namespace fernlow::standin {

/// Returns the languages that have settings.
const std::vector<std::string>& languages();
/// Throws Refusal if `language` has no settings.
void requireLanguage(const std::string& language);
/// Returns the initial settings of a project: {"project": {...}, "languages": {...}}.
Json defaultSettings();
/// Returns the default values of a row of one kind of collection.
Json defaultRowValues(const std::string& kind);

/// Returns the schema rows for a language, or for the project and all languages if `language` is
/// empty.
Json settingsSchema(const std::string& language);
/// Returns the schema rows for one kind of collection, or for all kinds if `kind` is empty.
Json collectionSchema(const std::string& kind);

/// The settings that a patch can change: the settings of a language, or of the rows of a
/// collection. If both names are empty, the settings of the project.
struct Scope {
    std::string language;
    std::string collection;
};
/// Returns the values that the members "literals" and "values" of `patch` set. Converts literals to
/// the types of their settings, and null to the default. "values" has precedence. Throws Refusal if
/// any key or value is invalid.
Json readPatch(const Json& patch, const Scope& scope);
/// Returns whether a change of this setting affects only the output paths of new files.
bool concernsNewFilesOnly(const std::string& name);

/// Returns the parts of `text` between commas. Returns no parts for an empty text.
std::vector<std::string> splitAtCommas(const std::string& text);

} // namespace fernlow::standin

#pragma once

#include "state.h"

namespace fernlow::standin {

/// The languages that have settings of their own.
const std::vector<std::string>& languages();
/// Refuses a language that has no settings.
void requireLanguage(const std::string& language);
/// The settings a project starts from: {"project": {...}, "languages": {...}}.
Json defaultSettings();
/// Every setting of a new row of one kind of collection, with its default.
Json defaultRowValues(const std::string& kind);

/// Schema rows of the settings of one language, or of all languages and the project when empty.
Json settingsSchema(const std::string& language);
/// Schema rows of one kind of collection, or of all kinds when empty.
Json collectionSchema(const std::string& kind);

/// Which settings a patch may name: a language's, a collection's, or with neither the project's.
struct Scope {
    std::string language;
    std::string collection;
};
/// The values that the members "literals" and "values" of `patch` ask for, "values" prevailing.
/// Literals are read by the type of the setting they name and null means the default. One bad key
/// or value refuses the whole patch.
Json readPatch(const Json& patch, const Scope& scope);
/// Whether a change of this setting leaves existing output paths as they are.
bool concernsNewFilesOnly(const std::string& name);

/// The pieces of `text` between commas; none when it is empty.
std::vector<std::string> splitAtCommas(const std::string& text);

} // namespace fernlow::standin

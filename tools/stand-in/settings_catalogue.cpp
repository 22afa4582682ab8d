#include "settings_catalogue.h"

#include <algorithm>
#include <charconv>

namespace fernlow::standin {

namespace {

constexpr const char* everyLanguage = "*";
constexpr const char* immediate = "immediate";
constexpr const char* copiedToFiles = "copiedToFiles";
constexpr const char* newFilesOnly = "newFilesOnly";

/// A setting. Its values have the type of its default value.
struct Setting {
    std::string name;
    Json defaultValue;
    /// {"minimum", "maximum"} or {"choices"} as in the schema; empty if any value is valid.
    Json limits = Json::object();
    std::string propagation = immediate;
    std::string language{};
    std::string collection{};
};

Json oneOf(const Json& choices) {
    return {{"choices", choices}};
}

const std::vector<Setting>& catalogue() {
    static const Json anyValue = Json::object();
    static const Json fraction = {{"minimum", 0}, {"maximum", 1}};
    static const std::vector<Setting> settings = {
        {"buildFolderActive", true},
        {"buildFolderName", "build"},
        {"sourceFolderName", "src"},
        {"skippedFoldersString", ""},
        {"imageQuality", 0.8, fraction},
        {"browserTargets", Json::array({"defaults"})},
        {"minifies", false, anyValue, copiedToFiles, everyLanguage},
        {"outputFolderName", "", anyValue, newFilesOnly, everyLanguage},
        {"outputStyle", "expanded", oneOf({"expanded", "compressed"}), copiedToFiles, "Sass"},
        {"usesAutoprefixer", true, anyValue, copiedToFiles, "Sass"},
        {"usesAutoprefixer", true, anyValue, copiedToFiles, "Less"},
        {"bundleFormat", 4, oneOf({0, 1, 2, 3, 4}), copiedToFiles, "Typescript"},
        {"moduleResolutionType", 5, oneOf({0, 1, 2, 3, 4, 5}), copiedToFiles, "Typescript"},
        {"tsConfigFileHandlingType", 0, oneOf({0, 1}), copiedToFiles, "Typescript"},
        {"tsNoImplicitAny", true, anyValue, copiedToFiles, "Typescript"},
        {"tsTypesString", "*", anyValue, copiedToFiles, "Typescript"},
        {"name", "Untitled", anyValue, immediate, "", "hooks"},
        {"script", "", anyValue, immediate, "", "hooks"},
        {"matchExtensions", Json::array(), anyValue, immediate, "", "hooks"},
        {"pathContains", Json::array(), anyValue, immediate, "", "hooks"},
        {"pathDoesNotContain", Json::array(), anyValue, immediate, "", "hooks"},
        {"name", "Untitled", anyValue, immediate, "", "buildSteps"},
        {"script", "", anyValue, immediate, "", "buildSteps"},
        {"name", "Untitled", anyValue, immediate, "", "webpPresets"},
        {"quality", 0.75, fraction, immediate, "", "webpPresets"},
        {"name", "Untitled", anyValue, immediate, "", "userLanguages"},
        {"outputExtension", "", anyValue, immediate, "", "userLanguages"},
    };
    return settings;
}

std::string typeName(const Json& value) {
    if (value.is_boolean()) {
        return "boolean";
    }
    if (value.is_number_integer()) {
        return "integer";
    }
    if (value.is_number()) {
        return "decimal";
    }
    return value.is_array() ? "list" : "text";
}

bool isInScope(const Setting& setting, const Scope& scope) {
    return setting.collection == scope.collection &&
           (setting.language == scope.language ||
            (setting.language == everyLanguage && !scope.language.empty()));
}

Json defaultsOf(const Scope& scope) {
    Json values = Json::object();
    for (const Setting& setting : catalogue()) {
        if (isInScope(setting, scope)) {
            values[setting.name] = setting.defaultValue;
        }
    }
    return values;
}

void addSchemaRows(Json& rows, const Scope& scope) {
    for (const Setting& setting : catalogue()) {
        if (!isInScope(setting, scope)) {
            continue;
        }
        Json row = {{"name", setting.name},
                    {"valueType", typeName(setting.defaultValue)},
                    {"propagation", setting.propagation},
                    {"default", setting.defaultValue}};
        row.update(setting.limits);
        if (!scope.language.empty()) {
            row["language"] = scope.language;
        }
        if (!scope.collection.empty()) {
            row["group"] = scope.collection;
        }
        rows.push_back(std::move(row));
    }
}

template <typename Number>
Json numberFrom(const std::string& text) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc{} && stop == end ? Json(number) : Json();
}

/// Converts `text` to a value of a type. Returns null or a discarded value if that is impossible.
Json valueFromLiteral(const std::string& text, const std::string& type) {
    if (type == "boolean") {
        if (text == "true" || text == "false") {
            return text == "true";
        }
        return Json();
    }
    if (type == "integer") {
        return numberFrom<std::int64_t>(text);
    }
    // Not std::from_chars(): some standard libraries lack it for decimals.
    if (type == "decimal") {
        return Json::parse(text, nullptr, false);
    }
    return type == "list" ? Json(splitAtCommas(text)) : Json(text);
}

const Setting& settingNamed(const std::string& name, const Scope& scope) {
    const auto found = std::ranges::find_if(catalogue(), [&](const Setting& setting) {
        return setting.name == name && isInScope(setting, scope);
    });
    if (found == catalogue().end()) {
        throw Refusal("There is no setting \"" + name + "\" here.");
    }
    return *found;
}

bool hasTypeOf(const Setting& setting, const Json& value) {
    const std::string type = typeName(setting.defaultValue);
    if (type == "decimal") {
        return value.is_number();
    }
    if (type == "integer") {
        return value.is_number_integer();
    }
    if (type == "list") {
        const auto isText = [](const Json& element) { return element.is_string(); };
        return value.is_array() && std::ranges::all_of(value, isText);
    }
    return value.type() == setting.defaultValue.type();
}

/// Returns `value`. Throws Refusal if it is not valid for the setting.
Json validate(const Setting& setting, Json value) {
    if (!hasTypeOf(setting, value)) {
        throw Refusal("The setting \"" + setting.name + "\" needs a value of type " +
                      typeName(setting.defaultValue) + ".");
    }
    if (setting.name == "name" && value == "") {
        throw Refusal("The setting \"name\" can't be empty.");
    }
    // Without choices or a range in the schema, the value itself is the only choice and both
    // limits.
    const Json choices = setting.limits.value("choices", Json::array({value}));
    if (std::ranges::count(choices, value) == 0) {
        throw Refusal("The setting \"" + setting.name + "\" is one of " + choices.dump() + ".");
    }
    if (value < setting.limits.value("minimum", value) ||
        value > setting.limits.value("maximum", value)) {
        throw Refusal("The setting \"" + setting.name + "\" is a number from " +
                      setting.limits["minimum"].dump() + " to " + setting.limits["maximum"].dump() +
                      ".");
    }
    // With a name such as "..", builds would write to other folders and remove them.
    if (setting.name.ends_with("FolderName")) {
        const auto name = value.get<std::string>();
        if (!isPlainName(name) || name.starts_with('.') ||
            (name.empty() && setting.defaultValue != "")) {
            throw Refusal("The setting \"" + setting.name + "\" needs the plain name of a folder.");
        }
    } else if (setting.name.ends_with("FoldersString") && !isPathText(value)) {
        throw Refusal("The setting \"" + setting.name + "\" needs names of folders.");
    }
    return value;
}

} // namespace

const std::vector<std::string>& languages() {
    static const std::vector<std::string> names = {"CoffeeScript", "Javascript", "Less", "Sass",
                                                   "Stylus",       "Typescript", "Weft"};
    return names;
}

void requireLanguage(const std::string& language) {
    if (std::ranges::find(languages(), language) == languages().end()) {
        throw Refusal("There is no language \"" + language + "\".");
    }
}

Json defaultSettings() {
    Json settings = {{"project", defaultsOf({})}, {"languages", Json::object()}};
    for (const auto& language : languages()) {
        settings["languages"][language] = defaultsOf({language, ""});
    }
    return settings;
}

Json defaultRowValues(const std::string& kind) {
    return defaultsOf({"", kind});
}

Json settingsSchema(const std::string& language) {
    Json rows = Json::array();
    if (!language.empty()) {
        requireLanguage(language);
        addSchemaRows(rows, {language, ""});
        return rows;
    }
    addSchemaRows(rows, {});
    for (const std::string& name : languages()) {
        addSchemaRows(rows, {name, ""});
    }
    return rows;
}

Json collectionSchema(const std::string& kind) {
    Json rows = Json::array();
    for (const char* collection : {"hooks", "buildSteps", "webpPresets", "userLanguages"}) {
        if (kind.empty() || kind == collection) {
            addSchemaRows(rows, {"", collection});
        }
    }
    return rows;
}

Json readPatch(const Json& patch, const Scope& scope) {
    if (!scope.language.empty()) {
        requireLanguage(scope.language);
    }
    Json accepted = Json::object();
    for (const auto& [name, text] : patch.at("literals").items()) {
        if (!text.is_string()) {
            throw Refusal("The literal \"" + name + "\" is not a text.", 400);
        }
        const Setting& setting = settingNamed(name, scope);
        const std::string type = typeName(setting.defaultValue);
        accepted[name] = validate(setting, valueFromLiteral(text.get<std::string>(), type));
    }
    for (const auto& [name, value] : patch.at("values").items()) {
        const Setting& setting = settingNamed(name, scope);
        accepted[name] = value.is_null() ? setting.defaultValue : validate(setting, value);
    }
    return accepted;
}

bool concernsNewFilesOnly(const std::string& name) {
    return std::ranges::any_of(catalogue(), [&](const Setting& setting) {
        return setting.name == name && setting.propagation == newFilesOnly;
    });
}

std::vector<std::string> splitAtCommas(const std::string& text) {
    std::vector<std::string> parts;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t comma = std::min(text.find(',', start), text.size());
        parts.push_back(text.substr(start, comma - start));
        start = comma + 1;
    }
    return parts;
}

} // namespace fernlow::standin

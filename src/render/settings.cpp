#include "bytes/number.h"
#include "render/tags.h"
#include "render/views.h"

#include <cmath>

namespace fernlow {

namespace {

void joinTexts(const json::List<std::string_view>& texts, Lines& lines) {
    std::string_view separator;
    for (const std::string_view text : texts) {
        lines.append(separator);
        lines.append(text);
        separator = ", ";
    }
}

void formatNumber(std::string_view literal, Lines& lines) {
    if (const auto digits = number::wholeDigits(literal)) {
        lines.append(*digits);
    } else if (const double value = number::nearestDouble(literal); std::isfinite(value)) {
        lines.append(number::shortestDecimal(value));
    } else {
        // A number outside the range of a double is shown as the reply contains it.
        lines.append(literal);
    }
}

/// Appends a setting's value to the current line: "(unset)" for null and for a value of a type that
/// settings do not have.
void formatSettingValue(const json::Value& value, Lines& lines) {
    if (const auto texts = value.texts()) {
        joinTexts(*texts, lines);
    } else if (const auto boolean = value.strictBoolean()) {
        lines.append(std::string_view(*boolean ? "true" : "false"));
    } else if (const auto literal = value.numberLiteral()) {
        formatNumber(*literal, lines);
    } else {
        lines.append(value.text().value_or("(unset)"));
    }
}

/// Adds the settings of each language under its name. Returns whether it added a line.
bool renderLanguages(const json::Object& languages, Lines& lines) {
    bool hasLines = false;
    for (const auto [name, value] : languages.sortedMembers()) {
        const auto values = value.object();
        if (values && !values->isEmpty()) {
            lines.add();
            lines.add(name, ":");
            renderValues(*values, lines);
            hasLines = true;
        }
    }
    return hasLines;
}

/// Adds the settings of the whole project and then of each language, with headings. Leaves out
/// empty sections.
void renderSettings(const json::Object& project, const std::optional<json::Object>& languages,
                    Lines& lines) {
    bool hasLines = false;
    if (!project.isEmpty()) {
        lines.add("Project-wide:");
        renderValues(project, lines);
        hasLines = true;
    }
    if (languages && renderLanguages(*languages, lines)) {
        hasLines = true;
    }
    if (!hasLines) {
        lines.add("No settings.");
    }
}

} // namespace

void renderValues(const json::Object& values, Lines& lines) {
    for (const auto [key, value] : values.sortedMembers()) {
        lines.add("  ", key, " = ");
        formatSettingValue(value, lines);
    }
}

bool renderProjectSettings(const json::Object& result, Lines& lines) {
    const auto project = result.object("project");
    if (!project) {
        return false;
    }
    renderSettings(*project, result.object("languages"), lines);
    return true;
}

bool renderAppliedSettings(const json::Object& result, Lines& lines) {
    const auto applied = result.object("applied");
    if (!applied) {
        return false;
    }
    renderSettings(*applied, std::nullopt, lines);
    return true;
}

void renderSettingRow(const json::Object& setting, Lines& lines) {
    lines.add(setting.text("name"));
    Tags tags(lines);
    tags.add(setting.text("valueType"));
    tags.add(setting.text("propagation"));
    if (const auto language = setting.optionalText("language")) {
        tags.add(*language);
    }
    if (const auto group = setting.optionalText("group")) {
        tags.add("group ", *group);
    }
    tags.close();
}

} // namespace fernlow

#include "json/number.h"
#include "render/tags.h"
#include "render/views.h"

#include <algorithm>
#include <cmath>

namespace fernlow {

namespace {

/// The members in ascending order of their keys' code points (which is that of their bytes), each
/// key once.
std::vector<json::Member> sortedMembers(const json::Object& object) {
    auto members = object.members();
    std::stable_sort(members.begin(), members.end(),
                     [](const auto& one, const auto& other) { return one.key < other.key; });
    members.erase(
        std::unique(members.begin(), members.end(),
                    [](const auto& one, const auto& other) { return one.key == other.key; }),
        members.end());
    return members;
}

std::string joined(const std::vector<std::string_view>& texts) {
    std::string text;
    for (const std::string_view& part : texts) {
        if (&part != &texts.front()) {
            text += ", ";
        }
        text += part;
    }
    return text;
}

std::string formatNumber(std::string_view literal) {
    if (auto digits = json::wholeDigits(literal)) {
        return *std::move(digits);
    }
    const double value = json::nearestDouble(literal);
    // What no double can hold is shown as the reply has it.
    return std::isfinite(value) ? json::shortestDecimal(value) : std::string(literal);
}

/// Those of the whole project, then those of each language, under headings; empty ones are left
/// out.
void renderSettings(const json::Object& project, const std::optional<json::Object>& languages,
                    Lines& lines) {
    bool any = false;
    if (!project.members().empty()) {
        lines.add("Project-wide:");
        renderValues(project, lines);
        any = true;
    }
    for (const auto& [name, value] :
         languages ? sortedMembers(*languages) : std::vector<json::Member>()) {
        const auto values = value.object();
        if (values && !values->members().empty()) {
            lines.add();
            lines.add(name, ":");
            renderValues(*values, lines);
            any = true;
        }
    }
    if (!any) {
        lines.add("No settings.");
    }
}

} // namespace

std::string formatSettingValue(const json::Value& value) {
    if (const auto texts = value.texts()) {
        return joined(*texts);
    }
    if (const auto boolean = value.strictBoolean()) {
        return *boolean ? "true" : "false";
    }
    if (const auto literal = value.numberLiteral()) {
        return formatNumber(*literal);
    }
    return std::string(value.text().value_or("(unset)"));
}

void renderValues(const json::Object& values, Lines& lines) {
    for (const auto& [key, value] : sortedMembers(values)) {
        lines.add("  ", key, " = ", formatSettingValue(value));
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

std::string upperCase(std::string_view text) {
    std::string upper(text);
    for (char& character : upper) {
        if (character >= 'a' && character <= 'z') {
            character = static_cast<char>(character - 'a' + 'A');
        }
    }
    return upper;
}

} // namespace fernlow

#include "completion/known_values.h"

#include "commands/options.h"
#include "commands/requests.h"

#include <algorithm>
#include <map>
#include <utility>

namespace fernlow::completion {

namespace {

using Candidates = std::vector<Candidate>;

/// The value that was given with an option, as typed.
std::optional<std::string> given(const TypedLine& line, const Option& option) {
    const std::string* const text = line.whole()->find(option);
    return text == nullptr ? std::nullopt : std::optional(*text);
}

/// The path of the project that the command would ask about.
std::string projectOf(const TypedLine& line, const CurrentDirectory& currentDirectory) {
    if (const auto path = given(line, options::inProject)) {
        return resolvePath(*path, currentDirectory);
    }
    const auto& operands = line.before()->command().operands;
    const bool takesProject =
        !operands.empty() && operands.front()->value.kind == ValueKind::project;
    const auto& words = line.whole()->remaining();
    return takesProject && !words.empty() ? resolvePath(words.front(), currentDirectory)
                                          : currentDirectory.path();
}

std::optional<json::Value> get(Application& application, std::string_view path) {
    return application.ask({"GET", path, {}});
}

template <WireRecord Record>
std::optional<json::Value> ask(Application& application, std::string_view path,
                               const Record& record) {
    return application.ask({"POST", path, encode(record)});
}

json::List<json::Object> rowsOf(std::optional<json::Value> result) {
    return result ? result->objects().value_or(json::List<json::Object>())
                  : json::List<json::Object>();
}

std::vector<json::Member> membersOf(const std::optional<json::Object>& object) {
    std::vector<json::Member> members;
    if (object) {
        for (const json::Member member : object->sortedMembers()) {
            members.push_back(member);
        }
    }
    return members;
}

Candidates projects(ValueKind kind, Application& application) {
    const auto result = get(application, "/v1/projects");
    Candidates candidates;
    for (const json::Object row : rowsOf(result)) {
        if (kind == ValueKind::project || !row.boolean("isFramework")) {
            candidates.push_back({std::string(row.text("path")), std::string(row.text("name"))});
        }
    }
    return candidates;
}

/// Leaves out groups that the application would refuse. The groups Projects and Frameworks are its
/// own: nobody can change them or move a project to Frameworks. A name that two groups share could
/// mean either.
Candidates groups(ValueKind kind, Application& application) {
    const auto result = get(application, "/v1/groups");
    Candidates candidates;
    std::map<std::string, int> uses;
    for (const json::Object row : rowsOf(result)) {
        candidates.push_back({std::string(row.text("name")), std::string(row.text("path"))});
        ++uses[candidates.back().value];
    }
    std::erase_if(candidates, [&](const Candidate& group) {
        return uses[group.value] > 1 || group.value == "Frameworks" ||
               (kind == ValueKind::userGroup && group.value == "Projects");
    });
    return candidates;
}

Candidates languages(Application& application) {
    // The defaults name every language without needing a project.
    const auto result = get(application, "/v1/defaults");
    const auto defaults = result ? result->object() : std::nullopt;
    Candidates candidates;
    for (const json::Member& language :
         membersOf(defaults ? defaults->object("languages") : std::nullopt)) {
        candidates.push_back({std::string(language.key), ""});
    }
    return candidates;
}

Candidates cursor(Application& application) {
    const auto result = get(application, "/v1/status");
    const auto status = result ? result->object() : std::nullopt;
    const auto cursor = status ? status->optionalInteger("logCursor") : std::nullopt;
    Candidates candidates;
    if (cursor && *cursor >= 0) {
        candidates.push_back({std::to_string(*cursor), "now"});
    }
    return candidates;
}

/// Describes a row of a collection for a person.
std::string describeRow(std::string_view kind, const json::Object& row) {
    std::string description(kind);
    const auto values = row.object("values");
    for (const std::string_view part :
         {row.text("buildStepType"), row.text("fileExtension"), row.text("name"),
          values ? values->text("name") : std::string_view{}}) {
        if (!part.empty()) {
            description.append(", ").append(part);
        }
    }
    return description;
}

/// Makes a candidate of each row of the project's collections, from the member of that name.
Candidates rows(std::string_view member, const std::optional<AgentCollectionKind>& kind,
                const std::string& project, Application& application) {
    const auto result =
        ask(application, "/v1/collections", AgentCollectionListRequest{project, kind});
    Candidates candidates;
    for (const json::Member& rows : membersOf(result ? result->object() : std::nullopt)) {
        for (const json::Object row : rowsOf(rows.value)) {
            candidates.push_back({std::string(row.text(member)), describeRow(rows.key, row)});
        }
    }
    return candidates;
}

std::optional<AgentCollectionKind> kindOf(const TypedLine& line) {
    const auto kind = given(line, options::kind);
    return kind ? fromWireName<AgentCollectionKind>(*kind) : std::nullopt;
}

std::optional<json::Value> settingsSchema(ValueKind kind, const TypedLine& line,
                                          const CurrentDirectory& currentDirectory,
                                          Application& application) {
    const auto language = given(line, options::ofLanguage);
    if (kind == ValueKind::rowSetting) {
        return ask(application, "/v1/collections/schema",
                   AgentCollectionSchemaRequest{kindOf(line)});
    }
    if (kind == ValueKind::defaultSetting) {
        return ask(application, "/v1/defaults/schema", AgentDefaultsSchemaRequest{language});
    }
    if (kind == ValueKind::fileSetting) {
        const auto isFile = [](const std::string& word) {
            return word.find('=') == std::string::npos;
        };
        const auto& words = line.whole()->remaining();
        const auto file = std::find_if(words.begin(), words.end(), isFile);
        return file == words.end()
                   ? std::nullopt
                   : ask(application, "/v1/files/schema",
                         AgentFileSchemaRequest{resolvePath(*file, currentDirectory), {}});
    }
    return ask(application, "/v1/settings/schema",
               AgentSettingsSchemaRequest{projectOf(line, currentDirectory), language});
}

std::string scalarText(const json::Value& value) {
    if (const auto boolean = value.strictBoolean()) {
        return *boolean ? "true" : "false";
    }
    return std::string(value.text().value_or(value.numberLiteral().value_or("")));
}

std::string describeSetting(const json::Object& row) {
    std::string description(row.text("valueType"));
    const auto minimum = row.find("minimum");
    const auto maximum = row.find("maximum");
    if (minimum && maximum) {
        description += " from " + scalarText(*minimum) + " to " + scalarText(*maximum);
    }
    const auto defaultValue = row.find("default");
    const std::string text = defaultValue ? scalarText(*defaultValue) : "";
    return text.empty() ? description : description + ", " + text + " by default";
}

/// The values that a setting may have, behind its name and "=".
Candidates valuesOf(const json::Object& row) {
    const std::string start = std::string(row.text("name")) + "=";
    Candidates candidates;
    const auto choices = row.find("choices");
    const auto texts = choices ? choices->texts() : std::nullopt;
    const auto words = choices && !texts ? choices->numberLiterals() : texts;
    for (const std::string_view choice : words.value_or(json::List<std::string_view>())) {
        candidates.push_back({start + std::string(choice), ""});
    }
    if (candidates.empty() && row.text("valueType") == "boolean") {
        candidates = {{start + "true", ""}, {start + "false", ""}};
    }
    return candidates;
}

/// Whether the command can change the setting. Without --language the schema has the settings of
/// every language, and it always has the settings of rows in collections.
bool isChangeable(const json::Object& row, ValueKind kind, const TypedLine& line) {
    if (kind == ValueKind::rowSetting || kind == ValueKind::fileSetting) {
        return true;
    }
    return row.text("language") == given(line, options::ofLanguage).value_or("") &&
           row.text("group").empty();
}

Candidates settings(ValueKind kind, const TypedLine& line, const CurrentDirectory& currentDirectory,
                    Application& application) {
    const auto key = [](const std::string& word) { return word.substr(0, word.find('=')); };
    const bool hasKey = line.current().find('=') != std::string::npos;
    const auto& words = line.whole()->remaining();
    Candidates candidates;
    for (const json::Object row :
         rowsOf(settingsSchema(kind, line, currentDirectory, application))) {
        const std::string name(row.text("name"));
        if (!isChangeable(row, kind, line) || name.empty()) {
            continue;
        }
        if (hasKey && name == key(line.current())) {
            return valuesOf(row);
        }
        const bool isGiven = std::any_of(
            words.begin(), words.end(), [&](const std::string& word) { return key(word) == name; });
        if (!hasKey && !isGiven) {
            candidates.push_back({name + "=", describeSetting(row)});
        }
    }
    return candidates;
}

} // namespace

std::vector<Candidate> knownValues(ValueKind kind, const TypedLine& line,
                                   const CurrentDirectory& currentDirectory,
                                   Application& application) {
    switch (kind) {
    case ValueKind::project:
    case ValueKind::movableProject:
        return projects(kind, application);
    case ValueKind::group:
    case ValueKind::userGroup:
        return groups(kind, application);
    case ValueKind::language:
        return languages(application);
    case ValueKind::logCursor:
        return cursor(application);
    case ValueKind::extension:
        return rows("fileExtension", AgentCollectionKind::userLanguages,
                    projectOf(line, currentDirectory), application);
    case ValueKind::rowId:
        return rows("id", kindOf(line), projectOf(line, currentDirectory), application);
    case ValueKind::setting:
    case ValueKind::defaultSetting:
    case ValueKind::fileSetting:
    case ValueKind::rowSetting:
        return settings(kind, line, currentDirectory, application);
    default:
        return {};
    }
}

} // namespace fernlow::completion

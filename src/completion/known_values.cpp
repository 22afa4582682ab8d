#include "completion/known_values.h"

#include "commands/options.h"
#include "commands/requests.h"
#include "commands/setting_values.h"
#include "json/document.h"
#include "transport/connection.h"
#include "transport/http.h"
#include "transport/socket_client_error.h"
#include "transport/socket_location.h"

#include <algorithm>
#include <map>

namespace fernlow::completion {

namespace {

using Candidates = std::vector<Candidate>;
using Rows = json::List<json::Object>;

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
    const auto value = row.find("default");
    const std::string text = value ? scalarText(*value) : "";
    return text.empty() ? description : description + ", " + text + " by default";
}

/// Returns the setting's choices, which are texts or numbers.
json::List<std::string_view> choicesOf(const json::Object& row) {
    const auto choices = row.find("choices");
    const auto texts = choices ? choices->texts() : std::nullopt;
    const auto numbers = choices ? choices->numberLiterals() : std::nullopt;
    return texts.value_or(numbers.value_or(json::List<std::string_view>()));
}

/// Returns "key=value" for each value that the setting may have.
Candidates valuesOf(const json::Object& row) {
    const std::string start = std::string(row.text("name")) + "=";
    Candidates candidates;
    for (const std::string_view choice : choicesOf(row)) {
        candidates.push_back({start + std::string(choice), ""});
    }
    if (candidates.empty() && row.text("valueType") == "boolean") {
        candidates = {{start + "true", ""}, {start + "false", ""}};
    }
    return candidates;
}

std::string keyOf(const std::string& word) {
    return word.substr(0, word.find('='));
}

/// The running application. A reply is valid until the next request.
class Application {
public:
    /// Keeps references to the line, whose whole() must not be null, and to the context.
    Application(const TypedLine& line, const CompletionContext& context)
        : line_(line), context_(context), words_(line.whole()->remaining()) {}

    /// Returns the values of the kind. Requires isKnownOnlyToApplication(kind).
    Candidates values(ValueKind kind) {
        switch (kind) {
        case ValueKind::project:
        case ValueKind::movableProject:
            return projects(kind == ValueKind::project);
        case ValueKind::group:
        case ValueKind::userGroup:
            return groups(kind == ValueKind::group);
        case ValueKind::language:
            return languages();
        case ValueKind::logCursor:
            return cursor();
        case ValueKind::extension:
            return collectionRows("fileExtension", AgentCollectionKind::userLanguages);
        case ValueKind::rowId:
            return collectionRows("id", collectionKind());
        default:
            return settings(kind);
        }
    }

private:
    Candidates projects(bool withFrameworks) {
        Candidates candidates;
        for (const json::Object row : askForRows("/v1/projects")) {
            if (withFrameworks || !row.boolean("isFramework")) {
                candidates.push_back(
                    {std::string(row.text("path")), std::string(row.text("name"))});
            }
        }
        return candidates;
    }

    /// Leaves out the groups that the application would refuse: groups that share a name, and the
    /// permanent groups Projects and Frameworks. A project can be moved to Projects, however.
    Candidates groups(bool withProjects) {
        Candidates candidates;
        std::map<std::string, int> uses;
        for (const json::Object row : askForRows("/v1/groups")) {
            candidates.push_back({std::string(row.text("name")), std::string(row.text("path"))});
            ++uses[candidates.back().value];
        }
        std::erase_if(candidates, [&](const Candidate& group) {
            return uses[group.value] > 1 || group.value == "Frameworks" ||
                   (group.value == "Projects" && !withProjects);
        });
        return candidates;
    }

    Candidates languages() {
        // The defaults name every language without needing a project.
        const auto defaults = askForObject("/v1/defaults");
        const auto languages = defaults ? defaults->object("languages") : std::nullopt;
        if (!languages) {
            return {};
        }
        Candidates candidates;
        for (const json::Member& language : languages->sortedMembers()) {
            candidates.push_back({std::string(language.key), ""});
        }
        return candidates;
    }

    Candidates cursor() {
        const auto status = askForObject("/v1/status");
        const std::int64_t cursor = status ? status->optionalInteger("logCursor").value_or(-1) : -1;
        return cursor < 0 ? Candidates() : Candidates(1, {std::to_string(cursor), "now"});
    }

    Candidates settings(ValueKind kind) {
        const std::string& typed = line_.current();
        Candidates candidates;
        for (const json::Object row : settingsSchema(kind)) {
            const std::string name(row.text("name"));
            if (name.empty() || !isChangeable(row, kind)) {
                continue;
            }
            if (isSettingWord(typed) && name == keyOf(typed)) {
                return valuesOf(row);
            }
            const bool isGiven = std::any_of(words_.begin(), words_.end(),
                                             [&](auto& word) { return keyOf(word) == name; });
            if (!isSettingWord(typed) && !isGiven) {
                candidates.push_back({name + "=", describeSetting(row)});
            }
        }
        return candidates;
    }

    /// Returns the value given with the option, as typed.
    [[nodiscard]] std::optional<std::string> given(const Option& option) const {
        const std::string* const text = line_.whole()->find(option);
        return text == nullptr ? std::nullopt : std::optional(*text);
    }

    /// Returns the path of the project that the command will use.
    [[nodiscard]] std::string project() const {
        if (const auto path = given(options::project)) {
            return resolvePath(*path, context_.currentDirectory);
        }
        const auto& operands = line_.before()->command().operands;
        const bool takesProject =
            !operands.empty() && operands.front()->value.kind == ValueKind::project;
        return takesProject && !words_.empty()
                   ? resolvePath(words_.front(), context_.currentDirectory)
                   : context_.currentDirectory.path();
    }

    [[nodiscard]] std::optional<AgentCollectionKind> collectionKind() const {
        const auto kind = given(options::kind);
        return kind ? fromWireName<AgentCollectionKind>(*kind) : std::nullopt;
    }

    [[nodiscard]] std::string socketPath() const {
        const std::string* const socket = line_.globals().socketPath();
        if (socket == nullptr) {
            return defaultSocketPath();
        }
        // The shell expands a "~" only when it runs the line.
        return socket->starts_with('~') ? resolvePath(*socket, context_.currentDirectory) : *socket;
    }

    /// Returns the "result" of the reply, if there is one. A request with a body is a POST.
    std::optional<json::Value> ask(std::string_view path, std::string_view body) {
        // Larger than any real list, and parsed within a few hundredths of a second.
        constexpr std::size_t maxReplySize = std::size_t{4} * 1024 * 1024;
        document_.reset();
        try {
            const Connection connection(socketPath(), context_.deadline);
            connection.send(requestBytes({body.empty() ? "GET" : "POST", path, body}));
            body_ = parseReply(connection.receive(maxReplySize)).body;
        } catch (const AgentSocketClientError&) {
            return std::nullopt;
        }
        document_ = json::Document::parse(body_.view());
        const auto reply = document_ ? document_->root().object() : std::nullopt;
        return reply && reply->boolean("ok") ? reply->find("result") : std::nullopt;
    }

    Rows askForRows(std::string_view path, std::string_view body = "") {
        const auto result = ask(path, body);
        return result ? result->objects().value_or(Rows()) : Rows();
    }

    std::optional<json::Object> askForObject(std::string_view path, std::string_view body = "") {
        const auto result = ask(path, body);
        return result ? result->object() : std::nullopt;
    }

    /// Returns the named member of each row of the project's collections.
    Candidates collectionRows(std::string_view member,
                              const std::optional<AgentCollectionKind>& kind) {
        const auto collections =
            askForObject("/v1/collections", encode(AgentCollectionListRequest{project(), kind}));
        if (!collections) {
            return {};
        }
        Candidates candidates;
        for (const json::Member& rows : collections->sortedMembers()) {
            const Rows objects = rows.value.objects().value_or(Rows());
            for (const json::Object row : objects) {
                candidates.push_back({std::string(row.text(member)), describeRow(rows.key, row)});
            }
        }
        return candidates;
    }

    Rows settingsSchema(ValueKind kind) {
        const auto language = given(options::language);
        switch (kind) {
        case ValueKind::rowSetting:
            return askForRows("/v1/collections/schema",
                              encode(AgentCollectionSchemaRequest{collectionKind()}));
        case ValueKind::defaultSetting:
            return askForRows("/v1/defaults/schema", encode(AgentDefaultsSchemaRequest{language}));
        case ValueKind::fileSetting: {
            const auto file = std::find_if_not(words_.begin(), words_.end(), isSettingWord);
            return file == words_.end()
                       ? Rows()
                       : askForRows("/v1/files/schema",
                                    encode(AgentFileSchemaRequest{
                                        resolvePath(*file, context_.currentDirectory), {}}));
        }
        default:
            return askForRows("/v1/settings/schema",
                              encode(AgentSettingsSchemaRequest{project(), language}));
        }
    }

    /// Returns whether the command can change the setting. Without --language the schema also lists
    /// the settings of every language, and it always lists the settings of rows in collections.
    [[nodiscard]] bool isChangeable(const json::Object& row, ValueKind kind) const {
        return kind == ValueKind::rowSetting || kind == ValueKind::fileSetting ||
               (row.text("language") == given(options::language).value_or("") &&
                row.text("group").empty());
    }

    const TypedLine& line_;
    const CompletionContext& context_;
    const std::vector<std::string>& words_;
    ByteBuffer body_;
    std::optional<json::Document> document_;
};

} // namespace

std::vector<Candidate> knownValues(ValueKind kind, const TypedLine& line,
                                   const CompletionContext& context) {
    return Application(line, context).values(kind);
}

} // namespace fernlow::completion

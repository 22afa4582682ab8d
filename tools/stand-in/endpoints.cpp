#include "endpoints.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <stdexcept>

namespace fernlow::standin {

namespace {

/// A member of a request: its name, its type and, for some texts, the permitted values.
struct Member {
    std::string name;
    std::string type;
    std::vector<std::string> values{};
};

/// Returns all members. A member has the same type and values in every request.
const std::vector<Member>& members() {
    static const std::vector<std::string> lists = {"production", "development", "optional",
                                                   "bundle"};
    static const std::vector<Member> all = {
        {"action", "text", {"install", "forceInstall", "uninstall", "update", "prune"}},
        {"address", "text", {"preferred", "bonjour", "lan", "loopback", "localhost"}},
        {"asFramework", "boolean"},
        {"browserBundleID", "text"},
        {"buildStepType", "text", {"processItems", "processRemainingItems", "runScript"}},
        {"clean", "boolean"},
        {"enabled", "boolean"},
        {"exactVersions", "boolean"},
        {"fileExtension", "text"},
        {"group", "text"},
        {"id", "text"},
        {"includeFolders", "boolean"},
        {"includeShadowItems", "boolean"},
        {"install", "list", lists},
        {"kind", "text", {"hooks", "buildSteps", "webpPresets", "userLanguages"}},
        {"language", "text"},
        {"limit", "integer"},
        {"literals", "object"},
        {"minimumSeverity", "text", {"success", "warning", "error"}},
        {"mode", "text", {"asIfSaved", "exactly"}},
        {"name", "text"},
        {"newName", "text"},
        {"offset", "integer"},
        {"outputAction", "text", {"compile", "ignore", "copy"}},
        {"outputFilename", "text"},
        {"outputFolder", "text"},
        {"packages", "list"},
        {"path", "text"},
        {"paths", "list"},
        {"paused", "boolean"},
        {"position", "integer"},
        {"projectPath", "text"},
        {"raiseVersionLimits", "boolean"},
        {"relativePath", "text"},
        {"saveTo", "list", lists},
        {"settleMilliseconds", "integer"},
        {"since", "cursor"},
        {"skipped", "boolean"},
        {"timeoutSeconds", "decimal"},
        {"updatePackageLock", "boolean"},
        {"values", "object"},
        {"wait", "boolean"},
    };
    return all;
}

bool isValid(const Json& value, const Member& member) {
    const auto isText = [&](const Json& text) {
        return text.is_string() && (member.values.empty() ||
                                    std::ranges::count(member.values, text.get<std::string>()) > 0);
    };
    if (member.type == "list") {
        return value.is_array() && std::ranges::all_of(value, isText);
    }
    if (member.type == "text") {
        return isText(value);
    }
    if (member.type == "boolean") {
        return value.is_boolean();
    }
    if (member.type == "integer") {
        return value.is_number_integer();
    }
    if (member.type == "cursor") {
        return value.is_number_unsigned();
    }
    if (member.type == "decimal") {
        return value.is_number();
    }
    return value.is_object();
}

/// Returns the members of an endpoint's requests. The boolean is true for an optional member.
std::vector<std::pair<Member, bool>> membersOf(const Endpoint& endpoint) {
    std::vector<std::pair<Member, bool>> result;
    std::istringstream words(endpoint.members);
    for (std::string name; words >> name;) {
        const bool isOptional = name.ends_with('?');
        name.resize(name.size() - (isOptional ? 1 : 0));
        const auto member = std::ranges::find(members(), name, &Member::name);
        if (member == members().end()) {
            throw std::logic_error("members() does not list \"" + name + "\"");
        }
        result.emplace_back(*member, isOptional);
    }
    return result;
}

const Endpoints& endpoints();

constexpr std::array notes = {
    "This is the stand-in, not Fernlow: it watches nothing, and what it is told is forgotten when "
    "it stops.",
    "Compiling copies a source to the build folder, provided that its brackets balance. A file "
    "whose name begins with \"_\" has no output, and processing it compiles the files that @import "
    "it.",
    "Work on one project goes one step after the other, work on several at the same time. A report "
    "tells what was logged while its request waited.",
    "A setting is refused outside its range or choices, and null takes it back to its default."};

Json describeApi(State& /*unused*/, const Json& /*unused*/) {
    Json list = Json::array();
    for (const Endpoint& endpoint : endpoints()) {
        Json rows = Json::array();
        for (const auto& [member, isOptional] : membersOf(endpoint)) {
            Json row = {{"name", member.name}, {"type", member.type}, {"isOptional", isOptional}};
            if (!member.values.empty()) {
                row["values"] = member.values;
            }
            rows.push_back(std::move(row));
        }
        list.push_back({{"method", endpoint.method},
                        {"path", endpoint.path},
                        {"summary", endpoint.summary},
                        {"members", std::move(rows)}});
    }
    return {{"endpoints", std::move(list)}, {"notes", notes}};
}

const Endpoints& endpoints() {
    static const Endpoints all = [] {
        Endpoints rows;
        for (const auto* family :
             {&statusEndpoints(), &workEndpoints(), &projectEndpoints(), &settingsEndpoints(),
              &fileEndpoints(), &collectionEndpoints()}) {
            rows.insert(rows.end(), family->begin(), family->end());
        }
        rows.push_back({"GET", "/v1/schema", "This list.", "", describeApi});
        return rows;
    }();
    return all;
}

const Endpoint& endpointFor(const Request& request) {
    const auto found = std::ranges::find(endpoints(), request.path, &Endpoint::path);
    if (found == endpoints().end()) {
        throw Refusal("There is nothing at " + request.path + ".", 404);
    }
    if (found->method != request.method) {
        throw Refusal(request.path + " is answered to " + found->method + " only.", 405);
    }
    return *found;
}

/// Throws Refusal if a required member is missing, a member has a wrong value, or a member is not
/// known.
void requireMembers(const Json& body, const Endpoint& endpoint) {
    const auto known = membersOf(endpoint);
    const auto nameOf = [](const std::pair<Member, bool>& each) { return each.first.name; };
    for (const auto& given : body.items()) {
        if (std::ranges::find(known, given.key(), nameOf) == known.end()) {
            throw Refusal("The member \"" + given.key() + "\" is not known.", 400);
        }
    }
    for (const auto& [member, isOptional] : known) {
        const auto value = body.find(member.name);
        if (value == body.end() && isOptional) {
            continue;
        }
        if (value == body.end()) {
            throw Refusal("The member \"" + member.name + "\" is missing.", 400);
        }
        if (!isValid(*value, member)) {
            throw Refusal("The member \"" + member.name + "\" has a wrong value.", 400);
        }
    }
}

/// Throws Refusal if the document is nested so deeply that recursive functions would overflow the
/// stack, or if it has so many members that finding each of them would take minutes.
void requireReasonableShape(const std::string& document) {
    constexpr int maxDepth = 1024;
    constexpr int maxMembers = 10'000;
    int depth = 0;
    int members = 0;
    bool isInText = false;
    for (std::size_t index = 0; index < document.size(); ++index) {
        const char character = document[index];
        if (isInText) {
            isInText = character != '"';
            index += character == '\\' ? 1 : 0;
            continue;
        }
        isInText = character == '"';
        depth += character == '{' || character == '[' ? 1 : 0;
        depth -= character == '}' || character == ']' ? 1 : 0;
        members += character == ':' ? 1 : 0;
        if (depth > maxDepth) {
            throw Refusal("The request is nested too deeply.", 400);
        }
        if (members > maxMembers) {
            throw Refusal("The request has too many members.", 400);
        }
    }
}

Json readBody(const Request& request) {
    if (request.isTooLarge) {
        throw Refusal("The request is too large.", 413);
    }
    if (request.method == "GET" && request.body.empty()) {
        return Json::object();
    }
    requireReasonableShape(request.body);
    Json body = Json::parse(request.body, nullptr, false);
    if (!body.is_object()) {
        throw Refusal("The request is not a JSON object.", 400);
    }
    return body;
}

PendingResult resultOf(State& state, const Request& request) {
    const Endpoint& endpoint = endpointFor(request);
    const Json body = readBody(request);
    requireMembers(body, endpoint);
    if (const auto* const pending = std::get_if<PendingAnswer>(&endpoint.answer)) {
        return (*pending)(state, body);
    }
    return [result = std::get<ImmediateAnswer>(endpoint.answer)(state, body)] { return result; };
}

Reply replyWith(unsigned httpStatus, const Json& document) {
    // Replaces ill-formed UTF-8, because a file name may contain it and the reply must not fail.
    return {httpStatus, document.dump(-1, ' ', false, Json::error_handler_t::replace)};
}

PendingReply refusal(unsigned httpStatus, const std::string& sentence) {
    return [reply = replyWith(httpStatus, {{"ok", false}, {"error", {{"message", sentence}}}})] {
        return reply;
    };
}

} // namespace

PendingReply answer(State& state, const Request& request) {
    try {
        return [result = resultOf(state, request)]() -> std::optional<Reply> {
            const std::optional<Json> finished = result();
            if (!finished) {
                return std::nullopt;
            }
            return replyWith(200, {{"ok", true}, {"result", *finished}});
        };
    } catch (const Refusal& error) {
        return refusal(error.httpStatus, error.what());
    } catch (const std::exception& error) {
        return refusal(500, std::string("The stand-in could not do that: ") + error.what() + ".");
    }
}

} // namespace fernlow::standin

#include "endpoints.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace fernlow::standin {

namespace {

bool isFlag(const Json& value) {
    return value.is_boolean();
}
bool isWhole(const Json& value) {
    return value.is_number_integer();
}
bool isCursor(const Json& value) {
    return value.is_number_unsigned();
}
bool isNumber(const Json& value) {
    return value.is_number();
}
bool isText(const Json& value) {
    return value.is_string();
}
bool isTexts(const Json& value) {
    return value.is_array() && std::ranges::all_of(value, isText);
}
bool isObject(const Json& value) {
    return value.is_object();
}

auto isOneOf(const std::vector<std::string>& words) {
    return [words](const Json& value) {
        return value.is_string() && std::ranges::count(words, value.get<std::string>()) != 0;
    };
}

bool areDependencyLists(const Json& value) {
    static const auto isOne = isOneOf({"production", "development", "optional", "bundle"});
    return value.is_array() && std::ranges::all_of(value, isOne);
}

/// What a member may hold. A name means the same in every request that has it.
const std::map<std::string, std::function<bool(const Json&)>>& members() {
    static const std::map<std::string, std::function<bool(const Json&)>> predicates = {
        {"action", isOneOf({"install", "forceInstall", "uninstall", "update", "prune"})},
        {"address", isOneOf({"preferred", "bonjour", "lan", "loopback", "localhost"})},
        {"asFramework", isFlag},
        {"browserBundleID", isText},
        {"buildStepType", isOneOf({"processItems", "processRemainingItems", "runScript"})},
        {"clean", isFlag},
        {"enabled", isFlag},
        {"exactVersions", isFlag},
        {"fileExtension", isText},
        {"group", isText},
        {"id", isText},
        {"includeFolders", isFlag},
        {"includeShadowItems", isFlag},
        {"install", areDependencyLists},
        {"kind", isOneOf({"hooks", "buildSteps", "webpPresets", "userLanguages"})},
        {"language", isText},
        {"limit", isWhole},
        {"literals", isObject},
        {"minimumSeverity", isOneOf({"success", "warning", "error"})},
        {"mode", isOneOf({"asIfSaved", "exactly"})},
        {"name", isText},
        {"newName", isText},
        {"offset", isWhole},
        {"outputAction", isOneOf({"compile", "ignore", "copy"})},
        {"outputFilename", isText},
        {"outputFolder", isText},
        {"packages", isTexts},
        {"path", isText},
        {"paths", isTexts},
        {"paused", isFlag},
        {"position", isWhole},
        {"projectPath", isText},
        {"raiseVersionLimits", isFlag},
        {"relativePath", isText},
        {"row", isText},
        {"saveTo", areDependencyLists},
        {"settleMilliseconds", isWhole},
        {"since", isCursor},
        {"skipped", isFlag},
        {"timeoutSeconds", isNumber},
        {"updatePackageLock", isFlag},
        {"values", isObject},
        {"wait", isFlag},
    };
    return predicates;
}

const Endpoints& endpoints();

constexpr std::array notes = {
    "This is the stand-in, not Fernlow: it watches nothing, and what it is told is forgotten when "
    "it stops.",
    "Compiling copies a source to the build folder, provided that its braces balance. A file whose "
    "name begins with \"_\" has no output, and processing it compiles the files that @import it.",
    "Work that nobody waits for is done when the next request other than status arrives.",
    "A wait whose settle pause is longer than its timeout expires."};

Json schema(State& /*unused*/, const Json& /*unused*/) {
    Json list = Json::array();
    for (const Endpoint& each : endpoints()) {
        list.push_back({{"method", each.method},
                        {"path", each.path},
                        {"summary", each.summary},
                        {"members", each.members}});
    }
    return {{"endpoints", std::move(list)}, {"notes", notes}};
}

const Endpoints& endpoints() {
    static const Endpoints all = [] {
        Endpoints rows;
        for (const auto* family : {&workEndpoints(), &projectEndpoints(), &settingsEndpoints(),
                                   &fileEndpoints(), &collectionEndpoints()}) {
            rows.insert(rows.end(), family->begin(), family->end());
        }
        rows.push_back({"GET", "/v1/schema", "This list.", "", schema});
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

void requireMembers(const Json& body, const std::string& names) {
    std::size_t found = 0;
    std::istringstream words(names);
    for (std::string name; words >> name;) {
        const bool isOptional = name.ends_with('?');
        if (isOptional) {
            name.pop_back();
        }
        const auto member = body.find(name);
        if (member == body.end() && isOptional) {
            continue;
        }
        if (member == body.end()) {
            throw Refusal("The member \"" + name + "\" is missing.", 400);
        }
        if (!members().at(name)(*member)) {
            throw Refusal("The member \"" + name + "\" has a wrong value.", 400);
        }
        ++found;
    }
    if (found < body.size()) {
        throw Refusal("The request has members that are not known.", 400);
    }
}

Json readBody(const Request& request) {
    if (request.isTooLarge) {
        throw Refusal("The request is too large.", 413);
    }
    if (request.method == "GET" && request.body.empty()) {
        return Json::object();
    }
    Json body = Json::parse(request.body, nullptr, false);
    if (!body.is_object()) {
        throw Refusal("The request is not a JSON object.", 400);
    }
    return body;
}

Json resultOf(State& state, const Request& request) {
    const Endpoint& endpoint = endpointFor(request);
    const Json body = readBody(request);
    requireMembers(body, endpoint.members);
    // A wait reports the submitted work as its own, and a status shows it as still going on.
    if (endpoint.path != "/v1/status" && endpoint.path != "/v1/wait") {
        state.finishSubmittedWork();
    }
    return endpoint.answer(state, body);
}

Reply replyWith(unsigned httpStatus, const Json& document) {
    // Names of files need not be UTF-8, and must not keep the rest from being told.
    return {httpStatus, document.dump(-1, ' ', false, Json::error_handler_t::replace)};
}

Reply refusal(unsigned httpStatus, const std::string& sentence) {
    return replyWith(httpStatus, {{"ok", false}, {"error", {{"message", sentence}}}});
}

} // namespace

Reply answer(State& state, const Request& request) {
    try {
        return replyWith(200, {{"ok", true}, {"result", resultOf(state, request)}});
    } catch (const Refusal& error) {
        return refusal(error.httpStatus, error.what());
    } catch (const std::exception& error) {
        return refusal(500, std::string("The stand-in could not do that: ") + error.what() + ".");
    }
}

} // namespace fernlow::standin

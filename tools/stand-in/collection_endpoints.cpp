#include "endpoints.h"
#include "settings_catalogue.h"

#include <algorithm>

namespace fernlow::standin {

namespace {

Json listCollections(State& state, const Json& body) {
    Json listing = Json::object();
    for (const auto& [kind, rows] : state.projectAt(body["path"]).collections.items()) {
        if (body.value("kind", kind) != kind) {
            continue;
        }
        listing[kind] = Json::array();
        for (const Json& row : rows) {
            Json numbered = row;
            numbered["position"] = listing[kind].size();
            listing[kind].push_back(std::move(numbered));
        }
    }
    return listing;
}

Json& rowsOf(State& state, const Json& body) {
    return state.projectAt(body["path"]).collections[body["kind"].get<std::string>()];
}

Json::iterator rowOf(Json& rows, const Json& body) {
    const auto found =
        std::ranges::find_if(rows, [&](const Json& row) { return row["id"] == body["id"]; });
    if (found == rows.end()) {
        throw Refusal("There is no row " + body["id"].get<std::string>() + " of that kind.");
    }
    return found;
}

Json addRow(State& state, const Json& body) {
    Json& rows = rowsOf(state, body);
    const std::string kind = body["kind"];
    const Json values = readPatch(body, {"", kind});
    for (const auto& [member, kindWithMember, name] :
         {std::tuple("buildStepType", "buildSteps", "a type"),
          std::tuple("fileExtension", "userLanguages", "an extension")}) {
        const bool isRequired = kind == kindWithMember;
        if (isRequired && !body.contains(member)) {
            throw Refusal("A row of " + kind + " needs " + name + ".");
        }
        if (!isRequired && body.contains(member)) {
            throw Refusal("A row of " + kind + " can't have " + name + ".");
        }
    }
    Json row = {{"id", std::to_string(++state.lastRowId)}};
    for (const char* member : {"buildStepType", "fileExtension"}) {
        if (body.contains(member)) {
            row[member] = body[member];
        }
    }
    row["values"] = defaultRowValues(kind);
    row["values"].update(values);
    rows.push_back(row);
    return {{"id", row["id"]}, {"applied", row["values"]}};
}

Json removeRow(State& state, const Json& body) {
    Json& rows = rowsOf(state, body);
    const auto row = rowOf(rows, body);
    if (row->value("isRequired", false)) {
        throw Refusal("That build step is required.");
    }
    rows.erase(row);
    return {{"id", body["id"]}};
}

Json moveRow(State& state, const Json& body) {
    if (body["kind"] != "buildSteps") {
        throw Refusal("Only build steps have an order.");
    }
    Json& rows = rowsOf(state, body);
    const auto position = body["position"].get<std::int64_t>();
    if (position < 0) {
        throw Refusal("A position counts from zero.", 400);
    }
    const auto found = rowOf(rows, body);
    const Json row = *found;
    rows.erase(found);
    const auto index = std::min(position, static_cast<std::int64_t>(rows.size()));
    rows.insert(rows.begin() + index, row);
    return {{"id", body["id"]}, {"position", index}};
}

Json setRow(State& state, const Json& body) {
    Json& rows = rowsOf(state, body);
    const auto row = rowOf(rows, body);
    const Json applied = readPatch(body, {"", body["kind"]});
    (*row)["values"].update(applied);
    return {{"id", body["id"]}, {"applied", applied}};
}

Json describeRows(State& /*unused*/, const Json& body) {
    return collectionSchema(body.value("kind", ""));
}

} // namespace

const Endpoints& collectionEndpoints() {
    static const Endpoints rows = {
        {"POST", "/v1/collections", "The rows a person made.", "path kind?", listCollections},
        {"POST", "/v1/collections/add", "Make a row.",
         "path kind buildStepType? fileExtension? values literals", addRow},
        {"POST", "/v1/collections/remove", "Delete a row.", "path kind id", removeRow},
        {"POST", "/v1/collections/reorder", "Move a build step.", "path kind id position", moveRow},
        {"POST", "/v1/collections/set", "Change a row, wholly or not at all.",
         "path kind id values literals", setRow},
        {"POST", "/v1/collections/schema", "What a row of each kind holds.", "kind?", describeRows},
    };
    return rows;
}

} // namespace fernlow::standin

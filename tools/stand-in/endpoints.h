#pragma once

#include "http_server.h"
#include "state.h"

#include <optional>
#include <variant>

namespace fernlow::standin {

/// A result that comes later: asked for again and again, it is none until then.
using Answer = std::function<std::optional<Json>()>;

/// One row of the protocol. `members` names what a request has, and with a "?" what it may have;
/// `answer` gets a request so checked, and gives the reply's "result" or throws a Refusal.
struct Endpoint {
    std::string method;
    std::string path;
    std::string summary;
    std::string members;
    std::variant<Json (*)(State&, const Json&), Answer (*)(State&, const Json&)> answer;
};
using Endpoints = std::vector<Endpoint>;

/// The families of endpoints, each in the file of its name.
const Endpoints& collectionEndpoints();
const Endpoints& fileEndpoints();
const Endpoints& projectEndpoints();
const Endpoints& settingsEndpoints();
const Endpoints& statusEndpoints();
const Endpoints& workEndpoints();

/// Answers one request. Whatever is wrong with it becomes a refusal; nothing is thrown.
PendingReply answer(State& state, const Request& request);

} // namespace fernlow::standin

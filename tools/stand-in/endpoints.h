#pragma once

#include "http_server.h"
#include "state.h"

#include <optional>
#include <variant>

namespace fernlow::standin {

/// Returns the "result" of a reply, or nothing while work is still going on. It is called
/// repeatedly.
using PendingResult = std::function<std::optional<Json>()>;

using ImmediateAnswer = Json (*)(State&, const Json&);
using PendingAnswer = PendingResult (*)(State&, const Json&);

/// An endpoint of the protocol. `members` lists the members of a request; a "?" marks an optional
/// member. `answer` is called with a validated request. It returns the reply's "result", at once or
/// later, or throws a Refusal.
struct Endpoint {
    std::string method;
    std::string path;
    std::string summary;
    std::string members;
    std::variant<ImmediateAnswer, PendingAnswer> answer;
};
using Endpoints = std::vector<Endpoint>;

/// The families of endpoints. Each is in the file of the same name.
const Endpoints& collectionEndpoints();
const Endpoints& fileEndpoints();
const Endpoints& projectEndpoints();
const Endpoints& settingsEndpoints();
const Endpoints& statusEndpoints();
const Endpoints& workEndpoints();

/// Answers a request. Does not throw: errors become replies.
PendingReply answer(State& state, const Request& request);

} // namespace fernlow::standin

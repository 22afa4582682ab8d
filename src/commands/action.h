#pragma once

#include <string>
#include <variant>

namespace fernlow {

/// What a command line asks for.
struct AgentCLIAction {
    /// Send a GET of that request path, without a body.
    struct get {
        std::string path;
        bool operator==(const get&) const = default;
    };
    /// Send a POST of that request path; `body` is an encoded JSON document.
    struct post {
        std::string path;
        std::string body;
        bool operator==(const post&) const = default;
    };
    struct help {
        bool operator==(const help&) const = default;
    };
    struct version {
        bool operator==(const version&) const = default;
    };

    std::variant<get, post, help, version> kind;

    /// Whether the application is asked; else this program answers.
    [[nodiscard]] bool isSent() const {
        return std::holds_alternative<get>(kind) || std::holds_alternative<post>(kind);
    }

    bool operator==(const AgentCLIAction&) const = default;
};

} // namespace fernlow

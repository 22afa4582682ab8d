#pragma once

#include <string>
#include <variant>

namespace fernlow {

/// The action that a command line asks for.
struct AgentCLIAction {
    /// Sends a GET request without a body.
    struct get {
        std::string path;
        bool operator==(const get&) const = default;
    };
    /// Sends a POST request. The body is an encoded JSON document.
    struct post {
        std::string path;
        std::string body;
        bool operator==(const post&) const = default;
    };
    /// Prints the manual.
    struct help {
        bool operator==(const help&) const = default;
    };
    /// Prints the program's version.
    struct version {
        bool operator==(const version&) const = default;
    };

    std::variant<get, post, help, version> kind;

    /// Returns whether the action is a request to the application.
    [[nodiscard]] bool isSent() const {
        return std::holds_alternative<get>(kind) || std::holds_alternative<post>(kind);
    }

    bool operator==(const AgentCLIAction&) const = default;
};

} // namespace fernlow

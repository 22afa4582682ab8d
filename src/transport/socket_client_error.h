#pragma once

#include <exception>
#include <string>
#include <variant>

namespace fernlow {

/// The application could not be reached, or did not answer as expected. Two errors are equal if
/// their cases and the members of the cases are equal.
class AgentSocketClientError : public std::exception {
public:
    /// Nothing accepts our connection at the path.
    struct notRunning {
        std::string path;
        bool operator==(const notRunning&) const = default;
    };
    /// The path has more than `limit` bytes.
    struct pathTooLong {
        std::string path;
        int limit = 0;
        bool operator==(const pathTooLong&) const = default;
    };
    struct writeFailed {
        bool operator==(const writeFailed&) const = default;
    };
    struct readFailed {
        bool operator==(const readFailed&) const = default;
    };
    struct malformedResponse {
        bool operator==(const malformedResponse&) const = default;
    };
    using Kind = std::variant<notRunning, pathTooLong, writeFailed, readFailed, malformedResponse>;

    explicit AgentSocketClientError(Kind kind);

    [[nodiscard]] const Kind& kind() const { return kind_; }

    /// Returns the message for the user.
    [[nodiscard]] const char* what() const noexcept override { return message_.c_str(); }

    friend bool operator==(const AgentSocketClientError& one, const AgentSocketClientError& other) {
        return one.kind_ == other.kind_;
    }

private:
    Kind kind_;
    std::string message_;
};

} // namespace fernlow

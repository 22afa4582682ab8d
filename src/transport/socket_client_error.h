#pragma once

#include <exception>
#include <string>
#include <variant>

namespace fernlow {

/// The application could not be reached, or answered badly: which of the cases below. Two are equal
/// when their cases and payloads are.
class AgentSocketClientError : public std::exception {
public:
    /// Nobody listens at the path, or nobody that we may speak to.
    struct notRunning {
        std::string path;
        bool operator==(const notRunning&) const = default;
    };
    /// `limit` is the longest path that fits, in bytes.
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

    /// The sentence for the user.
    [[nodiscard]] const char* what() const noexcept override { return message_.c_str(); }

    friend bool operator==(const AgentSocketClientError& one, const AgentSocketClientError& other) {
        return one.kind_ == other.kind_;
    }

private:
    Kind kind_;
    std::string message_;
};

} // namespace fernlow

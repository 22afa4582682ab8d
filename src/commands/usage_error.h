#pragma once

#include <exception>
#include <string>
#include <variant>

namespace fernlow {

/// A command line that cannot be understood: which of the cases below, and what was typed. Thrown
/// as `AgentCLIUsageError(AgentCLIUsageError::unknownOption{word})`. Two are equal when their cases
/// and payloads are.
class AgentCLIUsageError : public std::exception {
public:
    struct unknownCommand {
        std::string word;
        bool operator==(const unknownCommand&) const = default;
    };
    struct unknownOption {
        std::string word;
        bool operator==(const unknownOption&) const = default;
    };
    struct missingValue {
        /// The option, or what is missing in a few words.
        std::string text;
        bool operator==(const missingValue&) const = default;
    };
    /// Also for a value that is none of an option's named choices.
    struct notANumber {
        std::string option;
        std::string value;
        bool operator==(const notANumber&) const = default;
    };
    struct missingPath {
        std::string text;
        bool operator==(const missingPath&) const = default;
    };
    struct unexpectedArgument {
        std::string word;
        bool operator==(const unexpectedArgument&) const = default;
    };
    struct noCommand {
        bool operator==(const noCommand&) const = default;
    };
    using Kind = std::variant<unknownCommand, unknownOption, missingValue, notANumber, missingPath,
                              unexpectedArgument, noCommand>;

    explicit AgentCLIUsageError(Kind kind);

    [[nodiscard]] const Kind& kind() const { return kind_; }

    /// The sentence for the user, with the payload as it was typed.
    [[nodiscard]] const char* what() const noexcept override { return message_.c_str(); }

    friend bool operator==(const AgentCLIUsageError& one, const AgentCLIUsageError& other) {
        return one.kind_ == other.kind_;
    }

private:
    Kind kind_;
    std::string message_;
};

} // namespace fernlow

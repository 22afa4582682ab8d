#pragma once

#include <exception>
#include <string>
#include <variant>

namespace fernlow {

/// A command line that cannot be understood: which of the cases below, and what was typed. Thrown
/// as `AgentCLIUsageError(AgentCLIUsageError::unknownOption{word})`.
class AgentCLIUsageError : public std::exception {
public:
    struct unknownCommand {
        std::string word;
    };
    struct unknownOption {
        std::string word;
    };
    struct missingValue {
        /// The option, or what is missing in a few words.
        std::string text;
    };
    /// Also for a value that is none of an option's named choices.
    struct notANumber {
        std::string option;
        std::string value;
    };
    struct missingPath {
        std::string text;
    };
    struct unexpectedArgument {
        std::string word;
    };
    struct noCommand {};
    using Kind = std::variant<unknownCommand, unknownOption, missingValue, notANumber, missingPath,
                              unexpectedArgument, noCommand>;

    explicit AgentCLIUsageError(const Kind& kind);

    /// The sentence for the user, with the payload as it was typed.
    [[nodiscard]] const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

} // namespace fernlow

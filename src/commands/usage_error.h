#pragma once

#include <exception>
#include <string>
#include <variant>

namespace fernlow {

/// The error of a command line with a mistake: one of the cases below, with the text as typed.
/// Throw it as `AgentCLIUsageError(AgentCLIUsageError::unknownOption{word})`.
class AgentCLIUsageError : public std::exception {
public:
    struct unknownCommand {
        std::string word;
    };
    struct unknownOption {
        std::string word;
    };
    struct missingValue {
        /// The option, or a few words for the missing value.
        std::string text;
    };
    /// Also used for a value that is not one of an option's choices.
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

    /// Returns the sentence for the user.
    [[nodiscard]] const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

} // namespace fernlow

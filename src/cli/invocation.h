#pragma once

#include "cli/words.h"

#include <exception>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace fernlow {

/// A command line that cannot be understood: which of the cases below, and what was typed.
class AgentCLIUsageError : public std::exception {
public:
    static AgentCLIUsageError unknownCommand(std::string_view word);
    static AgentCLIUsageError unknownOption(std::string_view word);
    /// `text` is the option, or what is missing in a few words.
    static AgentCLIUsageError missingValue(std::string_view text);
    /// Also for a value that is none of an option's named choices.
    static AgentCLIUsageError notANumber(std::string_view option, std::string_view value);
    static AgentCLIUsageError missingPath(std::string_view text);
    static AgentCLIUsageError unexpectedArgument(std::string_view word);
    static AgentCLIUsageError noCommand();

    /// The sentence for the user, with the payload as it was typed.
    [[nodiscard]] const char* what() const noexcept override { return message_.c_str(); }

    friend bool operator==(const AgentCLIUsageError& one, const AgentCLIUsageError& other) {
        return one.message_ == other.message_;
    }

private:
    explicit AgentCLIUsageError(std::string message) : message_(std::move(message)) {}

    std::string message_;
};

/// What a command line asks for.
struct AgentCLIAction {
    /// Send a GET of that request path, without a body.
    struct Get {
        std::string path;
        bool operator==(const Get&) const = default;
    };
    /// Send a POST of that request path; `body` is an encoded JSON document.
    struct Post {
        std::string path;
        std::string body;
        bool operator==(const Post&) const = default;
    };
    struct Help {
        bool operator==(const Help&) const = default;
    };
    struct Version {
        bool operator==(const Version&) const = default;
    };

    std::variant<Get, Post, Help, Version> kind;

    bool operator==(const AgentCLIAction&) const = default;
};

/// A parsed command line.
struct AgentCLIInvocation {
    AgentCLIAction action;
    /// Print the reply as JSON; the default where standard output is not a terminal.
    bool wantsJSON = false;
    /// The socket to use, as typed or the usual one.
    std::string socketPath;
    /// Whether the application may be started when nobody listens.
    bool launchIfNeeded = true;

    bool operator==(const AgentCLIInvocation&) const = default;
};

/// Understands a command line: the arguments after the program's name. The options --json,
/// --no-launch and --socket may stand anywhere. Throws AgentCLIUsageError, or json::EncodingError
/// or CurrentDirectoryError when the request cannot be built.
AgentCLIInvocation parseInvocation(const std::vector<std::string>& arguments,
                                   const CurrentDirectory& currentDirectory,
                                   bool standardOutputIsTerminal);

/// Every command word, in the order in which they are looked up.
std::vector<std::string_view> commandWords();

} // namespace fernlow

#include "cli/invocation.h"

namespace fernlow {

namespace {

constexpr std::string_view seeHelp = " Run \"fernlow --help\" to see what there is.";

std::string quoted(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

std::string withHelp(std::string sentence) {
    return sentence.append(seeHelp);
}

} // namespace

AgentCLIUsageError AgentCLIUsageError::unknownCommand(std::string_view word) {
    return AgentCLIUsageError(withHelp("There is no " + quoted(word) + " command."));
}

AgentCLIUsageError AgentCLIUsageError::unknownOption(std::string_view word) {
    return AgentCLIUsageError(withHelp(quoted(word) + " is not an option here."));
}

AgentCLIUsageError AgentCLIUsageError::missingValue(std::string_view text) {
    return AgentCLIUsageError(quoted(text) + " needs a value after it.");
}

AgentCLIUsageError AgentCLIUsageError::notANumber(std::string_view option, std::string_view value) {
    return AgentCLIUsageError(quoted(option) + " needs a number, and " + quoted(value) +
                              " is not one.");
}

AgentCLIUsageError AgentCLIUsageError::missingPath(std::string_view text) {
    return AgentCLIUsageError(quoted(text) + " needs a path.");
}

AgentCLIUsageError AgentCLIUsageError::unexpectedArgument(std::string_view word) {
    return AgentCLIUsageError(quoted(word) + " was not expected here.");
}

AgentCLIUsageError AgentCLIUsageError::noCommand() {
    return AgentCLIUsageError(withHelp("No command given."));
}

} // namespace fernlow

#include "commands/usage_error.h"

#include <string_view>

namespace fernlow {

namespace {

constexpr const char* seeHelp = " Run \"fernlow --help\" to see what there is.";

std::string inQuotes(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

struct Message {
    std::string operator()(const AgentCLIUsageError::unknownCommand& error) const {
        return "There is no " + inQuotes(error.word) + " command." + seeHelp;
    }
    std::string operator()(const AgentCLIUsageError::unknownOption& error) const {
        return inQuotes(error.word) + " is not an option here." + seeHelp;
    }
    std::string operator()(const AgentCLIUsageError::missingValue& error) const {
        return inQuotes(error.text) + " needs a value after it.";
    }
    std::string operator()(const AgentCLIUsageError::notANumber& error) const {
        return inQuotes(error.option) + " needs a number, and " + inQuotes(error.value) +
               " is not one.";
    }
    std::string operator()(const AgentCLIUsageError::missingPath& error) const {
        return inQuotes(error.text) + " needs a path.";
    }
    std::string operator()(const AgentCLIUsageError::unexpectedArgument& error) const {
        return inQuotes(error.word) + " was not expected here.";
    }
    std::string operator()(const AgentCLIUsageError::noCommand& /*error*/) const {
        return std::string("No command given.") + seeHelp;
    }
};

} // namespace

AgentCLIUsageError::AgentCLIUsageError(const Kind& kind) : message_(std::visit(Message(), kind)) {}

} // namespace fernlow

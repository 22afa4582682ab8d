// Parses argument lists, with one word on each line of the input. An independent JSON library must
// read each request body as an object without null members, and in valid UTF-8. (A setting's value
// inside a member may be null.)
#include "cli/invocation.h"
#include "commands/usage_error.h"
#include "json/writer.h"
#include "require.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace {

std::vector<std::string> splitLines(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

void checkBody(const std::string& text) {
    const auto body = nlohmann::json::parse(text, nullptr, false);
    FUZZ_REQUIRE(body.is_object());
    for (const auto& member : body) {
        FUZZ_REQUIRE(!member.is_null());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto words = splitLines({reinterpret_cast<const char*>(data), size});
    try {
        const auto invocation =
            fernlow::parseInvocation(words, fernlow::CurrentDirectory("/p/src"), false);
        if (const auto* post =
                std::get_if<fernlow::AgentCLIAction::post>(&invocation.action.kind)) {
            checkBody(post->body);
        }
    } catch (const fernlow::AgentCLIUsageError& error) {
        FUZZ_REQUIRE(*error.what() != '\0');
    } catch (const fernlow::json::EncodingError& error) {
        FUZZ_REQUIRE(*error.what() != '\0');
    }
    return 0;
}

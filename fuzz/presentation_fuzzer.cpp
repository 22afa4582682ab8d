// Reply bodies through presentation, for a person and as JSON. The text is always valid UTF-8, the
// status one of those that a reply decides, the stream standard error exactly for a refusal or an
// unreadable body, and both forms agree.
#include "render/reply.h"
#include "require.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

/// By an independent judge: the other library refuses to write a text that isn't.
bool isValidUtf8(std::string_view text) {
    try {
        static_cast<void>(nlohmann::json(text).dump());
        return true;
    } catch (const nlohmann::json::type_error&) {
        return false;
    }
}

void check(const fernlow::ReplyOutput& output) {
    const int status = output.exitStatus;
    FUZZ_REQUIRE(status == 0 || status == 1 || status == 4 || status == 5);
    FUZZ_REQUIRE(output.toStandardError == (status == 5));
    FUZZ_REQUIRE(isValidUtf8(output.text.view()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view body(reinterpret_cast<const char*>(data), size);
    const auto text = fernlow::presentReply(200, fernlow::ByteBuffer(body), false);
    const auto json = fernlow::presentReply(200, fernlow::ByteBuffer(body), true);
    check(text);
    check(json);
    FUZZ_REQUIRE(text.exitStatus == json.exitStatus);
    const bool unreadable = json.text.view() == "Fernlow's reply could not be read.";
    FUZZ_REQUIRE(unreadable || !isValidUtf8(body) || json.text.view() == body);
    return 0;
}

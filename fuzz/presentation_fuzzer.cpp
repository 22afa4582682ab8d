// Presents reply bodies as text and as JSON. Both outputs are valid UTF-8 and have the same exit
// status: 0, 1, 4 or 5. Only outputs with status 5 go to standard error.
#include "render/reply.h"
#include "require.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

/// Asks an independent JSON library, which refuses to write ill-formed text.
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

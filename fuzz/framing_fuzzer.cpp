// Parses the bytes of a reply. They are rejected as malformed, or the body is everything after the
// first blank line.
#include "require.h"
#include "transport/http.h"
#include "transport/socket_client_error.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <variant>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    try {
        const auto reply = fernlow::parseReply(fernlow::ByteBuffer(bytes));
        const std::size_t headEnd = bytes.find("\r\n\r\n");
        FUZZ_REQUIRE(headEnd != std::string_view::npos);
        FUZZ_REQUIRE(reply.body.view() == bytes.substr(headEnd + 4));
    } catch (const fernlow::AgentSocketClientError& error) {
        FUZZ_REQUIRE(std::holds_alternative<fernlow::AgentSocketClientError::malformedResponse>(
            error.kind()));
    }
    return 0;
}

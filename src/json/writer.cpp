#include "json/writer.h"

#include "bytes/number.h"
#include "bytes/utf8.h"

#include <cmath>

namespace fernlow::json {

namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

void appendEscaped(std::string& out, char character) {
    switch (character) {
    case '"':
        out += "\\\"";
        break;
    case '\\':
        out += "\\\\";
        break;
    case '\n':
        out += "\\n";
        break;
    case '\r':
        out += "\\r";
        break;
    case '\t':
        out += "\\t";
        break;
    default:
        out += "\\u00";
        out += hexDigits[static_cast<unsigned char>(character) >> 4U];
        out += hexDigits[static_cast<unsigned char>(character) & 0xFU];
    }
}

bool needsEscape(char character) {
    return static_cast<unsigned char>(character) < 0x20 || character == '"' || character == '\\';
}

} // namespace

void appendText(std::string& out, std::string_view text) {
    if (!utf8::isWellFormed(text)) {
        throw EncodingError("\"" + std::string(utf8::replaceIllFormed(text).view()) +
                            "\" is not valid UTF-8, so it cannot be sent to Fernlow.");
    }
    out += '"';
    for (const char character : text) {
        if (needsEscape(character)) {
            appendEscaped(out, character);
        } else {
            out += character;
        }
    }
    out += '"';
}

void appendInteger(std::string& out, std::int64_t value) {
    out += std::to_string(value);
}

void appendUnsigned(std::string& out, std::uint64_t value) {
    out += std::to_string(value);
}

void appendBoolean(std::string& out, bool value) {
    out += value ? "true" : "false";
}

void appendDecimal(std::string& out, double value, std::string_view name) {
    if (!std::isfinite(value)) {
        throw EncodingError("\"" + std::string(name) + notFinite);
    }
    out += number::shortestDecimal(value);
}

} // namespace fernlow::json

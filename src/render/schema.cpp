#include "render/views.h"

#include <string>

namespace fernlow {

namespace {

/// Returns the first five characters of the text, padded with spaces.
std::string fittedToFive(std::string_view text) {
    std::string fitted;
    std::size_t characters = 0;
    for (const char byte : text) {
        const bool beginsCharacter = (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
        characters += beginsCharacter ? 1 : 0;
        if (characters > 5) {
            return fitted;
        }
        fitted += byte;
    }
    return fitted.append(5 - characters, ' ');
}

} // namespace

bool renderSchema(const json::Object& result, Lines& lines) {
    const auto notes = result.optionalTexts("notes");
    const auto endpoints = result.optionalObjects("endpoints");
    if (!notes || !endpoints) {
        return false;
    }
    lines.add("Endpoints:");
    for (const json::Object endpoint : *endpoints) {
        lines.add("  ", fittedToFive(endpoint.text("method")), " ", endpoint.text("path"));
        lines.add("        ", endpoint.text("summary"));
    }
    lines.add();
    lines.add("Things worth knowing:");
    for (const std::string_view note : *notes) {
        lines.add();
        lines.add("  • ", note);
    }
    return true;
}

} // namespace fernlow

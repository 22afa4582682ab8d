#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace fernlow::json {

/// Something that JSON has no way to say. The message is a sentence for the user.
class EncodingError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What an EncodingError says behind the quoted name of a number that is infinite or none.
inline constexpr const char* notFinite = "\" must be a finite number to be sent to Fernlow.";

/// Appends the text as a JSON string, quotes included. Throws EncodingError when it is not
/// well-formed UTF-8: sent with replacements it would name something else.
void appendText(std::string& out, std::string_view text);

void appendInteger(std::string& out, std::int64_t value);
void appendUnsigned(std::string& out, std::uint64_t value);
void appendBoolean(std::string& out, bool value);

/// Appends a decimal in its shortest form, a whole one without a point. Throws EncodingError when
/// it is infinite or not a number; `name` is what the sentence calls it.
void appendDecimal(std::string& out, double value, std::string_view name);

} // namespace fernlow::json

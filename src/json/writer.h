#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace fernlow::json {

/// A value that cannot be written as JSON. The message is a sentence for the user.
class EncodingError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The end of the message for an infinite number or a NaN. The message begins with a quote and the
/// name of the number.
inline constexpr const char* notFinite = "\" must be a finite number to be sent to Fernlow.";

/// Appends the text as a JSON string with its quotes. Throws EncodingError if the text is not
/// well-formed UTF-8, because a path with replaced bytes would be the path of another file.
void appendText(std::string& out, std::string_view text);

void appendInteger(std::string& out, std::int64_t value);
void appendUnsigned(std::string& out, std::uint64_t value);
void appendBoolean(std::string& out, bool value);

/// Appends the number as its shortest decimal text; whole numbers have no decimal point. Throws
/// EncodingError with a message that contains `name` if the number is infinite or a NaN.
void appendDecimal(std::string& out, double value, std::string_view name);

} // namespace fernlow::json

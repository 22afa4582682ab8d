#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace fernlow {

/// The words that an enumeration's cases have on the command line and on the wire, in the order of
/// the cases. Each enumeration that travels specialises it, next to its own declaration.
template <class Enumeration>
inline constexpr auto wireNames = nullptr;

/// An enumeration with wire words.
template <class Type>
concept WireEnum = requires { wireNames<Type>.size(); };

template <WireEnum Enumeration>
constexpr std::string_view wireName(Enumeration value) {
    return wireNames<Enumeration>.at(static_cast<std::size_t>(value));
}

/// The case with exactly that word.
template <WireEnum Enumeration>
constexpr std::optional<Enumeration> fromWireName(std::string_view word) {
    const auto& words = wireNames<Enumeration>;
    const auto found = std::find(words.begin(), words.end(), word);
    if (found == words.end()) {
        return std::nullopt;
    }
    return static_cast<Enumeration>(found - words.begin());
}

} // namespace fernlow

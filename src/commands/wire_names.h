#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace fernlow {

/// The names of an enumeration's cases on the command line and in requests, in the order of the
/// cases. Each enumeration that is sent specialises this array next to its own declaration.
template <class Enumeration>
inline constexpr auto wireNames = nullptr;

/// An enumeration with wire names.
template <class Type>
concept WireEnum = requires { wireNames<Type>.size(); };

template <WireEnum Enumeration>
constexpr std::string_view wireName(Enumeration value) {
    return wireNames<Enumeration>.at(static_cast<std::size_t>(value));
}

/// Returns the case with exactly this name, if there is one.
template <WireEnum Enumeration>
constexpr std::optional<Enumeration> fromWireName(std::string_view name) {
    const auto& names = wireNames<Enumeration>;
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
        return std::nullopt;
    }
    return static_cast<Enumeration>(found - names.begin());
}

} // namespace fernlow

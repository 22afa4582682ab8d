#pragma once

#include "commands/action.h"
#include "commands/setting_values.h"
#include "commands/wire_names.h"
#include "json/writer.h"

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

/// Makes the enclosing struct a request record. The arguments are the struct's members in the order
/// in which they are sent. Place it after the members.
#define FERNLOW_WIRE_FIELDS(...)                                                                   \
    static constexpr std::string_view wireFieldNames = #__VA_ARGS__;                               \
    auto wireFields() const {                                                                      \
        return std::tie(__VA_ARGS__);                                                              \
    }

namespace fernlow {

/// A request record: a struct that uses FERNLOW_WIRE_FIELDS.
template <class Type>
concept WireRecord = requires(const Type& record) {
    { Type::wireFieldNames } -> std::convertible_to<std::string_view>;
    record.wireFields();
};

/// Encodes one record. value() has an overload for each type of member.
class RecordEncoder {
public:
    template <WireRecord Record>
    std::string encode(const Record& record) {
        std::string_view names = Record::wireFieldNames;
        const auto nextName = [&names] {
            const std::string_view name = names.substr(0, names.find_first_of(", "));
            // The blanks after the commas depend on how the compiler stringizes the arguments.
            names.remove_prefix(std::min(names.find_first_not_of(", ", name.size()), names.size()));
            return name;
        };
        out_ = "{";
        std::apply([&](const auto&... fields) { (member(nextName(), fields), ...); },
                   record.wireFields());
        return std::move(out_ += '}');
    }

private:
    template <class Value>
    void member(std::string_view name, const Value& member) {
        if (out_.back() != '{') {
            out_ += ',';
        }
        json::appendText(out_, name);
        out_ += ':';
        value(name, member);
    }
    template <class Value>
    void member(std::string_view name, const std::optional<Value>& optional) {
        if (optional) {
            member(name, *optional);
        }
    }

    // The name is for the error message about a value that cannot be encoded.
    void value(std::string_view /*name*/, bool value) { json::appendBoolean(out_, value); }
    void value(std::string_view /*name*/, std::int64_t value) { json::appendInteger(out_, value); }
    void value(std::string_view /*name*/, std::uint64_t value) {
        json::appendUnsigned(out_, value);
    }
    void value(std::string_view name, double value) { json::appendDecimal(out_, value, name); }
    void value(std::string_view /*name*/, std::string_view value) { json::appendText(out_, value); }

    template <WireEnum Enumeration>
    void value(std::string_view /*name*/, Enumeration value) {
        json::appendText(out_, wireName(value));
    }
    void value(std::string_view name, const AgentSettingValue& setting) {
        std::visit([&](const auto& payload) { this->value(name, payload); }, setting.kind);
    }
    void value(std::string_view /*name*/, const AgentSettingValue::absent& /*value*/) {
        out_ += "null";
    }
    template <class Element>
    void value(std::string_view name, const std::vector<Element>& elements) {
        out_ += '[';
        for (const Element& element : elements) {
            if (&element != &elements.front()) {
                out_ += ',';
            }
            value(name, element);
        }
        out_ += ']';
    }
    template <class Value>
    void value(std::string_view /*name*/, const std::map<std::string, Value>& members) {
        out_ += '{';
        for (const auto& [name, value] : members) {
            member(name, value);
        }
        out_ += '}';
    }

    std::string out_;
};

/// Returns the record as one compact JSON object in UTF-8. Leaves absent fields out. Throws
/// json::EncodingError if a text is not UTF-8 or a decimal is not finite.
template <WireRecord Record>
std::string encode(const Record& record) {
    return RecordEncoder().encode(record);
}

/// Returns the action that posts the record. Throws like encode().
template <class Record>
AgentCLIAction post(std::string_view path, const Record& record) {
    static_assert(WireRecord<Record>, "add FERNLOW_WIRE_FIELDS below the fields of the record");
    return {AgentCLIAction::post{std::string(path), encode(record)}};
}

} // namespace fernlow

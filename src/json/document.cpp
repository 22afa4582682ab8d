#include "json/document.h"

#include "bytes/number.h"
#include "json/tape.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <type_traits>
#include <utility>

namespace fernlow::json {

using detail::Kind;

namespace {

/// Returns the value of a number literal, or nothing if it has a fractional part or does not fit.
/// Accepts every spelling of a whole number, such as "1e2" and "5.0".
template <class Number>
std::optional<Number> readWhole(std::string_view literal) {
    const auto read = [](std::string_view digits) -> std::optional<Number> {
        Number number{};
        const char* const end = digits.data() + digits.size();
        const auto result = std::from_chars(digits.data(), end, number);
        if (result.ec != std::errc{} || result.ptr != end) {
            return std::nullopt;
        }
        return number;
    };
    if (const auto plain = read(literal)) {
        return plain;
    }
    const auto digits = number::wholeDigits(literal);
    return digits ? read(*digits) : std::nullopt;
}

} // namespace

template <class Item>
Item List<Item>::Iterator::operator*() const {
    if constexpr (std::is_same_v<Item, Object>) {
        return Object(Value(tape_, index_));
    } else {
        return tape_->slice(tape_->nodes[index_]);
    }
}

template <class Item>
typename List<Item>::Iterator& List<Item>::Iterator::operator++() {
    index_ = tape_->after(index_);
    return *this;
}

template <class Item>
std::int64_t List<Item>::size() const {
    std::int64_t count = 0;
    for (Iterator item = begin(); item != end(); ++item) {
        ++count;
    }
    return count;
}

template class List<Object>;
template class List<std::string_view>;

bool Value::isNull() const {
    return tape_->nodes[index_].kind == Kind::null;
}

std::optional<std::string_view> Value::text() const {
    const detail::Node& node = tape_->nodes[index_];
    if (node.kind != Kind::text && node.kind != Kind::unescapedText) {
        return std::nullopt;
    }
    return tape_->slice(node);
}

std::optional<bool> Value::strictBoolean() const {
    switch (tape_->nodes[index_].kind) {
    case Kind::yes:
        return true;
    case Kind::no:
        return false;
    default:
        return std::nullopt;
    }
}

std::optional<bool> Value::boolean() const {
    if (const auto strict = strictBoolean()) {
        return strict;
    }
    const auto number = integer();
    return number == 0 || number == 1 ? std::optional(number == 1) : std::nullopt;
}

std::optional<std::string_view> Value::numberLiteral() const {
    const detail::Node& node = tape_->nodes[index_];
    if (node.kind != Kind::number) {
        return std::nullopt;
    }
    return tape_->slice(node);
}

std::optional<std::int64_t> Value::integer() const {
    const auto literal = numberLiteral();
    return literal ? readWhole<std::int64_t>(*literal) : std::nullopt;
}

std::optional<std::uint64_t> Value::unsignedInteger() const {
    const auto literal = numberLiteral();
    return literal ? readWhole<std::uint64_t>(*literal) : std::nullopt;
}

std::optional<Object> Value::object() const {
    if (tape_->nodes[index_].kind != Kind::object) {
        return std::nullopt;
    }
    return Object(*this);
}

template <class Item>
std::optional<List<Item>> Value::listOf(std::optional<Item> (Value::*read)() const) const {
    const detail::Node& node = tape_->nodes[index_];
    if (node.kind != Kind::list) {
        return std::nullopt;
    }
    for (std::uint32_t index = index_ + 1; index < node.position; index = tape_->after(index)) {
        if (!(Value(tape_, index).*read)()) {
            return std::nullopt;
        }
    }
    return List<Item>(tape_, index_ + 1, node.position);
}

std::optional<List<Object>> Value::objects() const {
    return listOf(&Value::object);
}

std::optional<List<std::string_view>> Value::texts() const {
    return listOf(&Value::text);
}

std::optional<List<std::string_view>> Value::numberLiterals() const {
    return listOf(&Value::numberLiteral);
}

std::optional<Value> Object::find(std::string_view key) const {
    const detail::Tape& tape = *value_.tape_;
    const std::uint32_t end = tape.nodes[value_.index_].position;
    const std::uint32_t found = tape.find(key, value_.index_ + 1, end);
    return found < end ? std::optional(Value(&tape, found + 1)) : std::nullopt;
}

bool Object::isEmpty() const {
    return value_.tape_->nodes[value_.index_].position == value_.index_ + 1;
}

Members Object::sortedMembers() const {
    const detail::Tape& tape = *value_.tape_;
    const std::uint32_t end = tape.nodes[value_.index_].position;
    std::vector<std::uint32_t> indices;
    // At most every second node is a key. Reserved memory that is never written costs nothing.
    indices.reserve((end - value_.index_) / 2);
    for (std::uint32_t index = value_.index_ + 1; index < end; index = tape.after(index + 1)) {
        indices.push_back(index);
    }
    const auto key = [&](std::uint32_t index) { return tape.slice(tape.nodes[index]); };
    // Not std::stable_sort, which allocates memory.
    std::sort(indices.begin(), indices.end(), [&](std::uint32_t left, std::uint32_t right) {
        // Not <=>, which libc++ 14 does not have for texts.
        const int order = key(left).compare(key(right));
        return order < 0 || (order == 0 && left < right);
    });
    const auto haveSameKey = [&](std::uint32_t left, std::uint32_t right) {
        return key(left) == key(right);
    };
    indices.erase(std::unique(indices.begin(), indices.end(), haveSameKey), indices.end());
    return {&tape, std::move(indices)};
}

Member Members::Iterator::operator*() const {
    return {tape_->slice(tape_->nodes[*index_]), Value(tape_, *index_ + 1)};
}

template <class Type>
std::optional<Type> Object::read(std::string_view key,
                                 std::optional<Type> (Value::*reader)() const) const {
    const auto value = find(key);
    return value ? ((*value).*reader)() : std::nullopt;
}

std::optional<std::string_view> Object::optionalText(std::string_view key) const {
    return read(key, &Value::text);
}

std::string_view Object::text(std::string_view key) const {
    return optionalText(key).value_or(std::string_view());
}

std::optional<std::int64_t> Object::optionalInteger(std::string_view key) const {
    return read(key, &Value::integer);
}

std::int64_t Object::integer(std::string_view key) const {
    return optionalInteger(key).value_or(0);
}

std::optional<std::uint64_t> Object::optionalUnsigned(std::string_view key) const {
    return read(key, &Value::unsignedInteger);
}

std::optional<bool> Object::optionalBoolean(std::string_view key) const {
    return read(key, &Value::boolean);
}

bool Object::boolean(std::string_view key) const {
    return optionalBoolean(key).value_or(false);
}

std::optional<Object> Object::object(std::string_view key) const {
    return read(key, &Value::object);
}

std::optional<List<Object>> Object::optionalObjects(std::string_view key) const {
    return read(key, &Value::objects);
}

List<Object> Object::objects(std::string_view key) const {
    return optionalObjects(key).value_or(List<Object>());
}

std::optional<List<std::string_view>> Object::optionalTexts(std::string_view key) const {
    return read(key, &Value::texts);
}

Value Document::root() const {
    return {tape_.get(), 0};
}

Document::Document(std::unique_ptr<detail::Tape> tape) : tape_(std::move(tape)) {}
Document::Document(Document&&) noexcept = default;
Document& Document::operator=(Document&&) noexcept = default;
Document::~Document() = default;

} // namespace fernlow::json

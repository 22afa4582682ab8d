#include "json/document.h"

#include "json/number.h"
#include "json/tape.h"

#include <charconv>
#include <system_error>
#include <utility>

namespace fernlow::json {

using detail::Kind;

namespace {

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
    const auto digits = wholeDigits(literal);
    return digits ? read(*digits) : std::nullopt;
}

} // namespace

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
    if (const auto number = integer()) {
        return *number == 0 || *number == 1 ? std::optional(*number == 1) : std::nullopt;
    }
    return strictBoolean();
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

template <class Element>
std::optional<std::vector<Element>> Value::listOf(std::optional<Element> (Value::*read)()
                                                      const) const {
    const detail::Node& node = tape_->nodes[index_];
    if (node.kind != Kind::list) {
        return std::nullopt;
    }
    std::vector<Element> elements;
    elements.reserve(node.size);
    for (std::uint32_t at = index_ + 1; at < node.place; at = tape_->after(at)) {
        const auto element = (Value(tape_, at).*read)();
        if (!element) {
            return std::nullopt;
        }
        elements.push_back(*element);
    }
    return elements;
}

std::optional<std::vector<Object>> Value::objects() const {
    return listOf(&Value::object);
}

std::optional<std::vector<std::string_view>> Value::texts() const {
    return listOf(&Value::text);
}

std::optional<Value> Object::find(std::string_view key) const {
    const detail::Tape& tape = *value_.tape_;
    const std::uint32_t end = tape.nodes[value_.index_].place;
    for (std::uint32_t at = value_.index_ + 1; at < end; at = tape.after(at + 1)) {
        if (tape.slice(tape.nodes[at]) == key) {
            return Value(&tape, at + 1);
        }
    }
    return std::nullopt;
}

std::vector<Member> Object::members() const {
    const detail::Tape& tape = *value_.tape_;
    const detail::Node& node = tape.nodes[value_.index_];
    std::vector<Member> members;
    members.reserve(node.size);
    for (std::uint32_t at = value_.index_ + 1; at < node.place; at = tape.after(at + 1)) {
        members.push_back({tape.slice(tape.nodes[at]), Value(&tape, at + 1)});
    }
    return members;
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

std::optional<std::vector<Object>> Object::optionalObjects(std::string_view key) const {
    return read(key, &Value::objects);
}

std::vector<Object> Object::objects(std::string_view key) const {
    return optionalObjects(key).value_or(std::vector<Object>());
}

std::optional<std::vector<std::string_view>> Object::optionalTexts(std::string_view key) const {
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

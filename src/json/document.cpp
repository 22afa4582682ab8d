#include "json/document.h"

#include "json/byte_buffer.h"
#include "json/number.h"

#include <boost/json/basic_parser_impl.hpp>

#include <charconv>
#include <functional>
#include <system_error>
#include <utility>

namespace fernlow::json {

namespace detail {

enum class Kind : std::uint8_t { null, yes, no, number, text, unescapedText, list, object };

/// One value or key. 8 bytes, because large replies are paid for by the memory they touch.
struct Node {
    Kind kind : 4;
    /// Of a text or number, its bytes; of a list or object, its elements or members.
    std::uint32_t size : 28;
    /// Of a text or number, where it begins; of a list or object, the index behind its last node.
    std::uint32_t place;
};

constexpr std::uint32_t largestSize = (1U << 28U) - 1;
constexpr std::size_t deepestNesting = 1024;

/// A document laid out flat in its own order: a container's node is followed by those of its
/// elements, a key's by that of its value.
struct Tape {
    std::string_view source;
    /// The texts that had escapes, decoded; all others lie in the source.
    ByteBuffer unescaped;
    std::vector<Node> nodes;

    [[nodiscard]] std::string_view slice(const Node& node) const {
        const std::string_view whole = node.kind == Kind::unescapedText ? unescaped.view() : source;
        return whole.substr(node.place, node.size);
    }

    [[nodiscard]] std::uint32_t after(std::uint32_t index) const {
        const Node& node = nodes[index];
        return node.kind >= Kind::list ? node.place : index + 1;
    }
};

namespace {

/// Takes the parser's events and lays out the tape. The parser's own conversions of numbers are
/// ignored: its decimals are not always the nearest, and the literal loses nothing.
class TapeBuilder {
public:
    // Limits the parser asks its handler for; the document's own limit is below them all.
    static constexpr std::size_t max_object_size = largestSize;
    static constexpr std::size_t max_array_size = largestSize;
    static constexpr std::size_t max_key_size = largestSize;
    static constexpr std::size_t max_string_size = largestSize;

    TapeBuilder(Tape& tape, std::size_t depth) : tape_(tape), keptDepth_(depth) {}

    using Error = boost::json::error_code;
    using Text = boost::json::string_view;

    bool on_document_begin(Error& /*error*/) { return true; }
    bool on_document_end(Error& /*error*/) { return true; }
    bool on_object_begin(Error& /*error*/) { return open(Kind::object); }
    bool on_object_end(std::size_t size, Error& /*error*/) { return close(size); }
    bool on_array_begin(Error& /*error*/) { return open(Kind::list); }
    bool on_array_end(std::size_t size, Error& /*error*/) { return close(size); }
    bool on_key_part(Text part, std::size_t /*size*/, Error& /*error*/) { return addPart(part); }
    bool on_key(Text last, std::size_t size, Error& /*error*/) { return addText(last, size); }
    bool on_string_part(Text part, std::size_t /*size*/, Error& /*error*/) { return addPart(part); }
    bool on_string(Text last, std::size_t size, Error& /*error*/) { return addText(last, size); }
    bool on_number_part(Text /*part*/, Error& /*error*/) { return true; }
    bool on_int64(std::int64_t /*value*/, Text literal, Error& /*error*/) {
        return addNumber(literal);
    }
    bool on_uint64(std::uint64_t /*value*/, Text literal, Error& /*error*/) {
        return addNumber(literal);
    }
    bool on_double(double /*value*/, Text literal, Error& /*error*/) { return addNumber(literal); }
    bool on_bool(bool value, Error& /*error*/) { return add(value ? Kind::yes : Kind::no, 0, 0); }
    bool on_null(Error& /*error*/) { return add(Kind::null, 0, 0); }
    bool on_comment_part(Text /*part*/, Error& /*error*/) { return true; }
    bool on_comment(Text /*last*/, Error& /*error*/) { return true; }

private:
    [[nodiscard]] bool keeps() const { return open_.size() <= keptDepth_; }

    bool add(Kind kind, std::size_t size, std::size_t place) {
        if (keeps()) {
            Node node{kind, 0, static_cast<std::uint32_t>(place)};
            node.size = static_cast<std::uint32_t>(size) & largestSize;
            tape_.nodes.push_back(node);
        }
        return true;
    }

    bool open(Kind kind) {
        add(kind, 0, 0);
        open_.push_back(static_cast<std::uint32_t>(tape_.nodes.size() - 1));
        return true;
    }

    bool close(std::size_t size) {
        const std::uint32_t index = open_.back();
        // Elements that were left out don't count; then this container may be left out itself.
        const bool keptElements = keeps();
        open_.pop_back();
        if (keeps()) {
            Node& node = tape_.nodes[index];
            node.size = static_cast<std::uint32_t>(keptElements ? size : 0) & largestSize;
            node.place = static_cast<std::uint32_t>(tape_.nodes.size());
        }
        return true;
    }

    bool addNumber(Text literal) { return add(Kind::number, literal.size(), offset(literal)); }

    /// A text arrives in parts only when it has escapes; the last part may be empty.
    bool addPart(Text part) {
        if (keeps()) {
            tape_.unescaped.append({part.data(), part.size()});
        }
        return true;
    }

    bool addText(Text last, std::size_t size) {
        if (size == last.size() && isInSource(last)) {
            return add(Kind::text, size, offset(last));
        }
        addPart(last);
        return add(Kind::unescapedText, size, tape_.unescaped.view().size() - (keeps() ? size : 0));
    }

    [[nodiscard]] bool isInSource(Text part) const {
        const std::less_equal<> noLater;
        return noLater(tape_.source.data(), part.data()) &&
               noLater(part.data() + part.size(), tape_.source.data() + tape_.source.size());
    }

    [[nodiscard]] std::size_t offset(Text part) const {
        return static_cast<std::size_t>(part.data() - tape_.source.data());
    }

    Tape& tape_;
    std::size_t keptDepth_;
    /// The containers around the place that is being read.
    std::vector<std::uint32_t> open_;
};

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

} // namespace detail

using detail::Kind;

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
    if (const auto number = integer(); number == 0 || number == 1) {
        return number == 1;
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
    return literal ? detail::readWhole<std::int64_t>(*literal) : std::nullopt;
}

std::optional<std::uint64_t> Value::unsignedInteger() const {
    const auto literal = numberLiteral();
    return literal ? detail::readWhole<std::uint64_t>(*literal) : std::nullopt;
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

std::optional<Document> Document::parse(std::string_view text, std::size_t depth) {
    if (text.size() > detail::largestSize) {
        return std::nullopt;
    }
    auto tape = std::make_unique<detail::Tape>();
    tape->source = text;
    if (depth == everything) {
        // Each node takes two bytes of JSON or more, but for the brackets still open where a faulty
        // document ends: enough room at once, and only what is filled is ever touched.
        tape->nodes.reserve(text.size() / 2 + detail::deepestNesting);
    }

    boost::json::parse_options options;
    options.max_depth = detail::deepestNesting;
    boost::json::basic_parser<detail::TapeBuilder> parser(options, *tape, depth);
    boost::json::error_code error;
    const std::size_t used = parser.write_some(false, text.data(), text.size(), error);
    if (error || used != text.size()) {
        return std::nullopt;
    }
    return Document(std::move(tape));
}

Value Document::root() const {
    return {tape_.get(), 0};
}

Document::Document(std::unique_ptr<detail::Tape> tape) : tape_(std::move(tape)) {}
Document::Document(Document&&) noexcept = default;
Document& Document::operator=(Document&&) noexcept = default;
Document::~Document() = default;

} // namespace fernlow::json

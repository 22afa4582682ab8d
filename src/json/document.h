#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace fernlow::json {

class Object;

namespace detail {
struct Tape;
}

/// One value of a Document, and good for as long as the Document and the text it was parsed from.
/// Each reader gives the value if the JSON holds one of that type, and nothing otherwise.
class Value {
public:
    [[nodiscard]] bool isNull() const;
    [[nodiscard]] std::optional<std::string_view> text() const;
    /// true and false; the numbers 1 and 0 as well.
    [[nodiscard]] std::optional<bool> boolean() const;
    /// true and false only.
    [[nodiscard]] std::optional<bool> strictBoolean() const;
    /// Whole numbers within the range, however they are written: 2, 2.0 and 2e0 alike.
    [[nodiscard]] std::optional<std::int64_t> integer() const;
    [[nodiscard]] std::optional<std::uint64_t> unsignedInteger() const;
    /// Any number, as it stands in the document.
    [[nodiscard]] std::optional<std::string_view> numberLiteral() const;
    [[nodiscard]] std::optional<Object> object() const;
    /// Lists whose every element is an object, or a text; an empty list is both.
    [[nodiscard]] std::optional<std::vector<Object>> objects() const;
    [[nodiscard]] std::optional<std::vector<std::string_view>> texts() const;

private:
    friend class Document;
    friend class Object;
    Value(const detail::Tape* tape, std::uint32_t index) : tape_(tape), index_(index) {}

    template <class Element>
    std::optional<std::vector<Element>> listOf(std::optional<Element> (Value::*read)() const) const;

    const detail::Tape* tape_;
    std::uint32_t index_;
};

/// One member of an Object.
struct Member;

/// A JSON object and its typed readers: each takes a key, and gives a default where the key is
/// absent or holds a value of another type. Of two members with the same key the first counts.
class Object {
public:
    [[nodiscard]] std::optional<Value> find(std::string_view key) const;
    /// In the document's order.
    [[nodiscard]] std::vector<Member> members() const;

    [[nodiscard]] std::string_view text(std::string_view key) const;
    [[nodiscard]] std::optional<std::string_view> optionalText(std::string_view key) const;
    [[nodiscard]] std::int64_t integer(std::string_view key) const;
    [[nodiscard]] std::optional<std::int64_t> optionalInteger(std::string_view key) const;
    [[nodiscard]] std::optional<std::uint64_t> optionalUnsigned(std::string_view key) const;
    [[nodiscard]] bool boolean(std::string_view key) const;
    [[nodiscard]] std::optional<bool> optionalBoolean(std::string_view key) const;
    [[nodiscard]] std::optional<Object> object(std::string_view key) const;
    [[nodiscard]] std::vector<Object> objects(std::string_view key) const;
    [[nodiscard]] std::optional<std::vector<Object>> optionalObjects(std::string_view key) const;
    [[nodiscard]] std::optional<std::vector<std::string_view>>
    optionalTexts(std::string_view key) const;

private:
    friend class Value;
    explicit Object(Value value) : value_(value) {}

    template <class Type>
    std::optional<Type> read(std::string_view key,
                             std::optional<Type> (Value::*reader)() const) const;

    Value value_;
};

struct Member {
    std::string_view key;
    Value value;
};

/// A parsed JSON document: RFC 8259, UTF-8, nothing more lenient. Numbers are kept as they are
/// written, so none is out of range or loses digits before a reader asks for it.
class Document {
public:
    static constexpr std::size_t everything = std::numeric_limits<std::size_t>::max();

    /// Parses all of the text, which must outlive the result. Gives nothing when the text is not a
    /// JSON document, is nested deeper than 1,024 levels, is longer than 256 MiB, or holds half a
    /// surrogate pair or a number whose exponent alone doesn't fit in 32 bits.
    ///
    /// The whole text is always checked, but only values down to `depth` are kept: 1 keeps the
    /// members of the outermost object, 2 those of the objects in it, and so on. What lies deeper
    /// then reads as missing, and costs no memory.
    static std::optional<Document> parse(std::string_view text, std::size_t depth = everything);

    [[nodiscard]] Value root() const;

    Document(Document&& other) noexcept;
    Document& operator=(Document&& other) noexcept;
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    ~Document();

private:
    explicit Document(std::unique_ptr<detail::Tape> tape);

    std::unique_ptr<detail::Tape> tape_;
};

} // namespace fernlow::json

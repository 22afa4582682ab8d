#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace fernlow::json {

class Object;
class Members;

namespace detail {
struct Tape;
}

/// A list whose elements are all of type Item: Object or std::string_view. The iterator reads each
/// element from the document, so a list takes no memory for its elements.
template <class Item>
class List {
public:
    class Iterator {
    public:
        Item operator*() const;
        Iterator& operator++();
        bool operator==(const Iterator&) const = default;

    private:
        friend class List;
        Iterator(const detail::Tape* tape, std::uint32_t index) : tape_(tape), index_(index) {}

        const detail::Tape* tape_;
        std::uint32_t index_;
    };

    /// Creates an empty list.
    List() = default;

    [[nodiscard]] Iterator begin() const { return {tape_, begin_}; }
    [[nodiscard]] Iterator end() const { return {tape_, end_}; }
    [[nodiscard]] bool empty() const { return begin_ == end_; }
    /// Counts the elements, in linear time.
    [[nodiscard]] std::int64_t size() const;

private:
    friend class Value;
    List(const detail::Tape* tape, std::uint32_t begin, std::uint32_t end)
        : tape_(tape), begin_(begin), end_(end) {}

    const detail::Tape* tape_ = nullptr;
    std::uint32_t begin_ = 0;
    std::uint32_t end_ = 0;
};

/// One value of a Document. It is valid as long as both the Document and the parsed text exist.
/// Each reader returns the value if it has the reader's JSON type, and nothing otherwise.
class Value {
public:
    [[nodiscard]] bool isNull() const;
    [[nodiscard]] std::optional<std::string_view> text() const;
    /// Accepts true and false, and the numbers 1 and 0.
    [[nodiscard]] std::optional<bool> boolean() const;
    /// Accepts only true and false.
    [[nodiscard]] std::optional<bool> strictBoolean() const;
    /// Accepts whole numbers within the range of the type, however they are written: 2, 2.0 or 2e0.
    [[nodiscard]] std::optional<std::int64_t> integer() const;
    [[nodiscard]] std::optional<std::uint64_t> unsignedInteger() const;
    /// Returns any number as it is written in the document.
    [[nodiscard]] std::optional<std::string_view> numberLiteral() const;
    [[nodiscard]] std::optional<Object> object() const;
    /// Accepts an empty list, or a list of objects only. The next two functions accept an empty
    /// list, or a list of texts or numbers only.
    [[nodiscard]] std::optional<List<Object>> objects() const;
    [[nodiscard]] std::optional<List<std::string_view>> texts() const;
    [[nodiscard]] std::optional<List<std::string_view>> numberLiterals() const;

private:
    friend class Document;
    friend class Object;
    friend class Members;
    template <class Item>
    friend class List;
    Value(const detail::Tape* tape, std::uint32_t index) : tape_(tape), index_(index) {}

    template <class Item>
    std::optional<List<Item>> listOf(std::optional<Item> (Value::*read)() const) const;

    const detail::Tape* tape_;
    std::uint32_t index_;
};

/// A JSON object with typed readers. Each reader takes a key, and returns a default (0, false, an
/// empty text or list, or nothing) if the key is absent or its value has another type. If several
/// members have the same key, the first is read.
class Object {
public:
    [[nodiscard]] std::optional<Value> find(std::string_view key) const;
    [[nodiscard]] bool isEmpty() const;
    /// Returns the members in ascending order of their keys' code points, which is also the order
    /// of their bytes. Omits a member whose key an earlier member has.
    [[nodiscard]] Members sortedMembers() const;

    [[nodiscard]] std::string_view text(std::string_view key) const;
    [[nodiscard]] std::optional<std::string_view> optionalText(std::string_view key) const;
    [[nodiscard]] std::int64_t integer(std::string_view key) const;
    [[nodiscard]] std::optional<std::int64_t> optionalInteger(std::string_view key) const;
    [[nodiscard]] std::optional<std::uint64_t> optionalUnsigned(std::string_view key) const;
    [[nodiscard]] bool boolean(std::string_view key) const;
    [[nodiscard]] std::optional<bool> optionalBoolean(std::string_view key) const;
    [[nodiscard]] std::optional<Object> object(std::string_view key) const;
    [[nodiscard]] List<Object> objects(std::string_view key) const;
    [[nodiscard]] std::optional<List<Object>> optionalObjects(std::string_view key) const;
    [[nodiscard]] std::optional<List<std::string_view>> optionalTexts(std::string_view key) const;

private:
    friend class Value;
    friend class List<Object>;
    explicit Object(Value value) : value_(value) {}

    template <class Type>
    std::optional<Type> read(std::string_view key,
                             std::optional<Type> (Value::*reader)() const) const;

    Value value_;
};

/// One member of an Object.
struct Member {
    std::string_view key;
    Value value;
};

/// The members of an Object in sorted order. Stores only their indices in the document, because an
/// object can have millions of members.
class Members {
public:
    class Iterator {
    public:
        Member operator*() const;
        Iterator& operator++() {
            ++index_;
            return *this;
        }
        bool operator==(const Iterator&) const = default;

    private:
        friend class Members;
        Iterator(const detail::Tape* tape, const std::uint32_t* index)
            : tape_(tape), index_(index) {}

        const detail::Tape* tape_;
        const std::uint32_t* index_;
    };

    [[nodiscard]] Iterator begin() const { return {tape_, indices_.data()}; }
    [[nodiscard]] Iterator end() const { return {tape_, indices_.data() + indices_.size()}; }

private:
    friend class Object;
    Members(const detail::Tape* tape, std::vector<std::uint32_t> indices)
        : tape_(tape), indices_(std::move(indices)) {}

    const detail::Tape* tape_;
    std::vector<std::uint32_t> indices_;
};

/// A parsed JSON document, strictly RFC 8259 in UTF-8. It stores numbers as they are written, so a
/// number loses no digits and cannot be out of range before it is read.
class Document {
public:
    /// Parses the whole text, which must outlive the result. Returns nothing if the text is not a
    /// JSON document, is nested deeper than 1,024 levels, is longer than 256 MiB, or contains half
    /// a surrogate pair or a number whose exponent does not fit in 32 bits.
    ///
    /// With `keys`, the whole text is still validated, but the result keeps only members with these
    /// keys, and so takes hardly any memory. It keeps them in the outermost object and in the
    /// objects that it directly contains; if several have the same key, it keeps the first. All
    /// other members are missing, and the kept lists and texts read as null.
    static std::optional<Document> parse(std::string_view text,
                                         std::span<const std::string_view> keys = {});

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

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

/// A list whose every element is an Item: an Object or a std::string_view. The elements are read
/// from the document as one goes, so that however many there are, no memory is needed for them.
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

    /// An empty one.
    List() = default;

    [[nodiscard]] Iterator begin() const { return {tape_, begin_}; }
    [[nodiscard]] Iterator end() const { return {tape_, end_}; }
    [[nodiscard]] bool empty() const { return begin_ == end_; }
    /// Goes through all of them to count them.
    [[nodiscard]] std::int64_t size() const;

private:
    friend class Value;
    List(const detail::Tape* tape, std::uint32_t begin, std::uint32_t end)
        : tape_(tape), begin_(begin), end_(end) {}

    const detail::Tape* tape_ = nullptr;
    std::uint32_t begin_ = 0;
    std::uint32_t end_ = 0;
};

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
    /// Lists whose every element is an object, a text, or a number as it stands in the document; an
    /// empty list is all of them.
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

/// A JSON object and its typed readers: each takes a key, and gives a default where the key is
/// absent or holds a value of another type. Of two members with the same key the first counts.
class Object {
public:
    [[nodiscard]] std::optional<Value> find(std::string_view key) const;
    [[nodiscard]] bool isEmpty() const;
    /// Each key once, in ascending order of code points (which is that of their bytes).
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

/// Members of an Object in an order of their own. Held are only their places, because there may be
/// many and a place is small.
class Members {
public:
    class Iterator {
    public:
        Member operator*() const;
        Iterator& operator++() {
            ++place_;
            return *this;
        }
        bool operator==(const Iterator&) const = default;

    private:
        friend class Members;
        Iterator(const detail::Tape* tape, const std::uint32_t* place)
            : tape_(tape), place_(place) {}

        const detail::Tape* tape_;
        const std::uint32_t* place_;
    };

    [[nodiscard]] Iterator begin() const { return {tape_, places_.data()}; }
    [[nodiscard]] Iterator end() const { return {tape_, places_.data() + places_.size()}; }

private:
    friend class Object;
    Members(const detail::Tape* tape, std::vector<std::uint32_t> places)
        : tape_(tape), places_(std::move(places)) {}

    const detail::Tape* tape_;
    std::vector<std::uint32_t> places_;
};

/// A parsed JSON document: RFC 8259, UTF-8, nothing more lenient. Numbers are kept as they are
/// written, so none is out of range or loses digits before a reader asks for it.
class Document {
public:
    /// Parses all of the text, which must outlive the result. Gives nothing when the text is not a
    /// JSON document, is nested deeper than 1,024 levels, is longer than 256 MiB, or holds half a
    /// surrogate pair or a number whose exponent alone doesn't fit in 32 bits.
    ///
    /// With `keys` the whole text is checked all the same, but hardly any memory is needed: kept
    /// are only the members with these keys, of the outermost object and of the objects right in
    /// it, and of those with the same key the first. All else reads as missing, and so do the
    /// lists and texts among them.
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

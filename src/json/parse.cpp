#include "json/boost_json.h"
#include "json/document.h"
#include "json/member_filter.h"
#include "json/tape.h"

#include <boost/json/basic_parser_impl.hpp>
#include <boost/system/error_code.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace fernlow::json {

using detail::Kind;
using detail::Node;
using detail::Tape;

namespace {

/// Selected members are kept in the outermost object and in the objects that it directly contains.
constexpr std::size_t maxSelectedDepth = 2;

/// Appends nodes to a tape.
class TapeBuilder {
public:
    explicit TapeBuilder(Tape& tape) : tape_(tape) {}

    void add(Kind kind, std::size_t size = 0, std::size_t position = 0) {
        Node node{kind, 0, static_cast<std::uint32_t>(position)};
        node.size = static_cast<std::uint32_t>(size) & detail::maxSize;
        tape_.nodes.push_back(node);
    }

    void openContainer(Kind kind) {
        openContainers_.push_back(nextIndex());
        add(kind);
    }

    void closeContainer() {
        tape_.nodes[openContainers_.back()].position = nextIndex();
        openContainers_.pop_back();
    }

    void addNumber(std::string_view literal) {
        add(Kind::number, literal.size(), sourceOffset(literal));
    }

    /// Adds a decoded part of a text.
    void addTextPart(std::string_view part) { tape_.unescaped.append(part); }

    /// Adds a text or key whose last part and whole size are given. Only a text that contains
    /// escapes has several parts or a part outside the source.
    void addText(std::string_view last, std::size_t size) {
        const std::size_t offset = sourceOffset(last);
        if (size == last.size() && offset < tape_.source.size()) {
            add(Kind::text, size, offset);
            return;
        }
        addTextPart(last);
        add(Kind::unescapedText, size, tape_.unescaped.view().size() - size);
    }

    /// Returns whether a selected member with this key may be added here: the object is not too
    /// deep, and has no member with the same key.
    [[nodiscard]] bool acceptsMember(std::string_view key) const {
        return openContainers_.size() <= maxSelectedDepth &&
               tape_.find(key, openContainers_.back() + 1, nextIndex()) == nextIndex();
    }

private:
    [[nodiscard]] std::uint32_t nextIndex() const {
        return static_cast<std::uint32_t>(tape_.nodes.size());
    }

    /// Returns the offset of the part in the source, or a number beyond the source's size if the
    /// part is not in the source. Subtracts integers, because the difference of pointers into
    /// different arrays is undefined.
    [[nodiscard]] std::size_t sourceOffset(std::string_view part) const {
        return reinterpret_cast<std::uintptr_t>(part.data()) -
               reinterpret_cast<std::uintptr_t>(tape_.source.data());
    }

    Tape& tape_;
    std::vector<std::uint32_t> openContainers_;
};

/// Receives the parser's events, and adds the values that the filter keeps to the tape. Ignores the
/// numbers that the parser has converted: its doubles are not always the nearest, and a literal
/// loses nothing.
class EventHandler {
public:
    // The parser requires these limits. The limit of the whole document makes them unreachable.
    static constexpr std::size_t max_object_size = detail::maxSize;
    static constexpr std::size_t max_array_size = detail::maxSize;
    static constexpr std::size_t max_key_size = detail::maxSize;
    static constexpr std::size_t max_string_size = detail::maxSize;

    EventHandler(Tape& tape, std::span<const std::string_view> keys)
        : builder_(tape), filter_(keys) {}

    using Error = boost::system::error_code;
    using Text = boost::json::string_view;

    static bool on_document_begin(Error& /*error*/) { return true; }
    static bool on_document_end(Error& /*error*/) { return true; }
    bool on_object_begin(Error& /*error*/) {
        if (filter_.keepsValue()) {
            builder_.openContainer(Kind::object);
        } else {
            filter_.enterSkippedContainer();
        }
        return true;
    }
    bool on_object_end(std::size_t /*size*/, Error& /*error*/) { return endContainer(); }
    bool on_array_begin(Error& /*error*/) {
        if (filter_.keepsAllValues()) {
            builder_.openContainer(Kind::list);
        } else {
            addValue(Kind::null);
            filter_.enterSkippedContainer();
        }
        return true;
    }
    bool on_array_end(std::size_t /*size*/, Error& /*error*/) { return endContainer(); }
    bool on_key_part(Text part, std::size_t size, Error& /*error*/) {
        if (filter_.keepsAllValues()) {
            builder_.addTextPart(view(part));
        } else if (!filter_.isInSkippedContainer()) {
            filter_.addKeyPart(view(part), size);
        }
        return true;
    }
    bool on_key(Text last, std::size_t size, Error& /*error*/) {
        if (filter_.keepsAllValues()) {
            builder_.addText(view(last), size);
        } else if (!filter_.isInSkippedContainer()) {
            selectMember(view(last), size);
        }
        return true;
    }
    bool on_string_part(Text part, std::size_t /*size*/, Error& /*error*/) {
        if (filter_.keepsAllValues()) {
            builder_.addTextPart(view(part));
        }
        return true;
    }
    bool on_string(Text last, std::size_t size, Error& /*error*/) {
        if (filter_.keepsAllValues()) {
            builder_.addText(view(last), size);
            return true;
        }
        return addValue(Kind::null);
    }
    static bool on_number_part(Text /*part*/, Error& /*error*/) { return true; }
    bool on_int64(std::int64_t /*value*/, Text literal, Error& /*error*/) {
        return addNumber(literal);
    }
    bool on_uint64(std::uint64_t /*value*/, Text literal, Error& /*error*/) {
        return addNumber(literal);
    }
    bool on_double(double /*value*/, Text literal, Error& /*error*/) { return addNumber(literal); }
    bool on_bool(bool value, Error& /*error*/) { return addValue(value ? Kind::yes : Kind::no); }
    bool on_null(Error& /*error*/) { return addValue(Kind::null); }
    static bool on_comment_part(Text /*part*/, Error& /*error*/) { return true; }
    static bool on_comment(Text /*last*/, Error& /*error*/) { return true; }

private:
    /// Older versions of Boost have no conversion.
    static std::string_view view(Text text) { return {text.data(), text.size()}; }

    bool endContainer() {
        if (filter_.isInSkippedContainer()) {
            filter_.leaveSkippedContainer();
        } else {
            builder_.closeContainer();
        }
        return true;
    }

    bool addValue(Kind kind) {
        if (filter_.keepsValue()) {
            builder_.add(kind);
        }
        return true;
    }

    bool addNumber(Text literal) {
        if (filter_.keepsValue()) {
            builder_.addNumber(view(literal));
        }
        return true;
    }

    /// Keeps the member whose key ends here if the key is selected, and is the first such key.
    ///
    /// Not inlined: nearly all keys are in skipped containers, and inlining makes them slower.
    [[gnu::noinline]] void selectMember(std::string_view last, std::size_t size) {
        filter_.addKeyPart(last, size);
        const auto key = filter_.endKey(size);
        const bool keeps = key && builder_.acceptsMember(*key);
        filter_.setKeepsValue(keeps);
        if (keeps) {
            // A key without escapes is one part of the source, and is not copied.
            builder_.addText(last.size() == size ? last : *key, size);
        }
    }

    TapeBuilder builder_;
    detail::MemberFilter filter_;
};

} // namespace

std::optional<Document> Document::parse(std::string_view text,
                                        std::span<const std::string_view> keys) {
    if (text.size() > detail::maxSize) {
        return std::nullopt;
    }
    auto tape = std::make_unique<Tape>();
    tape->source = text;
    if (keys.empty()) {
        // A node takes at least two bytes of JSON, except for brackets that a faulty document does
        // not close. Reserved memory that is never written costs nothing.
        tape->nodes.reserve(std::min(text.size(), text.size() / 2 + detail::maxDepth));
    }

    boost::json::parse_options options;
    options.max_depth = detail::maxDepth;
    boost::json::basic_parser<EventHandler> parser(options, *tape, keys);
    boost::system::error_code error;
    const std::size_t used = parser.write_some(false, text.data(), text.size(), error);
    if (error || used != text.size()) {
        return std::nullopt;
    }
    return Document(std::move(tape));
}

} // namespace fernlow::json

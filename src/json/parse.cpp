#include "json/document.h"
#include "json/tape.h"

#include <boost/json/basic_parser_impl.hpp>
#include <boost/system/error_code.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace fernlow::json {

using detail::Kind;
using detail::Node;
using detail::Tape;

namespace {

/// Takes the parser's events and lays out the tape. The parser's own conversions of numbers are
/// ignored: its decimals are not always the nearest, and the literal loses nothing.
class TapeBuilder {
public:
    // Limits the parser asks its handler for; the document's own limit is below them all.
    static constexpr std::size_t max_object_size = detail::largestSize;
    static constexpr std::size_t max_array_size = detail::largestSize;
    static constexpr std::size_t max_key_size = detail::largestSize;
    static constexpr std::size_t max_string_size = detail::largestSize;

    TapeBuilder(Tape& tape, std::size_t depth) : tape_(tape), keptDepth_(depth) {}

    using Error = boost::system::error_code;
    using Text = boost::json::string_view;

    static bool on_document_begin(Error& /*error*/) { return true; }
    static bool on_document_end(Error& /*error*/) { return true; }
    bool on_object_begin(Error& /*error*/) { return open(Kind::object); }
    bool on_object_end(std::size_t size, Error& /*error*/) { return close(size); }
    bool on_array_begin(Error& /*error*/) { return open(Kind::list); }
    bool on_array_end(std::size_t size, Error& /*error*/) { return close(size); }
    bool on_key_part(Text part, std::size_t /*size*/, Error& /*error*/) { return addPart(part); }
    bool on_key(Text last, std::size_t size, Error& /*error*/) { return addText(last, size); }
    bool on_string_part(Text part, std::size_t /*size*/, Error& /*error*/) { return addPart(part); }
    bool on_string(Text last, std::size_t size, Error& /*error*/) { return addText(last, size); }
    static bool on_number_part(Text /*part*/, Error& /*error*/) { return true; }
    bool on_int64(std::int64_t /*value*/, Text literal, Error& /*error*/) {
        return addNumber(literal);
    }
    bool on_uint64(std::uint64_t /*value*/, Text literal, Error& /*error*/) {
        return addNumber(literal);
    }
    bool on_double(double /*value*/, Text literal, Error& /*error*/) { return addNumber(literal); }
    bool on_bool(bool value, Error& /*error*/) { return add(value ? Kind::yes : Kind::no, 0, 0); }
    bool on_null(Error& /*error*/) { return add(Kind::null, 0, 0); }
    static bool on_comment_part(Text /*part*/, Error& /*error*/) { return true; }
    static bool on_comment(Text /*last*/, Error& /*error*/) { return true; }

private:
    [[nodiscard]] bool keeps() const { return open_.size() <= keptDepth_; }

    bool add(Kind kind, std::size_t size, std::size_t place) {
        if (keeps()) {
            Node node{kind, 0, static_cast<std::uint32_t>(place)};
            node.size = static_cast<std::uint32_t>(size) & detail::largestSize;
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
            node.size = static_cast<std::uint32_t>(keptElements ? size : 0) & detail::largestSize;
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

} // namespace

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
    boost::json::basic_parser<TapeBuilder> parser(options, *tape, depth);
    boost::system::error_code error;
    const std::size_t used = parser.write_some(false, text.data(), text.size(), error);
    if (error || used != text.size()) {
        return std::nullopt;
    }
    return Document(std::move(tape));
}

} // namespace fernlow::json

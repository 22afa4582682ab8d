#include "json/document.h"
#include "json/tape.h"

#include <boost/json/basic_parser_impl.hpp>
#include <boost/system/error_code.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fernlow::json {

using detail::Kind;
using detail::Node;
using detail::Tape;

namespace {

/// How deep members are looked for by their keys.
constexpr std::size_t selectedDepth = 2;

/// Takes the parser's events and lays out the tape. The parser's own conversions of numbers are
/// ignored: its decimals are not always the nearest, and the literal loses nothing.
class TapeBuilder {
public:
    // Limits the parser asks its handler for; the document's own limit is below them all.
    static constexpr std::size_t max_object_size = detail::largestSize;
    static constexpr std::size_t max_array_size = detail::largestSize;
    static constexpr std::size_t max_key_size = detail::largestSize;
    static constexpr std::size_t max_string_size = detail::largestSize;

    TapeBuilder(Tape& tape, std::span<const std::string_view> keys)
        : tape_(tape), keys_(keys), selects_(!keys.empty()) {
        for (const std::string_view key : keys) {
            longestKey_ = std::max(longestKey_, key.size());
        }
    }

    using Error = boost::system::error_code;
    using Text = boost::json::string_view;

    static bool on_document_begin(Error& /*error*/) { return true; }
    static bool on_document_end(Error& /*error*/) { return true; }
    bool on_object_begin(Error& /*error*/) { return open(Kind::object); }
    bool on_object_end(std::size_t /*size*/, Error& /*error*/) { return close(); }
    bool on_array_begin(Error& /*error*/) { return selects_ ? skipList() : open(Kind::list); }
    bool on_array_end(std::size_t /*size*/, Error& /*error*/) { return close(); }
    bool on_key_part(Text part, std::size_t size, Error& /*error*/) {
        return skipped_ > 0 || (selects_ ? addKeyPart(part, size) : addPart(part));
    }
    bool on_key(Text last, std::size_t size, Error& /*error*/) {
        return skipped_ > 0 || (selects_ ? selectMember(last, size) : addText(last, size));
    }
    bool on_string_part(Text part, std::size_t /*size*/, Error& /*error*/) {
        return selects_ || addPart(part);
    }
    bool on_string(Text last, std::size_t size, Error& /*error*/) {
        return selects_ ? add(Kind::null, 0, 0) : addText(last, size);
    }
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
    bool add(Kind kind, std::size_t size, std::size_t place) {
        if (keeps_) {
            Node node{kind, 0, static_cast<std::uint32_t>(place)};
            node.size = static_cast<std::uint32_t>(size) & detail::largestSize;
            tape_.nodes.push_back(node);
        }
        return true;
    }

    bool open(Kind kind) {
        if (!keeps_) {
            ++skipped_;
            return true;
        }
        open_.push_back(static_cast<std::uint32_t>(tape_.nodes.size()));
        return add(kind, 0, 0);
    }

    bool close() {
        if (skipped_ > 0) {
            --skipped_;
            return true;
        }
        tape_.nodes[open_.back()].place = static_cast<std::uint32_t>(tape_.nodes.size());
        open_.pop_back();
        return true;
    }

    bool addNumber(Text literal) { return add(Kind::number, literal.size(), offset(literal)); }

    /// A text arrives in parts only when it has escapes; the last part may be empty.
    bool addPart(Text part) {
        tape_.unescaped.append({part.data(), part.size()});
        return true;
    }

    bool addText(Text last, std::size_t size) {
        if (size == last.size() && isInSource(last)) {
            return add(Kind::text, size, offset(last));
        }
        addPart(last);
        return add(Kind::unescapedText, size, tape_.unescaped.view().size() - size);
    }

    bool skipList() {
        add(Kind::null, 0, 0);
        keeps_ = false;
        return open(Kind::list);
    }

    /// What is longer than every key that is looked for is not remembered.
    bool addKeyPart(Text part, std::size_t sizeSoFar) {
        if (sizeSoFar <= longestKey_) {
            key_.append(part.data(), part.size());
        }
        return true;
    }

    /// Settles whether the member whose key ends here is kept.
    bool selectMember(Text last, std::size_t size) {
        addKeyPart(last, size);
        const auto key = std::find(keys_.begin(), keys_.end(), key_);
        const auto end = static_cast<std::uint32_t>(tape_.nodes.size());
        keeps_ = key != keys_.end() && key->size() == size && open_.size() <= selectedDepth &&
                 tape_.find(*key, open_.back() + 1, end) == end;
        key_.clear();
        if (keeps_) {
            addPart({key->data(), key->size()});
            add(Kind::unescapedText, size, tape_.unescaped.view().size() - size);
        }
        return true;
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
    /// The containers around the place that is being read, without those that are skipped.
    std::vector<std::uint32_t> open_;
    /// How many containers around that place are skipped.
    std::size_t skipped_ = 0;
    /// Whether the next value is kept.
    bool keeps_ = true;

    std::span<const std::string_view> keys_;
    /// Whether only members with these keys are kept.
    bool selects_;
    std::size_t longestKey_ = 0;
    /// As much of the key being read as matters.
    std::string key_;
};

} // namespace

std::optional<Document> Document::parse(std::string_view text,
                                        std::span<const std::string_view> keys) {
    if (text.size() > detail::largestSize) {
        return std::nullopt;
    }
    auto tape = std::make_unique<detail::Tape>();
    tape->source = text;
    if (keys.empty()) {
        // Each node takes two bytes of JSON or more, but for the brackets still open where a faulty
        // document ends: enough room at once, and only what is filled is ever touched.
        tape->nodes.reserve(text.size() / 2 + detail::deepestNesting);
    }

    boost::json::parse_options options;
    options.max_depth = detail::deepestNesting;
    boost::json::basic_parser<TapeBuilder> parser(options, *tape, keys);
    boost::system::error_code error;
    const std::size_t used = parser.write_some(false, text.data(), text.size(), error);
    if (error || used != text.size()) {
        return std::nullopt;
    }
    return Document(std::move(tape));
}

} // namespace fernlow::json

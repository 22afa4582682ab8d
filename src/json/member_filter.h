#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace fernlow::json::detail {

/// Decides which values of a document are kept: all values, or only members with certain keys.
///
/// In the second case the filter also tracks where the parser is. While the parser is inside a
/// container that is not kept, the filter counts the nested containers and ignores all keys.
class MemberFilter {
public:
    /// Keeps only members with these keys, which must outlive the filter; keeps all values if there
    /// are no keys.
    explicit MemberFilter(std::span<const std::string_view> keys) : keys_(keys) {
        for (const std::string_view key : keys) {
            maxKeySize_ = std::max(maxKeySize_, key.size());
        }
    }

    [[nodiscard]] bool keepsAllValues() const { return keys_.empty(); }

    /// Returns whether the value that begins here is kept.
    [[nodiscard]] bool keepsValue() const { return keepsValue_; }
    void setKeepsValue(bool keeps) { keepsValue_ = keeps; }

    [[nodiscard]] bool isInSkippedContainer() const { return skippedDepth_ > 0; }
    void enterSkippedContainer() {
        keepsValue_ = false;
        ++skippedDepth_;
    }
    void leaveSkippedContainer() { --skippedDepth_; }

    /// Adds a part of the current key. Ignores the parts of a key that is longer than all selected
    /// keys, so that a hostile key takes no memory. `size` is the size of the key so far.
    void addKeyPart(std::string_view part, std::size_t size) {
        if (size <= maxKeySize_) {
            key_.append(part);
        }
    }

    /// Ends the current key, whose whole size is given. Returns the key if it is selected.
    std::optional<std::string_view> endKey(std::size_t size) {
        const auto found = std::find(keys_.begin(), keys_.end(), key_);
        key_.clear();
        if (found == keys_.end() || found->size() != size) {
            return std::nullopt;
        }
        return *found;
    }

private:
    std::span<const std::string_view> keys_;
    std::size_t maxKeySize_ = 0;
    /// The current key, as far as it has been read.
    std::string key_;
    bool keepsValue_ = true;
    /// The number of open containers that are not kept.
    std::size_t skippedDepth_ = 0;
};

} // namespace fernlow::json::detail

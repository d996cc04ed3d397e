// Sorting by byte keys that are stored contiguously.
//
//   sql::KeyStore keys;
//   sql::appendOrderKey(left, jet::ColumnType::Text, true, keys.bytes());  // once a row
//   keys.finishKey();
//   for (const std::size_t place : keys.sorted(std::nullopt)) use(keys.key(place));
//
// One thread at a time.
#pragma once

#include "engine/sql/values/comparison.h"

#include <optional>

namespace sql {

/// Belongs to one thread.
class KeyStore {
public:
    /// The buffer; append the next key to it.
    OrderKey& bytes() { return bytes_; }

    void finishKey() { ends_.push_back(bytes_.size()); }

    /// Discards what was appended since the last key.
    void dropKey() { bytes_.resize(ends_.back()); }

    std::size_t size() const { return ends_.size() - 1; }

    jet::Bytes key(std::size_t place) const {
        return {bytes_.data() + ends_[place], ends_[place + 1] - ends_[place]};
    }

    /// The indexes of the keys in sorted order, stable. With `top`, only the first `top` and those
    /// whose key equals the last one's.
    std::vector<std::size_t> sorted(std::optional<std::uint64_t> top) const;

private:
    OrderKey bytes_;
    std::vector<std::size_t> ends_{0};  ///< key k stands from ends_[k] to ends_[k + 1]
};

}  // namespace sql

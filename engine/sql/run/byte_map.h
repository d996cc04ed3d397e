// A bounded map from byte strings to numbers.
//
//   const std::uint32_t* known = map.find(bytes);
//   if (known == nullptr) map.insert(bytes, decide(bytes));
//
// Holds some ten thousand strings; when it is full, more are ignored. Belongs to one thread.
#pragma once

#include "engine/jet/format/types.h"

#include <vector>

namespace sql {

class ByteMap {
public:
    ByteMap();

    /// Null if there is no entry. The pointer is valid until the next insert.
    const std::uint32_t* find(jet::Bytes bytes) const;

    /// Requires: find(bytes) is null.
    void insert(jet::Bytes bytes, std::uint32_t value);

    std::size_t size() const { return size_; }

    /// Whether an insert was ignored.
    bool full() const { return full_; }

private:
    struct Slot {
        std::uint64_t hash = 0;
        std::uint32_t offset = 0;
        std::uint32_t length = 0;
        std::uint32_t value = 0;
        bool used = false;
    };

    std::size_t place(jet::Bytes bytes, std::uint64_t hash) const;
    void grow();

    std::vector<Slot> slots_;  ///< a power of two, at most half of them used
    std::vector<std::uint8_t> bytes_;
    std::size_t size_ = 0;
    bool full_ = false;
};

}  // namespace sql

// Remembers a number for each of the first some ten thousand byte strings that it is told.
//
//   const std::uint32_t* known = map.find(bytes);
//   if (known == nullptr) map.insert(bytes, decide(bytes));
//
// Bounded in memory: what comes when it is full is not remembered. Belongs to one thread.
#pragma once

#include "engine/jet/format/types.h"

#include <vector>

namespace sql {

class ByteMap {
public:
    ByteMap();

    /// Null if the bytes are not remembered. The pointer holds until the next insert.
    const std::uint32_t* find(jet::Bytes bytes) const;

    /// Requires: find(bytes) is null.
    void insert(jet::Bytes bytes, std::uint32_t value);

    std::size_t size() const { return size_; }

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
};

}  // namespace sql

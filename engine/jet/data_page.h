// Data pages: rows packed at the end of the page behind a table of slots.
//
//   offset  size  meaning
//   0       1     1
//   2       2     free bytes
//   4       4     owner: page of the table's definition, "LVAL" on long-value pages, 0 on map pages
//   12      2     number of slots
//   14      2 x n slot words: bits 0-12 offset of the row's first byte, 0x4000 pointer to a record
//                 that moved, 0x8000 a record that moved here, both: deleted
#pragma once

#include "engine/jet/bytes.h"
#include "engine/jet/page_cache.h"

#include <optional>

namespace jet {

inline constexpr std::uint32_t kLongValueOwner = 0x4C41564C;  ///< "LVAL"

class DataPage {
public:
    /// Requires: a whole page. Checks its type byte and the number of its slots. Throws
    /// Error{Damaged}.
    DataPage(Bytes page, PageNumber number);

    PageNumber number() const { return number_; }
    std::uint32_t owner() const { return load<std::uint32_t>(page_, 4); }
    unsigned slotCount() const { return slotCount_; }

    struct Slot {
        Bytes bytes;
        bool pointer = false;  ///< the first 4 bytes name the place of the record
        bool moved = false;    ///< reached through a pointer only
        bool deleted = false;
    };

    /// Nothing if the slot does not exist or its offsets contradict each other.
    std::optional<Slot> slot(unsigned index) const;

private:
    std::size_t endOf(unsigned index) const;

    Bytes page_;
    PageNumber number_;
    unsigned slotCount_;
};

/// Follows the pointer of a record that moved to the record itself, which is marked as moved and
/// stands on a page of the same owner.
/// Returns its bytes, which hold until the next use of `pages`. Throws Error{Damaged}.
Bytes followPointer(PageReader& pages, Bytes pointer, std::uint32_t owner);

}  // namespace jet

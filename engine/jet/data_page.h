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

    /// The bytes of a row that stands in its slot with no mark on it, as nearly all do; none for
    /// every other slot: slot() tells those apart.
    Bytes plainRow(unsigned index) const {
        if (index >= slotCount_) return {};
        const std::size_t begin = load<std::uint16_t>(page_, kSlotTable + 2 * index);
        const std::size_t end = endOf(index);
        const std::size_t endAbove = index == 0 ? kPageSize : endOf(index - 1);
        const bool plain = begin <= kOffsetMask && begin >= kSlotTable + 2 * slotCount_ &&
                           begin <= end && end <= kPageSize && end <= endAbove;
        return plain ? Bytes{page_.data() + begin, end - begin} : Bytes{};
    }

private:
    static constexpr std::size_t kSlotTable = 14;
    static constexpr std::uint16_t kOffsetMask = 0x1FFF;
    static constexpr std::uint16_t kPointerFlag = 0x4000;
    static constexpr std::uint16_t kMovedFlag = 0x8000;

    std::size_t endOf(unsigned index) const;

    Bytes page_;
    PageNumber number_;
    unsigned slotCount_;
};

/// Follows the pointer of a record that moved to the record itself, which is marked as moved and
/// stands on a page of the same owner.
/// Returns its bytes, which hold until the next use of `pages`. Throws Error{Damaged}.
Bytes followPointer(PageReader& pages, Bytes pointer, std::uint32_t owner);

/// Rows lie packed from the page's end downwards: each ends where the one before it begins.
inline std::size_t DataPage::endOf(unsigned index) const {
    if (index == 0) return kPageSize;
    return load<std::uint16_t>(page_, kSlotTable + 2 * (index - 1)) & kOffsetMask;
}

inline std::optional<DataPage::Slot> DataPage::slot(unsigned index) const {
    if (index >= slotCount_) return std::nullopt;
    const auto word = load<std::uint16_t>(page_, kSlotTable + 2 * index);
    const std::size_t begin = word & kOffsetMask;
    const std::size_t end = endOf(index);

    Slot slot;
    slot.pointer = (word & kPointerFlag) != 0;
    slot.moved = (word & kMovedFlag) != 0;
    slot.deleted = slot.pointer && slot.moved;
    if (slot.deleted) return slot;
    const std::size_t firstByte = kSlotTable + 2 * slotCount_;
    if (begin < firstByte || begin > end || end > kPageSize) return std::nullopt;
    /// A wrong offset spoils two rows: its own and the one below, which ends there.
    const std::size_t endAbove = index == 0 ? kPageSize : endOf(index - 1);
    if (end > endAbove && endAbove >= firstByte) return std::nullopt;
    slot.bytes = page_.subspan(begin, end - begin);
    return slot;
}

}  // namespace jet

// The rows of a data page, by slot. The layout is in format/data_page.h.
//
//   const jet::DataPage rows{pages.page(number), number};
//   if (const auto slot = rows.slot(3); slot && !slot->deleted) use(slot->bytes);
//
// A view that is valid as long as the bytes of the page; any thread may read it.
#pragma once

#include "engine/jet/bytes.h"
#include "engine/jet/format/data_page.h"
#include "engine/jet/page_cache.h"

#include <optional>

namespace jet {

class DataPage {
public:
    /// Requires: a whole page. Checks its type byte and the number of its slots. Throws
    /// Error{Damaged}.
    DataPage(Bytes page, PageNumber number);

    /// Likewise, where the page's own number of slots is damaged: as many slots are taken as make
    /// sense.
    static DataPage withSlotsThatMakeSense(Bytes page, PageNumber number);

    /// Whether the rows of a page may begin behind as many slots as it says. Requires: a whole page.
    static bool hasPossibleSlotCount(Bytes page);

    PageNumber number() const { return number_; }
    std::uint32_t owner() const { return load(page_, format::data_page::kOwner); }
    unsigned slotCount() const { return slotCount_; }

    struct Slot {
        Bytes bytes;
        bool pointer = false;  ///< the first 4 bytes are the row id of the record
        bool moved = false;    ///< reached through a pointer only
        bool deleted = false;
    };

    /// Nothing if the slot does not exist or its offsets contradict each other.
    std::optional<Slot> slot(unsigned index) const;

    /// The bytes of a row whatever the flags of its slot are, and though the page may count fewer
    /// slots; empty if its offsets contradict each other. For callers who know how long the row is.
    Bytes bytesWhateverTheSlotSays(unsigned index) const;

    /// The bytes of a row whose slot has no flag, as nearly all have none; empty for every other
    /// slot: slot() tells those apart.
    Bytes plainRow(unsigned index) const {
        if (index >= slotCount_) return {};
        const std::size_t begin = load(page_, format::data_page::slot(index));
        const std::size_t end = endOf(index);
        const std::size_t endAbove = index == 0 ? kPageSize : endOf(index - 1);
        const bool plain = begin <= format::data_page::kOffsetMask && begin >= slotsEnd() &&
                           begin <= end && end <= kPageSize && end <= endAbove;
        return plain ? Bytes{page_.data() + begin, end - begin} : Bytes{};
    }

private:
    DataPage(Bytes page, PageNumber number, unsigned slotCount);

    std::size_t slotsEnd() const { return format::data_page::slotsEnd(slotCount_); }
    std::size_t endOf(unsigned index) const;
    bool endsInOrder(unsigned index, std::size_t begin, std::size_t end) const;

    Bytes page_;
    PageNumber number_;
    unsigned slotCount_;
};

/// Follows the pointer of a record that moved to the record itself, which is marked as moved and
/// is on a page of the same owner.
/// Returns its bytes, which hold until the next use of `pages`. Throws Error{Damaged}.
Bytes followPointer(PageReader& pages, Bytes pointer, std::uint32_t owner);

/// Rows lie packed from the page's end downwards: each ends where the one before it begins.
inline std::size_t DataPage::endOf(unsigned index) const {
    if (index == 0) return kPageSize;
    return load(page_, format::data_page::slot(index - 1)) & format::data_page::kOffsetMask;
}

/// A wrong offset spoils two rows: its own and the one below, which ends there. Where two offsets
/// are out of order, the lower row is kept only if the upper offset alone must be wrong.
inline bool DataPage::endsInOrder(unsigned index, std::size_t begin, std::size_t end) const {
    if (index == 0) return true;
    const std::size_t endAbove = endOf(index - 1);
    if (end <= endAbove || endAbove < slotsEnd()) return true;
    return index > 1 && begin > endAbove && end <= endOf(index - 2);
}

inline std::optional<DataPage::Slot> DataPage::slot(unsigned index) const {
    if (index >= slotCount_) return std::nullopt;
    const auto word = load(page_, format::data_page::slot(index));
    const std::size_t begin = word & format::data_page::kOffsetMask;
    const std::size_t end = endOf(index);

    Slot slot;
    slot.pointer = (word & format::data_page::kPointer) != 0;
    slot.moved = (word & format::data_page::kMoved) != 0;
    slot.deleted = slot.pointer && slot.moved;
    if (slot.deleted) return slot;
    if (begin < slotsEnd() || begin > end || end > kPageSize) return std::nullopt;
    if (!endsInOrder(index, begin, end)) return std::nullopt;
    slot.bytes = page_.subspan(begin, end - begin);
    return slot;
}

}  // namespace jet

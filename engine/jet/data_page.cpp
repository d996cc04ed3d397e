#include "engine/jet/data_page.h"

#include "engine/jet/format/page.h"

namespace jet {

namespace layout = format::data_page;

DataPage::DataPage(Bytes page, PageNumber number)
    : DataPage{page, number, load(page, layout::kSlotCount)} {}

DataPage::DataPage(Bytes page, PageNumber number, unsigned slotCount)
    : page_{page}, number_{number}, slotCount_{slotCount} {
    if (load(page, format::page::kType) != format::PageType::Data) {
        throwDamaged(number, "a data page was expected");
    }
    if (slotCount_ > layout::kMaxSlots) {
        throwDamaged(number, "there are more slots than a page can have");
    }
}

bool DataPage::hasPossibleSlotCount(Bytes page) {
    const std::size_t count = load(page, layout::kSlotCount);
    if (count == 0 || count > layout::kMaxSlots) return count == 0;
    const std::size_t lowest = load(page, layout::slot(count - 1)) & layout::kOffsetMask;
    return lowest >= layout::slotsEnd(count);
}

DataPage DataPage::withSlotsThatMakeSense(Bytes page, PageNumber number) {
    unsigned count = 0;
    std::size_t end = kPageSize;
    while (count < layout::kMaxSlots && layout::slotsEnd(count + 1) <= end) {
        const std::size_t begin = load(page, layout::slot(count)) & layout::kOffsetMask;
        if (begin > end || begin < layout::slotsEnd(count + 1)) break;
        end = begin;
        ++count;
    }
    return {page, number, count};
}

Bytes DataPage::bytesWhateverTheSlotSays(unsigned index) const {
    if (index >= layout::kMaxSlots) return {};
    const std::size_t begin = load(page_, layout::slot(index)) & layout::kOffsetMask;
    const std::size_t end = endOf(index);
    if (begin < layout::slotsEnd(index + 1) || begin > end || end > kPageSize) return {};
    return page_.subspan(begin, end - begin);
}

/// Writers keep a moved record one hop away; more is tolerated, a circle is not.
Bytes followPointer(PageReader& pages, Bytes pointer, std::uint32_t owner) {
    PageNumber from = kNoPage;
    for (int hop = 0; hop < layout::kMaxHops; ++hop) {
        if (pointer.size() < layout::kTarget.end()) {
            throwDamaged(from, "a row pointer is cut short");
        }
        const RowId target = load(pointer, layout::kTarget);
        from = target.page();
        const DataPage page{pages.page(target.page()), target.page()};
        const auto slot = page.slot(target.slot());
        if (page.owner() != owner || !slot || slot->deleted) {
            throwDamaged(from, "a row pointer leads to no row of its table");
        }
        if (slot->moved) return slot->bytes;
        if (!slot->pointer) throwDamaged(from, "a row pointer leads to a row of its own");
        pointer = slot->bytes;
    }
    throwDamaged(from, "a chain of row pointers does not end");
}

}  // namespace jet

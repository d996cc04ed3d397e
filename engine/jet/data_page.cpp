#include "engine/jet/data_page.h"

namespace jet {
namespace {

constexpr std::uint8_t kDataPageType = 1;
constexpr std::size_t kSlotTable = 14;
constexpr std::uint16_t kOffsetMask = 0x1FFF;
constexpr std::uint16_t kPointerFlag = 0x4000;
constexpr std::uint16_t kMovedFlag = 0x8000;
constexpr std::size_t kPointerSize = 4;

/// Writers keep a moved record one hop away; more is tolerated, a circle is not.
constexpr int kMostHops = 16;

}  // namespace

DataPage::DataPage(Bytes page, PageNumber number)
    : page_{page}, number_{number}, slotCount_{load<std::uint16_t>(page, 12)} {
    if (page[0] != kDataPageType) throwDamaged(number, "a data page was expected");
    if (kSlotTable + 2 * slotCount_ > kPageSize) {
        throwDamaged(number, "the slot table is longer than the page");
    }
}

std::optional<DataPage::Slot> DataPage::slot(unsigned index) const {
    if (index >= slotCount_) return std::nullopt;
    const auto word = load<std::uint16_t>(page_, kSlotTable + 2 * index);
    const std::size_t begin = word & kOffsetMask;
    const std::size_t end =
        index == 0 ? kPageSize
                   : load<std::uint16_t>(page_, kSlotTable + 2 * (index - 1)) & kOffsetMask;

    Slot slot;
    slot.pointer = (word & kPointerFlag) != 0;
    slot.moved = (word & kMovedFlag) != 0;
    slot.deleted = slot.pointer && slot.moved;
    if (slot.deleted) return slot;
    if (begin < kSlotTable + 2 * slotCount_ || begin > end || end > kPageSize) return std::nullopt;
    slot.bytes = page_.subspan(begin, end - begin);
    return slot;
}

Bytes followPointer(PageReader& pages, Bytes pointer, std::uint32_t owner) {
    PageNumber from = kNoPage;
    for (int hop = 0; hop < kMostHops; ++hop) {
        if (pointer.size() < kPointerSize) throwDamaged(from, "a row pointer is cut short");
        const auto target = RowId::fromPacked(load<std::uint32_t>(pointer, 0));
        from = target.page();
        const DataPage page{pages.page(target.page()), target.page()};
        const auto slot = page.slot(target.slot());
        if (page.owner() != owner || !slot || slot->deleted) {
            throwDamaged(from, "a row pointer leads to no row of its table");
        }
        if (!slot->pointer) return slot->bytes;
        pointer = slot->bytes;
    }
    throwDamaged(from, "a chain of row pointers does not end");
}

}  // namespace jet

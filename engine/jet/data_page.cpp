#include "engine/jet/data_page.h"

namespace jet {
namespace {

constexpr std::uint8_t kDataPageType = 1;
constexpr std::size_t kSlotTable = 14;
constexpr std::uint16_t kOffsetMask = 0x1FFF;
constexpr std::uint16_t kPointerFlag = 0x4000;
constexpr std::uint16_t kMovedFlag = 0x8000;
constexpr std::size_t kPointerSize = 4;

/// A row's identity has one byte for the slot.
constexpr unsigned kMostSlots = 256;
static_assert(kSlotTable + 2 * kMostSlots <= kPageSize);

/// Writers keep a moved record one hop away; more is tolerated, a circle is not.
constexpr int kMostHops = 16;

}  // namespace

DataPage::DataPage(Bytes page, PageNumber number)
    : page_{page}, number_{number}, slotCount_{load<std::uint16_t>(page, 12)} {
    if (page[0] != kDataPageType) throwDamaged(number, "a data page was expected");
    if (slotCount_ > kMostSlots) throwDamaged(number, "there are more slots than a page can have");
}

/// Rows lie packed from the page's end downwards: each ends where the one before it begins.
std::size_t DataPage::endOf(unsigned index) const {
    if (index == 0) return kPageSize;
    return load<std::uint16_t>(page_, kSlotTable + 2 * (index - 1)) & kOffsetMask;
}

std::optional<DataPage::Slot> DataPage::slot(unsigned index) const {
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
    // A wrong offset spoils two rows: its own and the one below, which ends there.
    const std::size_t endAbove = index == 0 ? kPageSize : endOf(index - 1);
    if (end > endAbove && endAbove >= firstByte) return std::nullopt;
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
        if (slot->moved) return slot->bytes;
        if (!slot->pointer) throwDamaged(from, "a row pointer leads to a row of its own");
        pointer = slot->bytes;
    }
    throwDamaged(from, "a chain of row pointers does not end");
}

}  // namespace jet

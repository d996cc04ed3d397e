#include "engine/jet/data_page.h"

namespace jet {
namespace {

constexpr std::uint8_t kDataPageType = 1;
constexpr std::size_t kPointerSize = 4;

/// A row's identity has one byte for the slot.
constexpr unsigned kMaxSlots = 256;

/// Writers keep a moved record one hop away; more is tolerated, a circle is not.
constexpr int kMaxHops = 16;

}  // namespace

DataPage::DataPage(Bytes page, PageNumber number)
    : page_{page}, number_{number}, slotCount_{load<std::uint16_t>(page, 12)} {
    if (page[0] != kDataPageType) throwDamaged(number, "a data page was expected");
    if (slotCount_ > kMaxSlots) throwDamaged(number, "there are more slots than a page can have");
}

Bytes followPointer(PageReader& pages, Bytes pointer, std::uint32_t owner) {
    PageNumber from = kNoPage;
    for (int hop = 0; hop < kMaxHops; ++hop) {
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

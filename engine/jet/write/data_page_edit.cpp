#include "engine/jet/write/data_page_edit.h"

#include <algorithm>
#include <cstring>

namespace jet {
namespace {

constexpr std::size_t kSlotTable = 14;
constexpr std::uint16_t kOffsetMask = 0x1FFF;

void store16(Page& page, std::size_t offset, std::size_t value) {
    const auto stored = static_cast<std::uint16_t>(value);
    std::memcpy(page.data() + offset, &stored, sizeof stored);
}

std::size_t startOfRows(const Page& page) {
    const unsigned count = slotCount(page);
    if (count == 0) return kPageSize;
    return load<std::uint16_t>(page, kSlotTable + 2 * (count - 1)) & kOffsetMask;
}

void noteFreeBytes(Page& page) { store16(page, 2, freeBytes(page)); }

}  // namespace

void formatDataPage(Page& page, std::uint32_t owner) {
    page.fill(0);
    page[0] = 1;
    page[1] = 1;
    std::memcpy(page.data() + 4, &owner, sizeof owner);
    noteFreeBytes(page);
}

unsigned slotCount(const Page& page) { return load<std::uint16_t>(page, 12); }

std::size_t freeBytes(const Page& page) {
    const std::size_t start = startOfRows(page);
    const std::size_t slotsEnd = kSlotTable + 2 * slotCount(page);
    return start > kPageSize || start < slotsEnd ? 0 : start - slotsEnd;
}

bool isSound(const Page& page, PageNumber number) {
    const DataPage data{page, number};
    for (unsigned i = 0; i < data.slotCount(); ++i) {
        if (!data.slot(i)) return false;
    }
    return true;
}

bool hasRoom(const Page& page, std::size_t size) {
    return slotCount(page) < kMaxRows && freeBytes(page) >= size + 2;
}

std::optional<unsigned> appendRow(Page& page, Bytes row, std::uint16_t flags) {
    if (!hasRoom(page, row.size())) return std::nullopt;
    const unsigned slot = slotCount(page);
    const std::size_t start = startOfRows(page) - row.size();
    std::copy(row.begin(), row.end(), page.begin() + static_cast<std::ptrdiff_t>(start));
    store16(page, kSlotTable + 2 * slot, start | flags);
    store16(page, 12, slot + 1);
    noteFreeBytes(page);
    return slot;
}

std::span<std::uint8_t> rowBytes(Page& page, PageNumber number, unsigned slot) {
    const auto found = DataPage{page, number}.slot(slot);
    if (!found || found->deleted) throwDamaged(number, "a row is missing");
    return std::span{page}.subspan(static_cast<std::size_t>(found->bytes.data() - page.data()),
                                   found->bytes.size());
}

PageLayout::PageLayout(const Page& page, PageNumber number) : number_{number}, copy_{page} {
    const DataPage source{copy_, number};
    rows.reserve(source.slotCount());
    for (unsigned i = 0; i < source.slotCount(); ++i) {
        const auto slot = source.slot(i);
        if (!slot) throwDamaged(number, "a row lies outside its page");
        rows.push_back({static_cast<std::uint16_t>((slot->pointer ? kPointerSlot : 0) |
                                                   (slot->moved ? kMovedSlot : 0)),
                        slot->bytes});
    }
}

std::size_t PageLayout::size() const {
    std::size_t size = 2 * rows.size();
    for (const Row& row : rows) size += row.bytes.size();
    return size;
}

void PageLayout::writeTo(Page& page) const {
    if (!fits()) throwDamaged(number_, "rows overlap on a page");
    std::size_t start = kPageSize;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const Row& row = rows[i];
        start -= row.bytes.size();
        std::copy(row.bytes.begin(), row.bytes.end(),
                  page.begin() + static_cast<std::ptrdiff_t>(start));
        store16(page, kSlotTable + 2 * i, start | row.flags);
    }
    store16(page, 12, rows.size());
    const std::size_t slotsEnd = kSlotTable + 2 * rows.size();
    std::fill(page.begin() + static_cast<std::ptrdiff_t>(slotsEnd),
              page.begin() + static_cast<std::ptrdiff_t>(start), std::uint8_t{0});
    noteFreeBytes(page);
}

}  // namespace jet

#include "engine/jet/write/data_page_edit.h"

#include "engine/jet/format/page.h"

#include <algorithm>

namespace jet {
namespace {

namespace layout = format::data_page;

std::uint16_t slotWord(std::size_t offset, std::uint16_t flags) {
    return static_cast<std::uint16_t>(offset | flags);
}

std::size_t startOfRows(const Page& page) {
    const unsigned count = slotCount(page);
    if (count == 0) return kPageSize;
    return load(page, layout::slot(count - 1)) & layout::kOffsetMask;
}

void noteFreeBytes(Page& page) {
    store(page, format::page::kFreeBytes, static_cast<std::uint16_t>(freeBytes(page)));
}

}  // namespace

void formatDataPage(Page& page, std::uint32_t owner) {
    page.fill(0);
    store(page, format::page::kType, format::PageType::Data);
    store(page, format::page::kMark, format::page::kInUse);
    store(page, layout::kOwner, owner);
    noteFreeBytes(page);
}

unsigned slotCount(const Page& page) { return load(page, layout::kSlotCount); }

std::size_t freeBytes(const Page& page) {
    const std::size_t start = startOfRows(page);
    const std::size_t slotsEnd = layout::slotsEnd(slotCount(page));
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
    return slotCount(page) < layout::kMaxSlotsWritten &&
           freeBytes(page) >= size + layout::kSlotSize;
}

std::optional<unsigned> appendRow(Page& page, Bytes row, std::uint16_t flags) {
    if (!hasRoom(page, row.size())) return std::nullopt;
    const unsigned slot = slotCount(page);
    const std::size_t start = startOfRows(page) - row.size();
    std::copy(row.begin(), row.end(), page.begin() + static_cast<std::ptrdiff_t>(start));
    store(page, layout::slot(slot), slotWord(start, flags));
    store(page, layout::kSlotCount, static_cast<std::uint16_t>(slot + 1));
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
        rows.push_back({static_cast<std::uint16_t>((slot->pointer ? layout::kPointer : 0) |
                                                   (slot->moved ? layout::kMoved : 0)),
                        slot->bytes});
    }
}

std::size_t PageLayout::size() const {
    std::size_t size = layout::kSlotSize * rows.size();
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
        store(page, layout::slot(i), slotWord(start, row.flags));
    }
    store(page, layout::kSlotCount, static_cast<std::uint16_t>(rows.size()));
    const std::size_t slotsEnd = layout::slotsEnd(rows.size());
    std::fill(page.begin() + static_cast<std::ptrdiff_t>(slotsEnd),
              page.begin() + static_cast<std::ptrdiff_t>(start), std::uint8_t{0});
    noteFreeBytes(page);
}

}  // namespace jet

#include "engine/jet/write/page_allocator.h"

#include "engine/jet/bytes.h"
#include "engine/jet/usage_map.h"
#include "engine/jet/write/data_page_edit.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace jet {
namespace {

constexpr PageNumber kMapPage{1};
constexpr unsigned kMapRow = 0;

constexpr std::uint8_t kInline = 0;
constexpr std::uint8_t kReference = 1;
constexpr std::size_t kInlineHead = 5;
constexpr std::size_t kReferenceRow = 69;

/// An inline map grows in these steps, as the original engine's do.
constexpr std::size_t kGrowth = 4;

void setBit(std::span<std::uint8_t> bitmap, std::size_t bit, bool value) {
    const auto mask = static_cast<std::uint8_t>(1u << (bit % 8));
    std::uint8_t& byte = bitmap[bit / 8];
    byte = static_cast<std::uint8_t>(value ? byte | mask : byte & ~mask);
}

void store32(std::span<std::uint8_t> bytes, std::size_t offset, std::uint32_t value) {
    std::memcpy(bytes.subspan(offset, sizeof value).data(), &value, sizeof value);
}

}  // namespace

void requireOwned(Pager& pager, PageNumber number, PageKind kind, std::uint32_t owner) {
    const PagePtr page = pager.page(number);
    const std::uint8_t type = (*page)[0];
    const bool right =
        kind == PageKind::Index ? type == 3 || type == 4 : type == static_cast<std::uint8_t>(kind);
    const bool hasOwner = kind == PageKind::Data || kind == PageKind::Index;
    if (!right || (hasOwner && load<std::uint32_t>(*page, 4) != owner)) {
        throwDamaged(number, "a page does not belong to the one whose map lists it");
    }
}

PageNumber PageAllocator::allocate() {
    requireMap();
    if (!released_.empty()) {
        const PageNumber number = released_.back();
        released_.pop_back();
        pager_.edit(number)->fill(0);
        mark(number, false);
        return number;
    }
    const PageNumber number = pager_.append();
    mark(number, false);
    return number;
}

void PageAllocator::release(PageNumber number) {
    requireMap();
    pager_.edit(number)->fill(0);
    mark(number, true);
    released_.push_back(number);
}

/// A map that gives the catalog away is a ruin, which would be handed on as if it were sound.
void PageAllocator::requireMap() {
    if (std::exchange(mapChecked_, true)) return;
    for (const PageNumber number : {kMapPage, PageNumber{2}}) {
        if (isFree(number)) throwDamaged(kMapPage, "the map of free pages is wrong");
    }
}

bool PageAllocator::isFree(PageNumber number) const {
    const PagePtr page = pager_.page(kMapPage);
    const auto slot = DataPage{*page, kMapPage}.slot(kMapRow);
    if (!slot || slot->deleted || slot->bytes.size() < kInlineHead || slot->bytes[0] > kReference) {
        throwDamaged(kMapPage, "the map of free pages is of an unknown kind");
    }
    const Bytes row = slot->bytes;
    const auto bitOf = [](Bytes bitmap, std::size_t bit) {
        return bit / 8 >= bitmap.size() || (bitmap[bit / 8] >> (bit % 8) & 1) != 0;
    };
    const auto first = load<std::uint32_t>(row, 1);
    if (row[0] == kInline) {
        return raw(number) >= first && bitOf(row.subspan(kInlineHead), raw(number) - first);
    }
    // The pages asked about are in reach of the first bitmap.
    if (PageNumber{first} == kNoPage) return true;
    const PagePtr bitmap = pager_.page(PageNumber{first});
    if ((*bitmap)[0] != kBitmapPageType) {
        throwDamaged(PageNumber{first}, "a bitmap of free pages was expected");
    }
    return bitOf(Bytes{*bitmap}.subspan(kBitmapOffset), raw(number));
}

void PageAllocator::mark(PageNumber number, bool free) {
    const PageEdit page = pager_.edit(kMapPage);
    const std::span row = rowBytes(*page, kMapPage, kMapRow);
    if (row.size() < kInlineHead) throwDamaged(kMapPage, "the map of free pages is cut short");
    if (row[0] == kReference) return markReferenced(number, free);
    if (row[0] != kInline) throwDamaged(kMapPage, "the map of free pages is of an unknown kind");
    if (markInline(number, free)) return;
    convertToReferences();
    markReferenced(number, free);
}

/// False if the page lies behind what an inline map can be made to hold.
bool PageAllocator::markInline(PageNumber number, bool free) {
    const PageEdit page = pager_.edit(kMapPage);
    std::span row = rowBytes(*page, kMapPage, kMapRow);
    const auto first = load<std::uint32_t>(row, 1);
    if (raw(number) < first) {
        // In use, and no bit to say otherwise.
        if (!free) return true;
        throwDamaged(kMapPage, "the map of free pages begins behind a page that it should hold");
    }
    const std::size_t bit = raw(number) - first;
    const std::size_t needed = kInlineHead + bit / 8 + 1;
    if (needed > row.size()) {
        PageLayout layout{*page, kMapPage};
        std::vector<std::uint8_t> longer{row.begin(), row.end()};
        while (longer.size() < needed) longer.insert(longer.end(), kGrowth, 0xFF);
        layout.rows[kMapRow].bytes = longer;
        if (!layout.fits()) return false;
        layout.writeTo(*page);
        row = rowBytes(*page, kMapPage, kMapRow);
    }
    setBit(row.subspan(kInlineHead), bit, free);
    return true;
}

void PageAllocator::markReferenced(PageNumber number, bool free) {
    const std::size_t slot = raw(number) / kPagesPerBitmap;
    PageNumber bitmap = kNoPage;
    {
        const PageEdit page = pager_.edit(kMapPage);
        const std::span row = rowBytes(*page, kMapPage, kMapRow);
        const std::size_t at = 1 + 4 * slot;
        if (at + 4 > row.size()) throwDamaged(kMapPage, "the map of free pages is cut short");
        bitmap = PageNumber{load<std::uint32_t>(row, at)};
    }
    if (bitmap == kNoPage) bitmap = addBitmap(slot);
    const PageEdit page = pager_.edit(bitmap);
    if ((*page)[0] != kBitmapPageType) throwDamaged(bitmap, "a bitmap of free pages was expected");
    setBit(std::span{*page}.subspan(kBitmapOffset), raw(number) % kPagesPerBitmap, free);
}

/// A bitmap that is not there stands for free pages only.
PageNumber PageAllocator::addBitmap(std::size_t slot) {
    const PageNumber number = pager_.append();
    {
        const PageEdit bitmap = pager_.edit(number);
        bitmap->fill(0xFF);
        (*bitmap)[0] = kBitmapPageType;
        (*bitmap)[1] = 1;
        (*bitmap)[2] = 0;
        (*bitmap)[3] = 0;
        const PageEdit page = pager_.edit(kMapPage);
        store32(rowBytes(*page, kMapPage, kMapRow), 1 + 4 * slot, raw(number));
    }
    markReferenced(number, false);
    return number;
}

void PageAllocator::convertToReferences() {
    std::vector<std::uint8_t> old;
    {
        const PageEdit page = pager_.edit(kMapPage);
        const std::span row = rowBytes(*page, kMapPage, kMapRow);
        old.assign(row.begin(), row.end());
        std::vector<std::uint8_t> references(kReferenceRow, 0);
        references[0] = kReference;
        PageLayout layout{*page, kMapPage};
        layout.rows[kMapRow].bytes = references;
        layout.writeTo(*page);
    }
    const auto first = load<std::uint32_t>(old, 1);
    const std::size_t bits = (old.size() - kInlineHead) * 8;
    for (std::uint32_t number = 0; number < first; ++number) {
        markReferenced(PageNumber{number}, false);
    }
    for (std::size_t bit = 0; bit < bits; ++bit) {
        const bool free = (old[kInlineHead + bit / 8] >> (bit % 8) & 1) != 0;
        const auto number = static_cast<std::uint32_t>(first + bit);
        if (!free && number < kMaxFilePages) markReferenced(PageNumber{number}, false);
    }
}

}  // namespace jet

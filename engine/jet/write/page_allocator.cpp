#include "engine/jet/write/page_allocator.h"

#include "engine/jet/bytes.h"
#include "engine/jet/format/catalog.h"
#include "engine/jet/format/index_page.h"
#include "engine/jet/format/page.h"
#include "engine/jet/usage_map.h"
#include "engine/jet/write/data_page_edit.h"

#include <algorithm>
#include <utility>

namespace jet {
namespace {

namespace usage_map = format::usage_map;

constexpr PageNumber kMapPage = usage_map::kFreePages.page();
constexpr unsigned kMapRow = usage_map::kFreePages.slot();

void setBit(std::span<std::uint8_t> bitmap, std::size_t bit, bool value) {
    const auto mask = static_cast<std::uint8_t>(1u << (bit % 8));
    std::uint8_t& byte = bitmap[bit / 8];
    byte = static_cast<std::uint8_t>(value ? byte | mask : byte & ~mask);
}

bool isOf(const Page& page, PageKind kind, std::uint32_t owner) {
    switch (load(page, format::page::kType)) {
        case format::PageType::Data:
            return kind == PageKind::Data && load(page, format::data_page::kOwner) == owner;
        case format::PageType::Leaf:
        case format::PageType::Intermediate:
            return kind == PageKind::Index && load(page, format::index_page::kOwner) == owner;
        case format::PageType::Bitmap:
            return kind == PageKind::Bitmap;
        default:
            return false;
    }
}

void requireBitmap(const Page& page, PageNumber number) {
    if (load(page, format::page::kType) == format::PageType::Bitmap) return;
    throwDamaged(number, "a bitmap of free pages was expected");
}

}  // namespace

void requireOwned(Pager& pager, PageNumber number, PageKind kind, std::uint32_t owner) {
    if (isOf(*pager.page(number), kind, owner)) return;
    throwDamaged(number, "a page does not belong to the one whose map lists it");
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

/// A map that lists the catalog as free is too damaged to be updated as if it were sound.
void PageAllocator::requireMap() {
    if (std::exchange(mapChecked_, true)) return;
    for (const PageNumber number : {kMapPage, format::catalog::kObjects}) {
        if (isFree(number)) throwDamaged(kMapPage, "the map of free pages is wrong");
    }
}

bool PageAllocator::isFree(PageNumber number) const {
    const PagePtr page = pager_.page(kMapPage);
    const auto slot = DataPage{*page, kMapPage}.slot(kMapRow);
    if (!slot || slot->deleted || slot->bytes.size() < usage_map::kMinRowSize ||
        load(slot->bytes, usage_map::kKind) > usage_map::Kind::Reference) {
        throwDamaged(kMapPage, "the map of free pages is of an unknown kind");
    }
    const Bytes row = slot->bytes;
    const auto bitOf = [](Bytes bitmap, std::size_t bit) {
        return bit / 8 >= bitmap.size() || (bitmap[bit / 8] >> (bit % 8) & 1) != 0;
    };
    if (load(row, usage_map::kKind) == usage_map::Kind::Inline) {
        const std::uint32_t first = load(row, usage_map::kFirstPage);
        return raw(number) >= first && bitOf(row.subspan(usage_map::kBits), raw(number) - first);
    }
    // The pages asked about are in reach of the first bitmap.
    const PageNumber first = load(row, usage_map::reference(0));
    if (first == kNoPage) return true;
    const PagePtr bitmap = pager_.page(first);
    requireBitmap(*bitmap, first);
    return bitOf(Bytes{*bitmap}.subspan(usage_map::kBitmapBits), raw(number));
}

void PageAllocator::mark(PageNumber number, bool free) {
    const PageEdit page = pager_.edit(kMapPage);
    const std::span row = rowBytes(*page, kMapPage, kMapRow);
    if (row.size() < usage_map::kMinRowSize) {
        throwDamaged(kMapPage, "the map of free pages is cut short");
    }
    const usage_map::Kind kind = load(row, usage_map::kKind);
    if (kind == usage_map::Kind::Reference) return markReferenced(number, free);
    if (kind != usage_map::Kind::Inline) {
        throwDamaged(kMapPage, "the map of free pages is of an unknown kind");
    }
    if (markInline(number, free)) return;
    convertToReferences();
    markReferenced(number, free);
}

/// False if the page lies behind what an inline map can be made to hold.
bool PageAllocator::markInline(PageNumber number, bool free) {
    const PageEdit page = pager_.edit(kMapPage);
    std::span row = rowBytes(*page, kMapPage, kMapRow);
    const std::uint32_t first = load(row, usage_map::kFirstPage);
    if (raw(number) < first) {
        // In use, and no bit to say otherwise.
        if (!free) return true;
        throwDamaged(kMapPage, "the map of free pages begins behind a page that it should hold");
    }
    const std::size_t bit = raw(number) - first;
    const std::size_t needed = usage_map::kBits + bit / 8 + 1;
    if (needed > row.size()) {
        PageLayout layout{*page, kMapPage};
        std::vector<std::uint8_t> longer{row.begin(), row.end()};
        while (longer.size() < needed) {
            longer.insert(longer.end(), usage_map::kGrowth, 0xFF);
        }
        layout.rows[kMapRow].bytes = longer;
        if (!layout.fits()) return false;
        layout.writeTo(*page);
        row = rowBytes(*page, kMapPage, kMapRow);
    }
    setBit(row.subspan(usage_map::kBits), bit, free);
    return true;
}

void PageAllocator::markReferenced(PageNumber number, bool free) {
    const std::size_t slot = raw(number) / usage_map::kPagesPerBitmap;
    PageNumber bitmap = kNoPage;
    {
        const PageEdit page = pager_.edit(kMapPage);
        const std::span row = rowBytes(*page, kMapPage, kMapRow);
        if (slot >= usage_map::referenceCount(row.size())) {
            throwDamaged(kMapPage, "the map of free pages is cut short");
        }
        bitmap = load(row, usage_map::reference(slot));
    }
    if (bitmap == kNoPage) bitmap = addBitmap(slot);
    const PageEdit page = pager_.edit(bitmap);
    requireBitmap(*page, bitmap);
    setBit(std::span{*page}.subspan(usage_map::kBitmapBits),
           raw(number) % usage_map::kPagesPerBitmap, free);
}

/// A missing bitmap means that all its pages are free.
PageNumber PageAllocator::addBitmap(std::size_t slot) {
    const PageNumber number = pager_.append();
    {
        const PageEdit bitmap = pager_.edit(number);
        bitmap->fill(0xFF);
        store(*bitmap, format::page::kType, format::PageType::Bitmap);
        store(*bitmap, format::page::kMark, format::page::kInUse);
        store(*bitmap, format::page::kFreeBytes, 0);
        const PageEdit page = pager_.edit(kMapPage);
        store(rowBytes(*page, kMapPage, kMapRow), usage_map::reference(slot), number);
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
        std::vector<std::uint8_t> references(usage_map::kNewRowSize, 0);
        store(references, usage_map::kKind, usage_map::Kind::Reference);
        PageLayout layout{*page, kMapPage};
        layout.rows[kMapRow].bytes = references;
        layout.writeTo(*page);
    }
    const std::uint32_t first = load(old, usage_map::kFirstPage);
    const std::size_t bits = (old.size() - usage_map::kBits) * 8;
    for (std::uint32_t number = 0; number < first; ++number) {
        markReferenced(PageNumber{number}, false);
    }
    for (std::size_t bit = 0; bit < bits; ++bit) {
        const bool free = (old[usage_map::kBits + bit / 8] >> (bit % 8) & 1) != 0;
        const auto number = static_cast<std::uint32_t>(first + bit);
        if (!free && number < format::page::kMaxCount) markReferenced(PageNumber{number}, false);
    }
}

}  // namespace jet

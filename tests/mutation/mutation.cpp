#include "tests/mutation/mutation.h"

#include "engine/jet/bytes.h"
#include "engine/jet/format/data_page.h"
#include "engine/jet/format/page.h"
#include "engine/jet/format/table_definition.h"
#include "engine/jet/format/usage_map.h"

#include <algorithm>
#include <array>
#include <vector>

namespace mutation {

namespace {

using fixture::ByteVector;
using fixture::Random;
using jet::kPageSize;
using jet::load;
using jet::format::PageType;
namespace data_page = jet::format::data_page;
namespace usage_map = jet::format::usage_map;

std::size_t pagesOf(const ByteVector& file) { return file.size() / kPageSize; }

jet::Bytes pageAt(const ByteVector& file, std::size_t offset) {
    return jet::Bytes{file}.subspan(offset, kPageSize);
}

/// Where the pages of a type begin.
std::vector<std::size_t> pagesOfType(const ByteVector& file, PageType type) {
    std::vector<std::size_t> found;
    for (std::size_t page = 1; page < pagesOf(file); ++page) {
        if (load(pageAt(file, page * kPageSize), jet::format::page::kType) == type)
            found.push_back(page * kPageSize);
    }
    return found;
}

/// Data pages with rows in them, but not those of usage maps, which have no owner.
std::vector<std::size_t> pagesWithRows(const ByteVector& file) {
    std::vector<std::size_t> pages = pagesOfType(file, PageType::Data);
    std::erase_if(pages, [&](std::size_t page) {
        const std::uint32_t owner = load(pageAt(file, page), data_page::kOwner);
        return owner == usage_map::kOwner || owner == usage_map::kFreePagesOwner ||
               load(pageAt(file, page), data_page::kSlotCount) == 0;
    });
    return pages;
}

std::size_t pick(const std::vector<std::size_t>& places, Random& random) {
    return places[random.below(static_cast<std::uint32_t>(places.size()))];
}

std::size_t below(std::size_t bound, Random& random) {
    return random.below(static_cast<std::uint32_t>(bound));
}

/// Another value than was there.
void change(ByteVector& file, std::size_t offset, Random& random) {
    file[offset] = static_cast<std::uint8_t>(file[offset] ^ (1 + random.below(255)));
}

std::size_t anyPage(const ByteVector& file, Random& random) {
    return (1 + below(pagesOf(file) - 1, random)) * kPageSize;
}

/// The slot count, or one of the slots.
std::size_t slotByte(const ByteVector& file, Random& random) {
    const std::size_t page = pick(pagesWithRows(file), random);
    const std::size_t count = load(pageAt(file, page), data_page::kSlotCount);
    const std::size_t begin = data_page::kSlotCount.offset;
    return page + begin + below(data_page::slotsEnd(count) - begin, random);
}

void flipRowFlag(ByteVector& file, Random& random) {
    const std::size_t page = pick(pagesWithRows(file), random);
    const std::size_t slot = below(load(pageAt(file, page), data_page::kSlotCount), random);
    constexpr std::array<std::uint8_t, 3> kFlags{0x40, 0x80, 0xC0};
    file[page + data_page::kSlots + slot * data_page::kSlotSize + 1] ^= kFlags[random.below(3)];
}

/// A byte of the first page of a definition, before its own end.
std::size_t definitionByte(const ByteVector& file, Random& random) {
    namespace definition = jet::format::table_definition;
    const std::size_t page = pick(pagesOfType(file, PageType::Definition), random);
    const std::size_t length = load(pageAt(file, page), definition::kLength);
    return page + below(std::clamp<std::size_t>(length, 1, kPageSize), random);
}

/// The rows of the pages without an owner, and the pages of large maps.
std::size_t mapByte(const ByteVector& file, Random& random) {
    std::vector<std::size_t> pages = pagesOfType(file, PageType::Bitmap);
    for (const std::size_t page : pagesOfType(file, PageType::Data)) {
        const std::uint32_t owner = load(pageAt(file, page), data_page::kOwner);
        if (owner == usage_map::kOwner || owner == usage_map::kFreePagesOwner)
            pages.push_back(page);
    }
    const std::size_t page = pick(pages, random);
    if (load(pageAt(file, page), jet::format::page::kType) == PageType::Bitmap) {
        return page + usage_map::kBitmapBits + below(usage_map::kBitmapSize, random);
    }
    const std::size_t count = load(pageAt(file, page), data_page::kSlotCount);
    const std::size_t slot = below(std::max<std::size_t>(count, 1), random);
    const std::size_t row =
        load(pageAt(file, page), data_page::slot(slot)) & data_page::kOffsetMask;
    constexpr std::size_t kFirstBits = 32;  // the others are of pages that do not exist
    return page + std::min(row + below(usage_map::kBits + kFirstBits, random), kPageSize - 1);
}

void swapPages(ByteVector& file, Random& random) {
    const std::size_t a = anyPage(file, random);
    const std::size_t b = anyPage(file, random);
    std::swap_ranges(file.begin() + static_cast<std::ptrdiff_t>(a),
                     file.begin() + static_cast<std::ptrdiff_t>(a + kPageSize),
                     file.begin() + static_cast<std::ptrdiff_t>(b));
}

/// At 99, 90 or 50 percent, where a page ends or within it.
std::size_t cutLength(const ByteVector& file, Random& random) {
    constexpr std::array<std::size_t, 3> kPercent{99, 90, 50};
    const std::size_t length = file.size() * kPercent[random.below(3)] / 100;
    return random.oneIn(2) ? length : length / kPageSize * kPageSize;
}

}  // namespace

std::span<const Kind> allKinds() {
    static constexpr std::array kKinds{Kind::PageHead,     Kind::AnyByte,  Kind::PageZeroed,
                                       Kind::PagesSwapped, Kind::CutOff,   Kind::Definition,
                                       Kind::SlotTable,    Kind::RowFlags, Kind::UsageMap};
    return kKinds;
}

const char* nameOf(Kind kind) {
    constexpr std::array kNames{"page head",     "any byte",  "page zeroed",
                                "pages swapped", "cut off",   "definition",
                                "slot table",    "row flags", "usage map"};
    return kNames[static_cast<std::size_t>(kind)];
}

ByteVector mutate(Kind kind, ByteVector file, Random& random) {
    switch (kind) {
        case Kind::PageHead:
            change(file, anyPage(file, random) + random.below(16), random);
            break;
        case Kind::AnyByte:
            change(file, anyPage(file, random) + random.below(kPageSize), random);
            break;
        case Kind::PageZeroed:
            std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(anyPage(file, random)),
                        kPageSize, std::uint8_t{0});
            break;
        case Kind::PagesSwapped:
            swapPages(file, random);
            break;
        case Kind::CutOff:
            file.resize(cutLength(file, random));
            break;
        case Kind::Definition:
            change(file, definitionByte(file, random), random);
            break;
        case Kind::SlotTable:
            change(file, slotByte(file, random), random);
            break;
        case Kind::RowFlags:
            flipRowFlag(file, random);
            break;
        case Kind::UsageMap:
            change(file, mapByte(file, random), random);
            break;
    }
    return file;
}

}  // namespace mutation

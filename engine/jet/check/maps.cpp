#include "engine/jet/check/maps.h"

#include "engine/jet/bytes.h"
#include "engine/jet/check/pages.h"
#include "engine/jet/data_page.h"
#include "engine/jet/format/usage_map.h"

#include <algorithm>
#include <bit>

namespace jet::checking {
namespace {

namespace layout = format::usage_map;

/// The set bits of a map while it is read.
struct Bits {
    std::vector<PageNumber> pages;
    std::uint64_t outside = 0;  ///< bits for pages that the file does not have

    void add(const Context& context, Bytes bitmap, std::uint64_t firstPage) {
        for (std::size_t i = 0; i < bitmap.size(); ++i) {
            for (unsigned bits = bitmap[i]; bits != 0; bits &= bits - 1) {
                const auto bit = static_cast<unsigned>(std::countr_zero(bits));
                const std::uint64_t page = firstPage + i * 8 + bit;
                if (page == 0 || page >= context.pageCount) {
                    ++outside;
                } else {
                    pages.push_back(PageNumber{static_cast<std::uint32_t>(page)});
                }
            }
        }
    }
};

/// The bytes of a map's row. A page of maps is checked when its first map is read.
std::optional<std::vector<std::uint8_t>> takeRow(Context& context, PageReader& pages, RowId map) {
    const auto fail = [&](const char* message) {
        context.report.error(Rule::UsageMap, map, message);
        return std::nullopt;
    };
    if (!context.mapRows.insert(map.packed()).second) return fail("two maps share the row");
    const bool known =
        context.inFile(map.page()) && context.owners.of(map.page()).kind == OwnerKind::MapRows;
    const auto page = takePage(context, pages, map.page(), {OwnerKind::MapRows}, {PageType::Data});
    if (!page) return std::nullopt;
    if (!known) {
        checkDataPage(context, *page, map.page());
        checkPageOwner(context, *page, map.page(), layout::kOwner);
    }
    if (load(*page, format::data_page::kSlotCount) > format::data_page::kMaxSlots)
        return std::nullopt;
    const auto slot = DataPage{*page, map.page()}.slot(map.slot());
    if (!slot || slot->deleted) return fail("the row of a usage map does not exist");
    if (slot->pointer || slot->moved) return fail("the row of a usage map is marked as moved");
    if (slot->bytes.size() < layout::kMinRowSize) return fail("a usage map is too short");
    return std::vector<std::uint8_t>{slot->bytes.begin(), slot->bytes.end()};
}

/// Adds the bits behind each slot of a reference map; false if a bitmap page cannot be read.
bool addReferences(Context& context, PageReader& pages, Bytes row, PageNumber table, Bits& bits) {
    bool readable = true;
    for (std::size_t i = 0; i < layout::referenceCount(row.size()); ++i) {
        const PageNumber number = load(row, layout::reference(i));
        if (number == kNoPage) continue;
        const auto page =
            takePage(context, pages, number, {OwnerKind::Bitmap, table}, {PageType::Bitmap});
        if (!page) {
            readable = false;
            continue;
        }
        bits.add(context, page->subspan(layout::kBitmapBits),
                 std::uint64_t{i} * layout::kPagesPerBitmap);
    }
    return readable;
}

/// All pages of the file, those from `begin` up to `end` as the bits say, before as used, behind
/// as free: the map of free pages grows with the file, and what it does not reach is not in use.
void setFree(std::vector<bool>& free, Bytes bitmap, std::size_t begin) {
    for (std::size_t page = begin; page < free.size(); ++page) {
        const std::size_t bit = page - begin;
        const bool covered = bit / 8 < bitmap.size();
        free[page] = !covered || ((bitmap[bit / 8] >> (bit % 8)) & 1u) != 0;
    }
}

bool setFreeByReference(Context& context, PageReader& pages, Bytes row, std::vector<bool>& free) {
    bool readable = true;
    std::fill(free.begin(), free.end(), true);
    for (std::size_t i = 0; i < layout::referenceCount(row.size()); ++i) {
        const PageNumber number = load(row, layout::reference(i));
        const std::size_t first = i * layout::kPagesPerBitmap;
        if (number == kNoPage || first >= free.size()) continue;
        const auto page = takePage(context, pages, number, {OwnerKind::Bitmap}, {PageType::Bitmap});
        if (page) {
            setFree(free, page->subspan(layout::kBitmapBits), first);
        } else {
            readable = false;
        }
    }
    return readable;
}

}  // namespace

std::optional<std::vector<PageNumber>> readMap(Context& context, RowId map, PageNumber table,
                                               std::string_view role) {
    if (map.page() == kNoPage) return std::vector<PageNumber>{};
    PageReader pages = context.reader();
    const auto row = takeRow(context, pages, map);
    if (!row) return std::nullopt;
    Bits bits;
    bool readable = true;
    const layout::Kind kind = load(*row, layout::kKind);
    if (kind == layout::Kind::Inline) {
        bits.add(context, Bytes{*row}.subspan(layout::kBits), load(*row, layout::kFirstPage));
    } else if (kind == layout::Kind::Reference) {
        readable = addReferences(context, pages, *row, table, bits);
    } else {
        context.report.error(Rule::UsageMap, map, "the usage map is of an unknown kind");
        return std::nullopt;
    }
    if (bits.outside > 0) {
        context.report.error(Rule::UsageMap, map,
                             std::string{role} + " lists " + std::to_string(bits.outside) +
                                 " pages that the file does not have");
    }
    if (!readable) return std::nullopt;
    return std::move(bits.pages);
}

void checkFreeMap(Context& context, const std::vector<PageNumber>& owned,
                  const std::vector<PageNumber>& free, std::string_view role) {
    for (const PageNumber page : free) {
        if (std::binary_search(owned.begin(), owned.end(), page)) continue;
        context.report.error(Rule::FreeMap, page,
                             std::string{role} + " lists the page, but it has another owner");
    }
}

std::optional<std::vector<bool>> readFreePages(Context& context) {
    PageReader pages = context.reader();
    const PageNumber number = layout::kFreePages.page();
    const auto page = takePage(context, pages, number, {OwnerKind::FreePages}, {PageType::Data});
    if (!page) return std::nullopt;
    checkPageOwner(context, *page, number, layout::kFreePagesOwner);
    if (!checkDataPage(context, *page, number)) return std::nullopt;
    const auto slot = DataPage{*page, number}.slot(layout::kFreePages.slot());
    if (!slot || slot->bytes.size() < layout::kMinRowSize) {
        context.report.error(Rule::UsageMap, layout::kFreePages,
                             "the map of free pages is missing");
        return std::nullopt;
    }
    const std::vector<std::uint8_t> row{slot->bytes.begin(), slot->bytes.end()};
    std::vector<bool> free(context.pageCount);
    const layout::Kind kind = load(row, layout::kKind);
    if (kind == layout::Kind::Inline) {
        setFree(free, Bytes{row}.subspan(layout::kBits), load(row, layout::kFirstPage));
        return free;
    }
    if (kind == layout::Kind::Reference && setFreeByReference(context, pages, row, free))
        return free;
    if (kind > layout::Kind::Reference) {
        context.report.error(Rule::UsageMap, layout::kFreePages,
                             "the map of free pages is of an unknown kind");
    }
    return std::nullopt;
}

}  // namespace jet::checking

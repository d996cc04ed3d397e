#include "engine/jet/usage_map.h"

#include "engine/jet/data_page.h"
#include "engine/jet/format/page.h"

#include <bit>

namespace jet {
namespace {

namespace layout = format::usage_map;

void appendSetBits(Bytes bitmap, std::uint64_t firstPage, std::vector<PageNumber>& pages) {
    for (std::size_t i = 0; i < bitmap.size(); ++i) {
        for (unsigned bits = bitmap[i]; bits != 0; bits &= bits - 1) {
            const std::uint64_t page =
                firstPage + i * 8 + static_cast<unsigned>(std::countr_zero(bits));
            if (page >= format::page::kMaxCount) return;
            if (page != 0) pages.push_back(PageNumber{static_cast<std::uint32_t>(page)});
        }
    }
}

}  // namespace

std::vector<std::uint8_t> readUsageMapRow(PageReader& pages, RowId map) {
    const DataPage page{pages.page(map.page()), map.page()};
    const auto slot = page.slot(map.slot());
    if (!slot || slot->deleted || slot->bytes.size() < layout::kMinRowSize) {
        throwDamaged(map.page(), "a usage map is missing");
    }
    return {slot->bytes.begin(), slot->bytes.end()};
}

std::vector<PageNumber> readUsageMap(PageReader& pages, RowId map) {
    std::vector<PageNumber> set;
    if (map.page() == kNoPage) return set;
    const std::vector<std::uint8_t> row = readUsageMapRow(pages, map);
    const layout::Kind kind = load(row, layout::kKind);
    if (kind == layout::Kind::Inline) {
        appendSetBits(Bytes{row}.subspan(layout::kBits), load(row, layout::kFirstPage), set);
        return set;
    }
    if (kind != layout::Kind::Reference) {
        throwDamaged(map.page(), "a usage map is of an unknown kind");
    }
    for (std::size_t i = 0; i < layout::referenceCount(row.size()); ++i) {
        const PageNumber bitmap = load(row, layout::reference(i));
        const std::uint64_t first = std::uint64_t{i} * layout::kPagesPerBitmap;
        if (bitmap == kNoPage) continue;
        const Bytes page = pages.page(bitmap);
        if (load(page, format::page::kType) != format::PageType::Bitmap) {
            throwDamaged(bitmap, "a usage bitmap was expected");
        }
        appendSetBits(page.subspan(layout::kBitmapBits), first, set);
    }
    return set;
}

}  // namespace jet

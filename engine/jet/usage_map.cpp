#include "engine/jet/usage_map.h"

#include "engine/jet/data_page.h"

#include <bit>

namespace jet {
namespace {

constexpr std::uint8_t kInline = 0;
constexpr std::uint8_t kReference = 1;

void appendSetBits(Bytes bitmap, std::uint64_t firstPage, std::vector<PageNumber>& pages) {
    for (std::size_t i = 0; i < bitmap.size(); ++i) {
        for (unsigned bits = bitmap[i]; bits != 0; bits &= bits - 1) {
            const std::uint64_t page =
                firstPage + i * 8 + static_cast<unsigned>(std::countr_zero(bits));
            if (page >= kMaxFilePages) return;
            if (page != 0) pages.push_back(PageNumber{static_cast<std::uint32_t>(page)});
        }
    }
}

}  // namespace

std::vector<std::uint8_t> readUsageMapRow(PageReader& pages, RowId map) {
    const DataPage page{pages.page(map.page()), map.page()};
    const auto slot = page.slot(map.slot());
    if (!slot || slot->deleted || slot->bytes.size() < 5) {
        throwDamaged(map.page(), "a usage map is missing");
    }
    return {slot->bytes.begin(), slot->bytes.end()};
}

std::vector<PageNumber> readUsageMap(PageReader& pages, RowId map) {
    std::vector<PageNumber> set;
    if (map.page() == kNoPage) return set;
    const std::vector<std::uint8_t> row = readUsageMapRow(pages, map);
    if (row[0] == kInline) {
        appendSetBits(Bytes{row}.subspan(5), load<std::uint32_t>(row, 1), set);
        return set;
    }
    if (row[0] != kReference) throwDamaged(map.page(), "a usage map is of an unknown kind");
    for (std::size_t i = 0; 1 + 4 * (i + 1) <= row.size(); ++i) {
        const PageNumber bitmap{load<std::uint32_t>(row, 1 + 4 * i)};
        const std::uint64_t first = std::uint64_t{i} * kPagesPerBitmap;
        if (bitmap == kNoPage) continue;
        const Bytes page = pages.page(bitmap);
        if (page[0] != kBitmapPageType) throwDamaged(bitmap, "a usage bitmap was expected");
        appendSetBits(page.subspan(kBitmapOffset), first, set);
    }
    return set;
}

}  // namespace jet

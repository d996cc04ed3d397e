#include "engine/jet/write/usage_map_writer.h"

#include "engine/jet/bytes.h"
#include "engine/jet/format/page.h"
#include "engine/jet/write/data_page_edit.h"

#include <algorithm>
#include <bit>

namespace jet {
namespace {

namespace layout = format::usage_map;

constexpr std::size_t kWordBits = 64;

void setBit(std::span<std::uint8_t> bitmap, std::size_t bit) {
    bitmap[bit / 8] = static_cast<std::uint8_t>(bitmap[bit / 8] | 1u << (bit % 8));
}

std::vector<PageNumber> readMap(Pager& pager, RowId map) {
    if (map.page() == kNoPage) throwDamaged(kNoPage, "a usage map does not exist");
    PageCache cache{pager, 4};
    PageReader reader{pager, cache};
    return readUsageMap(reader, map);
}

}  // namespace

UsageMapWriter::UsageMapWriter(Pager& pager, RowId map) : pager_{pager}, map_{map} {
    for (const PageNumber number : readMap(pager, map)) set(number, true);
    changed_ = false;
}

bool UsageMapWriter::contains(PageNumber number) const {
    const std::size_t word = raw(number) / kWordBits;
    return word < words_.size() && (words_[word] >> (raw(number) % kWordBits) & 1) != 0;
}

void UsageMapWriter::set(PageNumber number, bool member) {
    if (contains(number) == member) return;
    const std::size_t word = raw(number) / kWordBits;
    if (word >= words_.size()) words_.resize(word + 1);
    words_[word] ^= std::uint64_t{1} << (raw(number) % kWordBits);
    changed_ = true;
}

void UsageMapWriter::clear() {
    words_.clear();
    changed_ = true;
}

std::vector<PageNumber> UsageMapWriter::pages() const {
    std::vector<PageNumber> pages;
    for (std::size_t i = 0; i < words_.size(); ++i) {
        for (std::uint64_t bits = words_[i]; bits != 0; bits &= bits - 1) {
            const auto bit = static_cast<std::size_t>(std::countr_zero(bits));
            pages.push_back(PageNumber{static_cast<std::uint32_t>(i * kWordBits + bit)});
        }
    }
    return pages;
}

PageNumber UsageMapWriter::lastBefore(std::uint32_t end) const {
    std::size_t word = std::min(words_.size(), (std::size_t{end} + kWordBits - 1) / kWordBits);
    while (word-- > 0) {
        std::uint64_t bits = words_[word];
        if (end < (word + 1) * kWordBits) bits &= (std::uint64_t{1} << (end % kWordBits)) - 1;
        if (bits == 0) continue;
        const auto bit = kWordBits - 1 - static_cast<std::size_t>(std::countl_zero(bits));
        return PageNumber{static_cast<std::uint32_t>(word * kWordBits + bit)};
    }
    return kNoPage;
}

/// In this order: the window that the map has, a window that begins elsewhere, references.
void UsageMapWriter::save(PageAllocator& allocator) {
    if (!changed_) return;
    {
        const PageEdit page = pager_.edit(map_.page());
        const std::span row = rowBytes(*page, map_.page(), map_.slot());
        if (load(row, layout::kKind) == layout::Kind::Inline) {
            const std::vector<PageNumber> set = pages();
            const std::size_t window = (row.size() - layout::kBits) * 8;
            const std::uint32_t first = load(row, layout::kFirstPage);
            const auto inWindow = [&](std::uint32_t start) {
                return set.empty() ||
                       (raw(set.front()) >= start && raw(set.back()) - start < window);
            };
            const std::uint32_t moved = set.empty() ? first : layout::windowOf(set.front());
            if (inWindow(first) || inWindow(moved)) {
                saveInline(row, inWindow(first) ? first : moved);
                changed_ = false;
                return;
            }
            std::ranges::fill(row, std::uint8_t{0});
            store(row, layout::kKind, layout::Kind::Reference);
        }
    }
    saveReferences(allocator);
    changed_ = false;
}

void UsageMapWriter::saveInline(std::span<std::uint8_t> row, std::uint32_t first) {
    std::fill(row.begin(), row.end(), std::uint8_t{0});
    store(row, layout::kKind, layout::Kind::Inline);
    store(row, layout::kFirstPage, first);
    for (const PageNumber number : pages()) {
        setBit(row.subspan(layout::kBits), raw(number) - first);
    }
}

void UsageMapWriter::saveReferences(PageAllocator& allocator) {
    const std::size_t slots =
        (words_.size() * kWordBits + layout::kPagesPerBitmap - 1) / layout::kPagesPerBitmap;
    std::vector<std::vector<std::uint8_t>> bitmaps(slots);
    for (const PageNumber number : pages()) {
        auto& bitmap = bitmaps[raw(number) / layout::kPagesPerBitmap];
        bitmap.resize(layout::kBitmapSize);
        setBit(bitmap, raw(number) % layout::kPagesPerBitmap);
    }
    const std::vector<PageNumber> existing = references();
    for (std::size_t i = 0; i < std::max(slots, existing.size()); ++i) {
        PageNumber number = i < existing.size() ? existing[i] : kNoPage;
        std::vector<std::uint8_t> bits = i < slots ? bitmaps[i] : std::vector<std::uint8_t>{};
        if (number == kNoPage && bits.empty()) continue;
        bits.resize(layout::kBitmapSize);
        if (number == kNoPage) {
            number = allocator.allocate();
            const PageEdit page = pager_.edit(map_.page());
            const std::span row = rowBytes(*page, map_.page(), map_.slot());
            if (i >= layout::referenceCount(row.size())) {
                throwDamaged(map_.page(), "a usage map is too short");
            }
            store(row, layout::reference(i), number);
        } else if (std::ranges::equal(
                       bits, std::span{*pager_.page(number)}.subspan(layout::kBitmapBits))) {
            continue;
        }
        const PageEdit page = pager_.edit(number);
        store(*page, format::page::kType, format::PageType::Bitmap);
        store(*page, format::page::kMark, format::page::kInUse);
        std::ranges::copy(bits, page->begin() + layout::kBitmapBits);
    }
}

/// The references as stored, kNoPage where there is none; empty for an inline map.
std::vector<PageNumber> UsageMapWriter::references() const {
    PageCache cache{pager_, 1};
    PageReader reader{pager_, cache};
    const std::vector<std::uint8_t> row = readUsageMapRow(reader, map_);
    std::vector<PageNumber> numbers;
    if (load(row, layout::kKind) != layout::Kind::Reference) return numbers;
    for (std::size_t i = 0; i < layout::referenceCount(row.size()); ++i) {
        numbers.push_back(load(row, layout::reference(i)));
    }
    return numbers;
}

std::vector<PageNumber> UsageMapWriter::bitmapPages() const {
    std::vector<PageNumber> numbers = references();
    std::erase(numbers, kNoPage);
    return numbers;
}

}  // namespace jet

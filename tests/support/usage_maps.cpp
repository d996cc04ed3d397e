#include "tests/support/usage_maps.h"

#include <algorithm>
#include <stdexcept>

namespace fixture {

namespace {

constexpr std::size_t kWindowPages = 512;
constexpr std::size_t kPagesPerBitmap = (jet::kPageSize - 4) * 8;
constexpr std::size_t kBitmapSlots = 17;
constexpr std::size_t kMapRowBytes = 69;
constexpr std::size_t kMaxInlineBitmap = 3900;  ///< what page 1 can take beside its second map

std::uint32_t windowStart(std::span<const jet::PageNumber> pages) {
    const bool fitsFromZero = pages.empty() || raw(pages.back()) < kWindowPages;
    return fitsFromZero ? 0 : raw(pages.front()) / 8 * 8;
}

void setBit(std::span<std::uint8_t> bytes, std::size_t bitmap, std::size_t bit) {
    bytes[bitmap + bit / 8] =
        static_cast<std::uint8_t>(bytes[bitmap + bit / 8] | (1u << (bit % 8)));
}

ByteVector encodeInline(std::span<const jet::PageNumber> pages) {
    const std::uint32_t start = windowStart(pages);
    const std::size_t reach = pages.empty() ? 0 : raw(pages.back()) - start + 1;
    const std::size_t words = std::max(kWindowPages, reach + 31) / 32;
    ByteVector row(5 + words * 4);
    put(std::span{row}, 1, start);
    for (const jet::PageNumber page : pages) setBit(row, 5, raw(page) - start);
    if (row.size() > kMaxRowBytes) throw std::length_error{"too wide for an inline map"};
    return row;
}

PageImage emptyBitmapPage() {
    PageImage image{};
    image[0] = 5;
    image[1] = 1;
    return image;
}

ByteVector encodeReference(PageFile& file, std::span<const jet::PageNumber> pages) {
    ByteVector row(kMapRowBytes);
    row[0] = 1;
    for (std::size_t i = 0; i < pages.size();) {
        const std::size_t slot = raw(pages[i]) / kPagesPerBitmap;
        PageImage image = emptyBitmapPage();
        for (; i < pages.size() && raw(pages[i]) / kPagesPerBitmap == slot; ++i) {
            setBit(image, 4, raw(pages[i]) % kPagesPerBitmap);
        }
        const jet::PageNumber bitmap = file.allocate();
        file.write(bitmap, image);
        put(std::span{row}, 1 + 4 * slot, raw(bitmap));
    }
    return row;
}

/// The pages given up and those from the end of the file up to the end of the map's reach.
ByteVector encodeFreeInline(const PageFile& file) {
    const std::size_t words = std::max<std::size_t>(kWindowPages, file.pageCount() + 31) / 32;
    ByteVector row(5 + words * 4);
    for (const jet::PageNumber page : file.released()) setBit(row, 5, raw(page));
    for (std::size_t page = file.pageCount(); page < words * 32; ++page) setBit(row, 5, page);
    return row;
}

bool isReleased(const PageFile& file, std::size_t page) {
    return file.released().contains(jet::PageNumber{static_cast<std::uint32_t>(page)});
}

ByteVector encodeFreeReference(PageFile& file) {
    // The bitmap pages are in use themselves, so all are allocated before the first is filled.
    std::vector<jet::PageNumber> bitmaps;
    while (bitmaps.size() * kPagesPerBitmap < file.pageCount()) bitmaps.push_back(file.allocate());
    ByteVector row(kMapRowBytes);
    row[0] = 1;
    for (std::size_t slot = 0; slot < bitmaps.size(); ++slot) {
        PageImage image = emptyBitmapPage();
        for (std::size_t bit = 0; bit < kPagesPerBitmap; ++bit) {
            const std::size_t page = slot * kPagesPerBitmap + bit;
            if (page >= file.pageCount() || isReleased(file, page)) setBit(image, 4, bit);
        }
        file.write(bitmaps[slot], image);
        put(std::span{row}, 1 + 4 * slot, raw(bitmaps[slot]));
    }
    static_assert(kBitmapSlots * kPagesPerBitmap >= kMaxPages);
    return row;
}

bool fitsInline(std::span<const jet::PageNumber> pages) {
    return pages.empty() || raw(pages.back()) - windowStart(pages) < kWindowPages;
}

}  // namespace

ByteVector encodeUsageMap(PageFile& file, std::span<const jet::PageNumber> pages, MapForm form) {
    const bool inlined = form == MapForm::Inline || (form == MapForm::Natural && fitsInline(pages));
    return inlined ? encodeInline(pages) : encodeReference(file, pages);
}

void writeFreePageMap(PageFile& file) {
    const bool inlined = file.pageCount() <= kMaxInlineBitmap * 8;
    DataPageImage page{1};
    page.append(inlined ? encodeFreeInline(file) : encodeFreeReference(file), 0);
    page.append(ByteVector(kMapRowBytes), 0);
    file.write(jet::PageNumber{1}, page.image());
}

}  // namespace fixture

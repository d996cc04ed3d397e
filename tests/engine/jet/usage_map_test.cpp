#include "engine/jet/usage_map.h"

#include "engine/jet/format/page.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/memory_pages.h"
#include "tests/support/usage_maps.h"

#include <gmock/gmock.h>

namespace jet {
namespace {

using fixture::ByteVector;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr PageNumber kMapPage{1};
constexpr RowId kMap{kMapPage, 0};

std::vector<PageNumber> numbers(std::initializer_list<std::uint32_t> pages) {
    std::vector<PageNumber> result;
    for (std::uint32_t page : pages) result.push_back(PageNumber{page});
    return result;
}

/// A file of `pageCount` pages with one map on page 1.
ByteVector fileWithMap(fixture::ByteView row, std::size_t pageCount, std::uint16_t flags = 0) {
    ByteVector file(pageCount * kPageSize);
    fixture::DataPageImage page{0};
    page.append(row, flags);
    std::copy(page.image().begin(), page.image().end(), file.begin() + kPageSize);
    return file;
}

std::vector<PageNumber> read(ByteVector file, RowId map = kMap) {
    MemoryPages pages{std::move(file)};
    PageReader reader = pages.reader();
    return readUsageMap(reader, map);
}

ByteVector inlineRow(std::uint32_t first, std::initializer_list<std::uint8_t> bits) {
    ByteVector row{0};
    fixture::append(row, first);
    row.insert(row.end(), bits);
    return row;
}

TEST(UsageMap, InlineBitsCountFromTheWindowsStart) {
    EXPECT_EQ(read(fileWithMap(inlineRow(0, {0b10, 0, 0x80}), 64)), numbers({1, 23}));
    EXPECT_EQ(read(fileWithMap(inlineRow(32, {0xFF}), 64)),
              numbers({32, 33, 34, 35, 36, 37, 38, 39}));
    EXPECT_THAT(read(fileWithMap(inlineRow(0, {}), 64)), IsEmpty());
}

TEST(UsageMap, TheRowsLengthSaysHowLongTheBitmapIs) {
    ByteVector row = inlineRow(0, {});
    row.resize(5 + 100);
    row.back() = 0x08;
    EXPECT_EQ(read(fileWithMap(row, 800)), numbers({99 * 8 + 3}));
}

TEST(UsageMap, TheHeaderPageIsNeverPartOfIt) {
    EXPECT_EQ(read(fileWithMap(inlineRow(0, {0b11}), 8)), numbers({1}));
}

TEST(UsageMap, NoMapIsAnEmptyMap) {
    EXPECT_THAT(read(fileWithMap(inlineRow(0, {0xFF}), 16), RowId{}), IsEmpty());
}

TEST(UsageMap, ReferencesToBitmapPages) {
    fixture::PageFile file;
    for (int i = 0; i < 2; ++i) file.allocate();
    const auto pages = numbers({3, 4, 1000, 32735, 32736, 39999});
    const ByteVector row = fixture::encodeUsageMap(file, pages, fixture::MapForm::Reference);
    fixture::DataPageImage page{0};
    page.append(row, 0);
    file.write(kMapPage, page.image());
    EXPECT_EQ(read(file.bytes()), pages);
}

TEST(UsageMap, AnAbsentBitmapPageIsEmpty) {
    ByteVector row(69);
    row[0] = 1;
    EXPECT_THAT(read(fileWithMap(row, 8)), IsEmpty());
}

TEST(UsageMap, ABitmapPageMustBeOne) {
    ByteVector row(69);
    row[0] = 1;
    fixture::put(std::span{row}, 1, std::uint32_t{3});
    expectFault(Fault::Damaged, [&] { read(fileWithMap(row, 8)); });
    fixture::put(std::span{row}, 1, std::uint32_t{8});
    expectFault(Fault::Damaged, [&] { read(fileWithMap(row, 8)); });
    fixture::put(std::span{row}, 1, std::uint32_t{0xFFFFFFFF});
    expectFault(Fault::Damaged, [&] { read(fileWithMap(row, 8)); });
}

TEST(UsageMap, DamagedRows) {
    expectFault(Fault::Damaged, [] { read(fileWithMap(ByteVector{0, 0, 0, 0}, 8)); });
    expectFault(Fault::Damaged, [] { read(fileWithMap(ByteVector{}, 8)); });
    expectFault(Fault::Damaged, [] { read(fileWithMap(ByteVector{2, 0, 0, 0, 0, 1}, 8)); });
    const ByteVector good = inlineRow(0, {0xFF});
    expectFault(Fault::Damaged, [&] { read(fileWithMap(good, 16, fixture::kSlotDeleted)); });
    expectFault(Fault::Damaged, [&] { read(fileWithMap(good, 16), RowId{kMapPage, 1}); });
    expectFault(Fault::Damaged, [&] { read(fileWithMap(good, 16), RowId{PageNumber{2}, 0}); });
    expectFault(Fault::Damaged, [&] { read(fileWithMap(good, 16), RowId{PageNumber{16}, 0}); });
}

// One wrong bit made the whole table unreadable, and so did a file whose writer lists a page
// before it appends it.
TEST(UsageMap, PagesBehindTheEndOfTheFileAreListedForTheReaderToCount) {
    EXPECT_EQ(read(fileWithMap(inlineRow(0, {0x10, 0x80}), 8)), numbers({4, 15}));
}

TEST(UsageMap, PagesThatNoFileCanHaveAreNone) {
    EXPECT_THAT(read(fileWithMap(inlineRow(0xFFFFFFF8, {0xFF, 0xFF}), 8)), IsEmpty());
    EXPECT_EQ(read(fileWithMap(inlineRow(format::page::kMaxCount - 1, {0b11}), 8)),
              numbers({format::page::kMaxCount - 1}));
}

// The worst that a small file can claim.
TEST(UsageMap, EverySlotRefersToTheSameFullBitmap) {
    ByteVector row(4000, 0);
    row[0] = 1;
    for (std::size_t at = 1; at + 4 <= row.size(); at += 4) {
        fixture::put(std::span{row}, at, std::uint32_t{2});
    }
    ByteVector file = fileWithMap(row, 3);
    std::fill(file.begin() + 2 * kPageSize, file.end(), std::uint8_t{0xFF});
    file[2 * kPageSize] = 5;
    EXPECT_EQ(read(file).size(), format::page::kMaxCount - 1);
}

}  // namespace
}  // namespace jet

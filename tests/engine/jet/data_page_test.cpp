#include "engine/jet/data_page.h"

#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/memory_pages.h"
#include "tests/support/record_pages.h"

#include <gmock/gmock.h>

#include <cstring>
#include <random>

namespace jet {
namespace {

using fixture::ByteVector;
using fixture::DataPageImage;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr PageNumber kPage{7};

TEST(DataPage, RowsLieFromTheEndDownwards) {
    DataPageImage image{42};
    image.append(ByteVector{1, 2, 3}, 0);
    image.append(ByteVector{4}, 0);
    image.append(ByteVector{}, 0);
    const DataPage page{image.image(), kPage};
    EXPECT_EQ(page.number(), kPage);
    EXPECT_EQ(page.owner(), 42u);
    ASSERT_EQ(page.slotCount(), 3u);
    EXPECT_THAT(page.slot(0)->bytes, ElementsAre(1, 2, 3));
    EXPECT_THAT(page.slot(1)->bytes, ElementsAre(4));
    EXPECT_THAT(page.slot(2)->bytes, IsEmpty());
    EXPECT_FALSE(page.slot(3));
}

TEST(DataPage, FlagsOfASlot) {
    DataPageImage image{42};
    for (const std::uint16_t flags : std::initializer_list<std::uint16_t>{0x0000, 0x4000, 0x8000})
        image.append(ByteVector(8), flags);
    image.append(ByteVector(8), 0);
    image.remove(3);
    const DataPage page{image.image(), kPage};
    const auto flagsOf = [&](unsigned slot) {
        const auto found = page.slot(slot);
        return std::tuple{found->pointer, found->moved, found->deleted};
    };
    EXPECT_EQ(flagsOf(0), std::tuple(false, false, false));
    EXPECT_EQ(flagsOf(1), std::tuple(true, false, false));
    EXPECT_EQ(flagsOf(2), std::tuple(false, true, false));
    EXPECT_EQ(flagsOf(3), std::tuple(true, true, true));
}

TEST(DataPage, PlainRowsHaveNoMark) {
    DataPageImage image{42};
    for (const int flags : {0x0000, 0x4000, 0x8000, 0xC000, 0x2000, 0x0000})
        image.append(ByteVector{1, 2, 3, 4}, static_cast<std::uint16_t>(flags));
    const DataPage page{image.image(), kPage};
    EXPECT_THAT(page.plainRow(0), ElementsAre(1, 2, 3, 4));
    for (const unsigned marked : {1u, 2u, 3u, 4u}) EXPECT_THAT(page.plainRow(marked), IsEmpty());
    EXPECT_EQ(page.plainRow(5).data(), page.slot(5)->bytes.data());
    EXPECT_THAT(page.plainRow(6), IsEmpty());
}

// Whatever the slot table says: a row that is given is the one that slot() gives.
TEST(DataPage, PlainRowsOfDamagedPages) {
    std::mt19937 random{1};
    int plain = 0;
    for (int round = 0; round < 20'000; ++round) {
        DataPageImage image{42};
        for (int row = 0; row < 4; ++row) image.append(ByteVector(20), 0);
        fixture::PageImage bytes = image.image();
        const auto word = static_cast<std::uint16_t>(random());
        // Half of them point into the rows.
        const std::uint16_t near = static_cast<std::uint16_t>(4000 + word % 100);
        std::memcpy(&bytes[14 + 2 * (random() % 4)], random() % 2 ? &word : &near, sizeof word);
        const DataPage page{bytes, kPage};
        for (unsigned i = 0; i < 5; ++i) {
            const Bytes row = page.plainRow(i);
            if (row.empty()) continue;
            const auto slot = page.slot(i);
            ASSERT_TRUE(slot);
            EXPECT_FALSE(slot->pointer || slot->moved || slot->deleted);
            EXPECT_EQ(row.data(), slot->bytes.data());
            EXPECT_EQ(row.size(), slot->bytes.size());
            ++plain;
        }
    }
    EXPECT_GT(plain, 20'000);
}

// Foreign writers leave a deleted row's bytes where they are.
TEST(DataPage, ADeletedRowMayKeepItsLength) {
    DataPageImage image{42};
    image.append(ByteVector(10, 1), fixture::kSlotDeleted);
    image.append(ByteVector{5, 6}, 0);
    const DataPage page{image.image(), kPage};
    EXPECT_TRUE(page.slot(0)->deleted);
    EXPECT_THAT(page.slot(1)->bytes, ElementsAre(5, 6));
}

TEST(DataPage, MustBeOfItsType) {
    fixture::PageImage image = DataPageImage{42}.image();
    for (const std::uint8_t type : std::initializer_list<std::uint8_t>{0, 2, 3, 4, 5, 9, 255}) {
        image[0] = type;
        expectFault(Fault::Damaged, [&] { DataPage(image, kPage); });
    }
}

TEST(DataPage, MoreSlotsThanAPageCanName) {
    fixture::PageImage image = DataPageImage{42}.image();
    fixture::put(std::span{image}, 12, std::uint16_t{256});
    EXPECT_NO_THROW(DataPage(image, kPage));
    // Row identities have one byte for the slot: a count above 256 would give rows twice.
    for (const std::uint16_t count : std::initializer_list<std::uint16_t>{257, 2041, 2042, 65535}) {
        fixture::put(std::span{image}, 12, count);
        expectFault(Fault::Damaged, [&] { DataPage(image, kPage); });
    }
}

DataPageImage threeRows() {
    DataPageImage image{42};
    for (std::uint8_t i = 0; i < 3; ++i) image.append(ByteVector(100, i), 0);
    return image;
}

fixture::PageImage withSlot(unsigned slot, std::uint16_t word) {
    fixture::PageImage image = threeRows().image();
    fixture::put(std::span{image}, 14 + 2 * slot, word);
    return image;
}

TEST(DataPage, ARowThatLiesOutsideItsPageIsNone) {
    // In the slot table, behind the page's end, above the row before it.
    for (const std::uint16_t offset :
         std::initializer_list<std::uint16_t>{0, 13, 19, 4097, 0x1FFF, 4000}) {
        const fixture::PageImage image = withSlot(1, offset);
        const DataPage page{image, kPage};
        EXPECT_TRUE(page.slot(0));
        EXPECT_FALSE(page.slot(1)) << offset;
    }
    const fixture::PageImage image = withSlot(0, 4097);
    EXPECT_FALSE(DataPage(image, kPage).slot(0));
}

// The row below the one that a wrong offset cuts off has both its offsets in order.
TEST(DataPage, AWrongOffsetSpoilsTwoRows) {
    const fixture::PageImage image = withSlot(0, 3000);
    const DataPage page{image, kPage};
    EXPECT_FALSE(page.slot(1));
    ASSERT_TRUE(page.slot(2));
    EXPECT_THAT(page.slot(2)->bytes, testing::Each(2));
    EXPECT_THAT(page.slot(2)->bytes, testing::SizeIs(100));
    // Here the end of row 2 may be as wrong as that of row 1.
    const fixture::PageImage unclear = withSlot(0, 3850);
    EXPECT_FALSE(DataPage(unclear, kPage).slot(2));
}

// With a wrong offset the row below seemed to reach up to it, over the rows in between.
TEST(DataPage, ARowDoesNotReachOverTheOneAboveItsNeighbour) {
    const fixture::PageImage image = withSlot(1, 4090);
    const DataPage page{image, kPage};
    EXPECT_FALSE(page.slot(1));
    EXPECT_FALSE(page.slot(2));
    EXPECT_TRUE(page.slot(0));
}

TEST(DataPage, AnOffsetInTheSlotTableSpoilsTwoRows) {
    DataPageImage rows{42};
    for (int i = 0; i < 5; ++i) rows.append(ByteVector(100, 1), 0);
    fixture::PageImage image = rows.image();
    fixture::put(std::span{image}, 14 + 2, std::uint16_t{5});
    const DataPage page{image, kPage};
    EXPECT_TRUE(page.slot(0));
    EXPECT_FALSE(page.slot(1));
    EXPECT_FALSE(page.slot(2));
    EXPECT_TRUE(page.slot(3));
    EXPECT_TRUE(page.slot(4));
}

// --- Records that moved ----------------------------------------------------------------------

class FollowPointer : public testing::Test {
protected:
    FollowPointer() {
        for (int i = 0; i < 4; ++i) file_.allocate();
        file_.write(PageNumber{1}, home_.image());
    }

    Bytes follow(RowId target, std::uint32_t owner = 42) {
        pages_.emplace(file_.bytes());
        reader_.emplace(pages_->reader());
        ByteVector pointer;
        fixture::append(pointer, target.packed());
        return followPointer(*reader_, pointer, owner);
    }

    void put(PageNumber page, const DataPageImage& image) { file_.write(page, image.image()); }

    fixture::PageFile file_;
    DataPageImage home_{42};
    std::optional<MemoryPages> pages_;
    std::optional<PageReader> reader_;
};

ByteVector pointerTo(RowId target) {
    ByteVector row;
    fixture::append(row, target.packed());
    return row;
}

TEST_F(FollowPointer, ToTheRecord) {
    DataPageImage image{42};
    image.append(ByteVector{9, 9}, 0);
    image.append(ByteVector{1, 2, 3}, fixture::kSlotMoved);
    put(PageNumber{2}, image);
    EXPECT_THAT(follow({PageNumber{2}, 1}), ElementsAre(1, 2, 3));
}

TEST_F(FollowPointer, OverSeveralPlaces) {
    DataPageImage image{42};
    for (unsigned i = 1; i < 10; ++i)
        image.append(pointerTo({PageNumber{2}, i}), fixture::kSlotPointer);
    image.append(ByteVector{7}, fixture::kSlotMoved);
    put(PageNumber{2}, image);
    EXPECT_THAT(follow({PageNumber{2}, 0}), ElementsAre(7));
}

TEST_F(FollowPointer, ARowThatPointsToItselfIsDamage) {
    DataPageImage image{42};
    image.append(pointerTo({PageNumber{2}, 0}), fixture::kSlotPointer);
    put(PageNumber{2}, image);
    expectFault(Fault::Damaged, [&] { follow({PageNumber{2}, 0}); });
}

TEST_F(FollowPointer, TwoRowsThatPointToEachOtherAreDamage) {
    DataPageImage image{42};
    image.append(pointerTo({PageNumber{2}, 1}), fixture::kSlotPointer);
    image.append(pointerTo({PageNumber{2}, 0}), fixture::kSlotPointer);
    put(PageNumber{2}, image);
    expectFault(Fault::Damaged, [&] { follow({PageNumber{2}, 0}); });
}

TEST_F(FollowPointer, ToNoRowOfTheTable) {
    DataPageImage image{42};
    image.append(ByteVector{1, 2, 3, 4}, fixture::kSlotDeleted);
    image.append(ByteVector{1, 2}, fixture::kSlotPointer);
    image.append(ByteVector{1, 2, 3}, fixture::kSlotMoved);
    put(PageNumber{2}, image);
    expectFault(Fault::Damaged, [&] { follow({PageNumber{2}, 0}); });
    expectFault(Fault::Damaged, [&] { follow({PageNumber{2}, 1}); });
    expectFault(Fault::Damaged, [&] { follow({PageNumber{2}, 3}); });
    expectFault(Fault::Damaged, [&] { follow({PageNumber{2}, 2}, 43); });
    expectFault(Fault::Damaged, [&] { follow({PageNumber{3}, 0}); });
    expectFault(Fault::Damaged, [&] { follow({PageNumber{4}, 0}); });
    expectFault(Fault::Damaged, [&] { follow({PageNumber{0xFFFFFF}, 255}); });
    expectFault(Fault::Damaged, [&] { follow(RowId{}); });
}

// A record that is a row of its own was met twice: in its place and through the pointer.
TEST_F(FollowPointer, ToARowThatStandsForItself) {
    DataPageImage image{42};
    image.append(ByteVector{1, 2, 3}, 0);
    put(PageNumber{2}, image);
    expectFault(Fault::Damaged, [&] { follow({PageNumber{2}, 0}); });
}

}  // namespace
}  // namespace jet

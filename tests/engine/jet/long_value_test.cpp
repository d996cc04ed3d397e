#include "engine/jet/long_value.h"

#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/memory_pages.h"
#include "tests/support/damage.h"
#include "tests/support/long_values.h"

#include <gmock/gmock.h>

#include <numeric>

namespace jet {
namespace {

using fixture::ByteVector;
using fixture::DataPageImage;
using fixture::kLongValueOwner;
using fixture::LongForm;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr PageNumber kPage{1};

ByteVector content(std::size_t length) {
    ByteVector bytes(length);
    for (std::size_t i = 0; i < length; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
    return bytes;
}

/// What readLongValue finds in a file; its own copy.
ByteVector read(const ByteVector& file, const ByteVector& header) {
    MemoryPages pages{file};
    PageReader reader = pages.reader();
    Binary scratch;
    const Bytes value = readLongValue(reader, header, kPage, scratch);
    return {value.begin(), value.end()};
}

ByteVector header(std::uint32_t word, RowId row = {}, std::uint32_t stamp = 0) {
    ByteVector bytes;
    fixture::append(bytes, word);
    fixture::append(bytes, row.packed());
    fixture::append(bytes, stamp);
    return bytes;
}

class StoredLongValue : public testing::TestWithParam<std::tuple<LongForm, std::size_t>> {};

TEST_P(StoredLongValue, ComesBack) {
    const auto [form, length] = GetParam();
    fixture::PageFile file;
    file.allocate();
    fixture::LongValueWriter writer{file};
    ByteVector before;
    ByteVector field;
    ByteVector behind;
    writer.store(content(100), LongForm::Single, before);
    writer.store(content(length), form, field);
    writer.store(content(200), LongForm::Single, behind);
    writer.finish();
    EXPECT_EQ(read(file.bytes(), field), content(length));
    EXPECT_EQ(read(file.bytes(), before), content(100));
    EXPECT_EQ(read(file.bytes(), behind), content(200));
}

INSTANTIATE_TEST_SUITE_P(
    Forms, StoredLongValue,
    testing::Values(std::tuple(LongForm::Inline, 0), std::tuple(LongForm::Inline, 1),
                    std::tuple(LongForm::Inline, 64), std::tuple(LongForm::Inline, 1000),
                    std::tuple(LongForm::Single, 1), std::tuple(LongForm::Single, 65),
                    std::tuple(LongForm::Single, 4076), std::tuple(LongForm::Chain, 1),
                    std::tuple(LongForm::Chain, 404), std::tuple(LongForm::Chain, 4072),
                    std::tuple(LongForm::Chain, 4073), std::tuple(LongForm::Chain, 8144),
                    std::tuple(LongForm::Chain, 70000), std::tuple(LongForm::Natural, 140000)));

TEST(LongValue, AFieldWithoutHeaderIsEmpty) {
    EXPECT_THAT(read(numberedPages(2), {}), IsEmpty());
    EXPECT_THAT(read(numberedPages(2), header(0x80000000)), IsEmpty());
    EXPECT_THAT(read(numberedPages(2), header(0x40000000)), IsEmpty());
    EXPECT_THAT(read(numberedPages(2), header(0)), IsEmpty());
}

TEST(LongValue, BytesBehindAnInlineValueAreNotPartOfIt) {
    ByteVector field = header(0x80000003);
    fixture::appendBytes(field, content(5));
    EXPECT_THAT(read(numberedPages(2), field), ElementsAreArray(content(3)));
}

TEST(LongValue, TheHeaderItselfIsDamaged) {
    for (std::size_t length = 1; length < 12; ++length) {
        expectFault(Fault::Damaged, [=] { read(numberedPages(2), ByteVector(length)); });
    }
    expectFault(Fault::Damaged, [] { read(numberedPages(2), header(0x80000001)); });
    expectFault(Fault::Damaged, [] { read(numberedPages(2), header(0xBFFFFFFF)); });
}

/// One page of long values at page 2, and a file around it.
ByteVector fileWith(const DataPageImage& image) {
    fixture::PageFile file;
    for (int i = 0; i < 6; ++i) file.allocate();
    file.write(PageNumber{2}, image.image());
    return file.bytes();
}

constexpr RowId kFirst{PageNumber{2}, 0};

/// A row of a chain.
ByteVector piece(RowId next, std::size_t length) {
    ByteVector row;
    fixture::append(row, next.packed());
    fixture::appendBytes(row, content(length));
    return row;
}

TEST(LongValue, ASingleRowMustHoldTheLength) {
    DataPageImage image{kLongValueOwner};
    image.append(content(10), 0);
    const ByteVector file = fileWith(image);
    EXPECT_EQ(read(file, header(0x40000000 | 10, kFirst)), content(10));
    expectFault(Fault::Damaged, [&] { read(file, header(0x40000000 | 4, kFirst)); });
    expectFault(Fault::Damaged, [&] { read(file, header(0x40000000 | 11, kFirst)); });
    expectFault(Fault::Damaged, [&] { read(file, header(0x7FFFFFFF, kFirst)); });
}

TEST(LongValue, RowsThatAreNone) {
    DataPageImage image{kLongValueOwner};
    image.append(content(9), fixture::kSlotDeleted);
    image.append(content(9), fixture::kSlotPointer);
    for (const std::uint32_t kind : {0x40000000u, 0u}) {
        const auto missing = [&](const ByteVector& file, RowId row) {
            expectFault(Fault::Damaged, [&] { read(file, header(kind | 10, row)); });
        };
        missing(fileWith(image), kFirst);
        missing(fileWith(image), {PageNumber{2}, 1});
        missing(fileWith(image), {PageNumber{2}, 2});
        missing(fileWith(image), {PageNumber{3}, 0});
        missing(fileWith(image), {PageNumber{6}, 0});
        missing(fileWith(image), {PageNumber{0xFFFFFF}, 255});
        missing(fileWith(image), RowId{});
    }
}

struct DoubtfulValue {
    ByteVector bytes;
    std::uint64_t hints;
};

DoubtfulValue readDoubtful(const ByteVector& file, RowId row, std::uint32_t length) {
    MemoryPages pages{file};
    PageReader reader = pages.reader();
    Binary scratch;
    const ByteVector head = header(0x40000000 | length, row);
    ByteVector bytes;
    for (int again = 0; again < 3; ++again) {
        const Bytes value = readLongValue(reader, head, kPage, scratch);
        bytes.assign(value.begin(), value.end());
    }
    return {bytes, reader.takeDoubts().hints};
}

// The length confirms the row, whatever its slot says.
TEST(LongValue, AMarkedRowOfTheRightLengthIsTheValue) {
    for (const std::uint16_t flags : {fixture::kSlotDeleted, fixture::kSlotPointer}) {
        DataPageImage image{kLongValueOwner};
        image.append(content(20), 0);
        image.append(content(10), flags);
        image.append(content(30), 0);
        const ByteVector file = fileWith(image);
        const DoubtfulValue value = readDoubtful(file, {PageNumber{2}, 1}, 10);
        EXPECT_EQ(value.bytes, content(10));
        EXPECT_EQ(value.hints, 1u) << "once, however often it is read";
        EXPECT_EQ(readDoubtful(file, {PageNumber{2}, 2}, 30).hints, 0u);
        expectFault(Fault::Damaged, [&] { readDoubtful(file, {PageNumber{2}, 1}, 9); });
    }
}

TEST(LongValue, ARowBehindThoseThatThePageCounts) {
    DataPageImage image{kLongValueOwner};
    for (std::size_t length : {20u, 10u, 30u}) image.append(content(length), 0);
    ByteVector file = fileWith(image);
    fixture::poke16(file, 2 * kPageSize + 12, 1);
    const DoubtfulValue value = readDoubtful(file, {PageNumber{2}, 2}, 30);
    EXPECT_EQ(value.bytes, content(30));
    EXPECT_EQ(value.hints, 1u);
    expectFault(Fault::Damaged, [&] { readDoubtful(file, {PageNumber{2}, 3}, 30); });
}

TEST(LongValue, APageWithAnImpossibleNumberOfRows) {
    for (const std::uint16_t count : {std::uint16_t{0x6030}, std::uint16_t{256}}) {
        DataPageImage image{kLongValueOwner};
        for (std::size_t length : {4000u, 10u, 30u}) image.append(content(length), 0);
        ByteVector file = fileWith(image);
        fixture::poke16(file, 2 * kPageSize + 12, count);
        const DoubtfulValue value = readDoubtful(file, {PageNumber{2}, 1}, 10);
        EXPECT_EQ(value.bytes, content(10));
        EXPECT_EQ(value.hints, 1u);
    }
}

/// The owner of a page is a single field that may be damaged: a row of the right length is the value.
TEST(LongValue, APageWithAWrongOwner) {
    for (const std::uint32_t owner : {42u, 0x4Cu, 0u, 0xFFFFFFFFu}) {
        DataPageImage image{owner};
        image.append(content(10), 0);
        EXPECT_EQ(read(fileWith(image), header(0x40000000 | 10, kFirst)), content(10));
        expectFault(Fault::Damaged, [&] { read(fileWith(image), header(0x40000000 | 9, kFirst)); });
    }
}

// Two swapped pages showed the texts of other lines, cut to the length of the right ones.
TEST(LongValue, AValueMustHaveExactlyItsLength) {
    DataPageImage image{kLongValueOwner};
    image.append(piece({PageNumber{2}, 1}, 10), 0);
    image.append(piece({}, 10), 0);
    image.append(piece({PageNumber{2}, 1}, 10), 0);
    const ByteVector file = fileWith(image);
    EXPECT_THAT(read(file, header(20, kFirst)), testing::SizeIs(20));
    for (const std::uint32_t length : {1u, 9u, 11u, 19u, 21u}) {
        expectFault(Fault::Damaged, [&] { read(file, header(length, kFirst)); });
    }
}

TEST(LongValue, AChainThatEndsEarly) {
    DataPageImage image{kLongValueOwner};
    image.append(piece({PageNumber{2}, 1}, 10), 0);
    image.append(piece({}, 10), 0);
    const ByteVector file = fileWith(image);
    EXPECT_EQ(read(file, header(20, kFirst)).size(), 20u);
    expectFault(Fault::Damaged, [&] { read(file, header(15, kFirst)); });
    expectFault(Fault::Damaged, [&] { read(file, header(21, kFirst)); });
    expectFault(Fault::Damaged, [&] { read(file, header(0x3FFFFFFF, kFirst)); });
}

TEST(LongValue, PiecesWithoutContent) {
    for (std::size_t length = 0; length <= 4; ++length) {
        DataPageImage image{kLongValueOwner};
        image.append(ByteVector(length), 0);
        expectFault(Fault::Damaged, [&] { read(fileWith(image), header(1, kFirst)); });
    }
}

// A ring gave the same piece again and again until the length was reached.
TEST(LongValue, AChainThatRunsInARing) {
    DataPageImage image{kLongValueOwner};
    image.append(piece(kFirst, 100), 0);
    const ByteVector ofOne = fileWith(image);
    EXPECT_EQ(read(ofOne, header(100, kFirst)), content(100));
    expectFault(Fault::Damaged, [&] { read(ofOne, header(150, kFirst)); });
    expectFault(Fault::Damaged, [&] { read(ofOne, header(0x3FFFFFFF, kFirst)); });

    DataPageImage three{kLongValueOwner};
    for (unsigned i = 0; i < 3; ++i) three.append(piece({PageNumber{2}, (i + 1) % 3}, 100), 0);
    expectFault(Fault::Damaged, [&] { read(fileWith(three), header(301, kFirst)); });
}

// Rows may overlap on a damaged page, so even a chain without a ring can promise more than there is.
TEST(LongValue, NeverMoreThanTheFileHolds) {
    DataPageImage image{kLongValueOwner};
    for (unsigned i = 0; i < 20; ++i) image.append(piece({PageNumber{2}, i + 1}, 100), 0);
    ByteVector file = fileWith(image);
    for (std::size_t slot = 1; slot < 20; slot += 2) {
        fixture::put(std::span{file}, 2 * kPageSize + 14 + 2 * slot, std::uint16_t{4096});
    }
    expectFault(Fault::Damaged, [&] { read(file, header(0x3FFFFFFF, kFirst)); });
}

TEST(LongValue, ThePieceIsNotCopiedWhenThereIsOneOnly) {
    DataPageImage image{kLongValueOwner};
    image.append(content(10), 0);
    MemoryPages pages{fileWith(image)};
    PageReader reader = pages.reader();
    Binary scratch;
    const Bytes value = readLongValue(reader, header(0x40000000 | 10, kFirst), kPage, scratch);
    EXPECT_THAT(value, ElementsAreArray(content(10)));
    EXPECT_THAT(scratch, IsEmpty());
    const ByteVector inlined = [] {
        ByteVector bytes = header(0x80000003);
        fixture::appendBytes(bytes, content(3));
        return bytes;
    }();
    EXPECT_EQ(readLongValue(reader, inlined, kPage, scratch).data(), inlined.data() + 12);
}

// One reader for the values of many records, wherever they stand.
TEST(LongValueReader, ValuesOfSeveralPagesInAnyOrder) {
    fixture::PageFile file;
    file.allocate();
    fixture::LongValueWriter writer{file};
    std::vector<ByteVector> headers(60);
    const auto length = [](std::size_t i) { return 300 + 37 * i; };
    for (std::size_t i = 0; i < headers.size(); ++i) {
        const LongForm form = i % 7 == 0 ? LongForm::Chain : LongForm::Single;
        writer.store(content(length(i)), form, headers[i]);
    }
    writer.finish();
    MemoryPages pages{file.bytes()};
    PageReader reader = pages.reader();
    LongValueReader values{reader};
    Binary scratch;
    for (std::size_t i = 0; i < 3 * headers.size(); ++i) {
        const std::size_t chosen = i * 17 % headers.size();
        EXPECT_THAT(values.read(headers[chosen], kPage, scratch),
                    ElementsAreArray(content(length(chosen))));
    }
}

TEST(LongValueReader, AForgottenPageIsLookedUpAgain) {
    DataPageImage image{kLongValueOwner};
    image.append(content(10), 0);
    ByteVector file = fileWith(image);
    MemoryPages pages{file};
    PageReader lender = pages.reader();
    PageReader reader = pages.reader();
    reader.borrowBlock(&lender);
    lender.loadBlock(kFirst.page(), 1);
    LongValueReader values{reader};
    Binary scratch;
    const ByteVector field = header(0x40000000 | 10, kFirst);
    EXPECT_THAT(values.read(field, kPage, scratch), ElementsAreArray(content(10)));
    // The block now holds the page before it, at the same place in memory.
    values.forgetPage();
    lender.loadBlock(PageNumber{raw(kFirst.page()) - 1}, 1);
    EXPECT_THAT(values.read(field, kPage, scratch), ElementsAreArray(content(10)));
}

}  // namespace
}  // namespace jet

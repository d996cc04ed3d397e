#include "engine/jet/record.h"

#include "tests/engine/jet/faults.h"
#include "tests/support/record_writer.h"

#include <gmock/gmock.h>

#include <random>

namespace jet {
namespace {

using fixture::ByteVector;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr PageNumber kPage{7};

Column fixedColumn(std::uint16_t id, ColumnType type, std::uint16_t offset, std::uint16_t size) {
    Column column;
    column.id = id;
    column.type = type;
    column.fixed = true;
    column.fixedOffset = offset;
    column.size = size;
    return column;
}

Column variableColumn(std::uint16_t id, std::uint16_t index, ColumnType type = ColumnType::Text) {
    Column column;
    column.id = id;
    column.type = type;
    column.variableIndex = index;
    column.size = 510;
    return column;
}

/// A record by hand: Long 0x01020304 (id 0), Boolean true (id 1), texts "ab" (id 2) and "" (id 3).
ByteVector example() {
    return {4,     0,          // columns
            4,     3, 2,   1,  // the fixed part
            'a',   0, 'b', 0,  // the variable data
            10,    0,          // its end
            10,    0, 6,   0,  // the starts, the last first
            2,     0,          // how many
            0b1111};
}

TEST(Record, FieldsOfAllKinds) {
    const ByteVector bytes = example();
    const Record record{bytes, kPage};
    EXPECT_EQ(record.columnCount(), 4u);
    const StoredField number = record.field(fixedColumn(0, ColumnType::Long, 0, 4));
    EXPECT_FALSE(number.null);
    EXPECT_THAT(number.bytes, ElementsAre(4, 3, 2, 1));
    const StoredField truth = record.field(fixedColumn(1, ColumnType::Boolean, 0, 1));
    EXPECT_FALSE(truth.null);
    EXPECT_TRUE(truth.truth);
    EXPECT_THAT(record.field(variableColumn(2, 0)).bytes, ElementsAre('a', 0, 'b', 0));
    const StoredField empty = record.field(variableColumn(3, 1));
    EXPECT_FALSE(empty.null);
    EXPECT_THAT(empty.bytes, IsEmpty());
}

TEST(Record, AClearBitIsNullOrFalse) {
    ByteVector bytes = example();
    bytes.back() = 0;
    const Record record{bytes, kPage};
    EXPECT_TRUE(record.field(fixedColumn(0, ColumnType::Long, 0, 4)).null);
    EXPECT_TRUE(record.field(variableColumn(2, 0)).null);
    const StoredField truth = record.field(fixedColumn(1, ColumnType::Boolean, 0, 1));
    EXPECT_FALSE(truth.null);
    EXPECT_FALSE(truth.truth);
}

TEST(Record, ColumnsAddedLaterAreNullAndFalse) {
    const ByteVector bytes = example();
    const Record record{bytes, kPage};
    EXPECT_TRUE(record.field(fixedColumn(4, ColumnType::Long, 4, 4)).null);
    EXPECT_TRUE(record.field(variableColumn(9, 2)).null);
    const StoredField truth = record.field(fixedColumn(200, ColumnType::Boolean, 0, 1));
    EXPECT_FALSE(truth.null);
    EXPECT_FALSE(truth.truth);
}

TEST(Record, RubbishInUnusedBitsOfTheMaskIsNotAColumn) {
    ByteVector bytes = example();
    bytes.back() = 0xFF;
    const Record record{bytes, kPage};
    EXPECT_TRUE(record.field(fixedColumn(4, ColumnType::Long, 0, 4)).null);
    EXPECT_FALSE(record.field(fixedColumn(5, ColumnType::Boolean, 0, 1)).truth);
}

TEST(Record, WithoutVariableColumnsThereIsNoTrailer) {
    const ByteVector bytes{2, 0, 1, 0xFF, 0xFF, 0b01};
    const Record record{bytes, kPage};
    EXPECT_THAT(record.field(fixedColumn(0, ColumnType::Byte, 0, 1)).bytes, ElementsAre(1));
    // The bit of a variable column is clear, so the trailer is not looked for.
    EXPECT_TRUE(record.field(variableColumn(1, 0)).null);
}

TEST(Record, UnusedBytesBeforeTheOffsetTable) {
    ByteVector bytes = example();
    const ByteVector rubbish(53, 0xCD);
    bytes.insert(bytes.begin() + 10, rubbish.begin(), rubbish.end());
    const Record record{bytes, kPage};
    EXPECT_THAT(record.field(variableColumn(2, 0)).bytes, ElementsAre('a', 0, 'b', 0));
}

TEST(Record, AVariableColumnThatTheOffsetTableDoesNotKnowIsNull) {
    const ByteVector bytes = example();
    const Record record{bytes, kPage};
    EXPECT_TRUE(record.field(variableColumn(3, 2)).null);
    EXPECT_TRUE(record.field(variableColumn(3, 0xFFFF)).null);
}

TEST(Record, AFixedSizeTypeMayStandAmongTheVariableColumns) {
    const ByteVector bytes = example();
    const Record record{bytes, kPage};
    EXPECT_EQ(record.field(variableColumn(2, 0, ColumnType::Long)).bytes.size(), 4u);
    expectFault(Fault::Damaged, [&] { record.field(variableColumn(2, 0, ColumnType::Double)); });
    expectFault(Fault::Damaged, [&] { record.field(variableColumn(3, 1, ColumnType::Byte)); });
}

TEST(Record, TheTypeDecidesTheSizeNotTheDescriptor) {
    const ByteVector bytes = example();
    const Record record{bytes, kPage};
    EXPECT_EQ(record.field(fixedColumn(0, ColumnType::Long, 0, 0xFFFF)).bytes.size(), 4u);
    EXPECT_EQ(record.field(fixedColumn(0, ColumnType::Byte, 3, 0)).bytes.size(), 1u);
    // Text of fixed length has no size of its own.
    EXPECT_EQ(record.field(fixedColumn(0, ColumnType::Text, 0, 3)).bytes.size(), 3u);
}

TEST(Record, CutShort) {
    expectFault(Fault::Damaged, [] { Record(Bytes{}, kPage); });
    const ByteVector whole = example();
    expectFault(Fault::Damaged, [&] { Record(Bytes{whole}.first(1), kPage); });
    expectFault(Fault::Damaged, [&] { Record(Bytes{whole}.first(2), kPage); });
    const ByteVector wide{0xFF, 0xFF, 0, 0, 0, 0};
    expectFault(Fault::Damaged, [&] { Record(wide, kPage); });
}

TEST(Record, FieldsOutsideTheRecord) {
    const ByteVector bytes = example();
    const Record record{bytes, kPage};
    for (const std::uint16_t offset : std::initializer_list<std::uint16_t>{13, 100, 0xFFFF}) {
        expectFault(Fault::Damaged,
                    [&] { record.field(fixedColumn(0, ColumnType::Long, offset, 4)); });
    }
    expectFault(Fault::Damaged, [&] { record.field(fixedColumn(0, ColumnType::Text, 0, 0xFFFF)); });
}

TEST(Record, OffsetsThatMakeNoSense) {
    const auto damaged = [](std::size_t at, std::uint16_t word) {
        ByteVector bytes = example();
        fixture::put(std::span{bytes}, at, word);
        const Record record{bytes, kPage};
        expectFault(Fault::Damaged, [&] { record.field(variableColumn(2, 0)); });
    };
    damaged(14, 11);      // starts behind the next one: descending
    damaged(14, 0);       // in the column count
    damaged(12, 11);      // ends in the offset table
    damaged(12, 0xFFFF);  // ends behind the record
    damaged(16, 5);       // more offsets than the record has room for
    damaged(16, 0xFFFF);
}

TEST(Record, TheOffsetTableItselfIsMissing) {
    const ByteVector bytes{1, 0, 0, 0, 1};
    const Record record{bytes, kPage};
    expectFault(Fault::Damaged, [&] { record.field(variableColumn(0, 0)); });
}

/// Whatever the bytes are: a field lies within the record, or is refused.
TEST(Record, RandomBytesNeverLeadOutside) {
    std::mt19937 random{20060502};
    for (int round = 0; round < 50000; ++round) {
        ByteVector bytes(random() % 60);
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(random() % (round % 2 ? 256 : 24));
        try {
            const Record record{bytes, kPage};
            for (std::uint16_t id = 0; id < 20; ++id) {
                const auto place = static_cast<std::uint16_t>(random() % 24);
                const Column column = id % 2 ? variableColumn(id, place)
                                             : fixedColumn(id, ColumnType::Double, place, 8);
                const StoredField field = record.field(column);
                if (field.null || field.bytes.empty()) continue;
                ASSERT_GE(field.bytes.data(), bytes.data() + 2);
                ASSERT_LE(field.bytes.data() + field.bytes.size(), bytes.data() + bytes.size());
            }
        } catch (const Error& error) {
            ASSERT_EQ(error.fault(), Fault::Damaged);
            ASSERT_EQ(error.page(), kPage);
        }
    }
}

}  // namespace
}  // namespace jet

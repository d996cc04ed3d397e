// Records, texts and keys, against bytes found in files of the original program.
#include "tests/support/damage.h"
#include "tests/support/fixture_builder.h"
#include "tests/support/index_keys.h"

#include <gtest/gtest.h>

namespace fixture {
namespace {

using jet::ColumnType;

ByteVector storedText(std::u16string_view text, bool compressed) {
    ByteVector bytes;
    appendStoredText(text, compressed, bytes);
    return bytes;
}

ByteVector key(ColumnType type, const Cell& cell, bool ascending = true) {
    ByteVector bytes;
    appendKeyPart(type, cell, ascending, bytes);
    return bytes;
}

ByteVector rowBytes(const ByteVector& file, jet::RowId row) {
    const auto first = file.begin() + static_cast<std::ptrdiff_t>(rowOffset(file, row));
    return {first, first + static_cast<std::ptrdiff_t>(rowLength(file, row))};
}

TEST(RecordWriter, MakesTheRecordThatTheOriginalProgramMade) {
    FixtureBuilder builder;
    TableBuilder& table = builder.addTable(
        {.name = u"Table1",
         .columns = {textColumn(u"A", 50), textColumn(u"B", 100, false),
                     column(u"C", ColumnType::Byte), column(u"D", ColumnType::Integer),
                     column(u"E", ColumnType::Long), column(u"F", ColumnType::Double),
                     column(u"G", ColumnType::Date), column(u"H", ColumnType::Currency),
                     column(u"I", ColumnType::Boolean)}});
    const jet::RowId row = table.insert({u"abcdefg", u"hijklmnop", 2, 222, 333333333, 444.555,
                                         jet::Date{27293}, jet::Currency{35000}, true});
    const ByteVector expected{
        0x09, 0x00, 0x02, 0xDE, 0x00, 0x55, 0x43, 0xDE, 0x13, 0x7B, 0x14, 0xAE, 0x47, 0xE1,
        0xC8, 0x7B, 0x40, 0x00, 0x00, 0x00, 0x00, 0x40, 0xA7, 0xDA, 0x40, 0xB8, 0x88, 0x00,
        0x00, 0x00, 0x00, 0x00, 0x00, 0xFF, 0xFE, 0x61, 0x62, 0x63, 0x64, 0x65, 0x66, 0x67,
        0x68, 0x00, 0x69, 0x00, 0x6A, 0x00, 0x6B, 0x00, 0x6C, 0x00, 0x6D, 0x00, 0x6E, 0x00,
        0x6F, 0x00, 0x70, 0x00, 0x3C, 0x00, 0x2A, 0x00, 0x21, 0x00, 0x02, 0x00, 0xFF, 0x01};
    EXPECT_EQ(rowBytes(builder.bytes(), row), expected);
}

TEST(RecordWriter, ARecordOfATableWithoutVariableColumnsHasNoTrailer) {
    FixtureBuilder builder;
    TableBuilder& table =
        builder.addTable({.name = u"t", .columns = {column(u"n", ColumnType::Integer)}});
    const jet::RowId row = table.insert({7});
    EXPECT_EQ(rowBytes(builder.bytes(), row), (ByteVector{1, 0, 7, 0, 1}));
}

TEST(RecordWriter, RefusesWhatDoesNotFit) {
    FixtureBuilder builder;
    TableBuilder& table =
        builder.addTable({.name = u"t", .columns = {textColumn(u"a", 3), binaryColumn(u"b", 510)}});
    EXPECT_THROW(table.insert({u"four"}), std::length_error);
    EXPECT_THROW(table.insert({u"a", ByteVector{}, 1}), std::invalid_argument);
    EXPECT_THROW(table.insert({u"a", stored(ByteVector(4100))}), std::length_error);
}

TEST(StoredText, ChangesBetweenOneAndTwoBytesACharacter) {
    EXPECT_EQ(storedText(u"abc", true), (ByteVector{0xFF, 0xFE, 'a', 'b', 'c'}));
    EXPECT_EQ(storedText(u"\u0424\u0430 ab c abcd", true),
              (ByteVector{0xFF, 0xFE, 0x00, 0x24, 0x04, 0x30, 0x04, 0x00, ' ', 'a', 'b', ' ', 'c',
                          ' ', 'a', 'b', 'c', 'd'}));
}

TEST(StoredText, StaysRawWhereThatIsNotLonger) {
    EXPECT_EQ(storedText(u"ab", true), (ByteVector{'a', 0, 'b', 0}));
    EXPECT_EQ(storedText(u"abc", false), (ByteVector{'a', 0, 'b', 0, 'c', 0}));
    EXPECT_EQ(storedText(u"abcdefgh\u0100", true).size(), 18u);  // a zero byte within a character
    EXPECT_TRUE(storedText(u"", true).empty());
}

TEST(IndexKeys, AreThoseOfTheFormat) {
    EXPECT_EQ(key(ColumnType::Long, 1), (ByteVector{0x7F, 0x80, 0, 0, 1}));
    EXPECT_EQ(key(ColumnType::Long, -1), (ByteVector{0x7F, 0x7F, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(key(ColumnType::Long, 1, false), (ByteVector{0x80, 0x7F, 0xFF, 0xFF, 0xFE}));
    EXPECT_EQ(key(ColumnType::Date, jet::Date{2}), (ByteVector{0x7F, 0xC0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(key(ColumnType::Binary, jet::Binary{0, 0, 0, 1}),
              (ByteVector{0x7F, 0, 0, 0, 1, 0, 0, 0, 0, 4}));
    EXPECT_EQ(key(ColumnType::Long, kNull), (ByteVector{0x00}));
    EXPECT_EQ(key(ColumnType::Long, kNull, false), (ByteVector{0xFF}));
    EXPECT_EQ(key(ColumnType::Boolean, true), (ByteVector{0x7F, 0x00}));
    EXPECT_EQ(key(ColumnType::Text, u"notifier"),
              (ByteVector{0x7F, 0x62, 0x64, 0x6D, 0x59, 0x53, 0x59, 0x51, 0x69, 0x01, 0x00}));
}

TEST(IndexKeys, DescendingGroupsOfBytesKeepTheirMark) {
    const jet::Binary nine{1, 2, 3, 4, 5, 6, 7, 8, 9};
    EXPECT_EQ(key(ColumnType::Binary, nine),
              (ByteVector{0x7F, 1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 0, 0, 0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(key(ColumnType::Binary, nine, false),
              (ByteVector{0x80, 0xFE, 0xFD, 0xFC, 0xFB, 0xFA, 0xF9, 0xF8, 0xF7, 9, 0xF6, 0xFF, 0xFF,
                          0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}));
}

}  // namespace
}  // namespace fixture

// Values in their stored forms, byte for byte, and back.
#include "engine/jet/write/value_encoder.h"

#include "engine/jet/text.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/hex.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

#include <limits>

namespace jet {
namespace {

std::string encodedText(std::u16string_view text, bool compress = true) {
    Binary out;
    encodeText(text, compress, out);
    return hex(out);
}

Column columnOf(ColumnType type, std::uint16_t size = 0) {
    Column column;
    column.name = u"C";
    column.type = type;
    column.size = size;
    column.compressed = true;
    return column;
}

std::string encoded(const Value& value, const Column& column) {
    Binary out;
    encodeValue(value, column, out);
    return hex(out);
}

// ---- Compression --------------------------------------------------------------------------------

// Two bytes of mark: it takes three characters to win.
TEST(EncodeText, IsCompressedOnlyWhereThatIsShorter) {
    EXPECT_EQ(encodedText(u""), "");
    EXPECT_EQ(encodedText(u"a"), "6100");
    EXPECT_EQ(encodedText(u"ab"), "61006200");
    EXPECT_EQ(encodedText(u"abc"), "FFFE616263");
    EXPECT_EQ(encodedText(u"\u00FF\u00E9\u0001"), "FFFEFFE901");
    EXPECT_EQ(encodedText(u"abc", false), "610062006300");
}

TEST(EncodeText, ZeroBytesStandBetweenNarrowAndWideStretches) {
    EXPECT_EQ(encodedText(u"abcdef\u0424\u0430 ab c"),
              "FFFE61626364656600240430040020616220"
              "63");
    EXPECT_EQ(encodedText(u"\u0424abcdef"), "FFFE00240400616263646566");
    EXPECT_EQ(encodedText(u"abcdef\u0424"), "FFFE616263646566002404");
    EXPECT_EQ(encodedText(u"abcdefgh\U0001F641"), "FFFE6162636465666768003DD841DE");
}

TEST(EncodeText, WideTextsAreNotCompressed) {
    EXPECT_EQ(encodedText(u"\u0424\u0430\u0431"), "240430043104");
    // A blank between two words costs two switches: more than it saves.
    EXPECT_EQ(encodedText(u"\u0424 \u0430"), "240420003004");
}

// FF FE, six narrow ones, a switch, one wide: as long as the other form with fewer narrow ones.
TEST(EncodeText, OfEqualLengthStaysAsItIs) {
    EXPECT_EQ(encodedText(u"abc\u0424"), "6100620063002404");
    EXPECT_EQ(encodedText(u"abcd\u0424"), "FFFE61626364002404");
}

// A low byte of zero would be a switch.
TEST(EncodeText, UnitsWithAZeroByteKeepTheWholeTextPlain) {
    EXPECT_EQ(encodedText(std::u16string{u"abcdef\0g", 8}), "61006200630064006500660000006700");
    EXPECT_EQ(encodedText(u"abcdef\u4E00"), "610062006300640065006600004E");
    EXPECT_EQ(encodedText(u"\u0100abcdef"), "0001610062006300640065006600");
    EXPECT_EQ(encodedText(u"abcdef\u4E01"), "FFFE61626364656600014E");
}

// The mark of compressed text is a character, too.
TEST(EncodeText, ByteOrderMarksInFrontAreDropped) {
    EXPECT_EQ(encodedText(u"\uFEFFa"), "6100");
    EXPECT_EQ(encodedText(u"\uFEFF\uFEFFa", false), "6100");
    EXPECT_EQ(encodedText(u"\uFEFF\uFEFF\uFEFF"), "");
    EXPECT_EQ(encodedText(u"a\uFEFF", false), "6100FFFE");
}

TEST(EncodeText, ComesBackAsItWas) {
    fixture::Random random{5};
    for (int round = 0; round < 3000; ++round) {
        std::u16string text(random.below(40), u'\0');
        const std::uint32_t kind = random.below(4);
        for (char16_t& unit : text) {
            const bool wide = kind == 0 || (kind == 1 && random.oneIn(6));
            unit = static_cast<char16_t>(wide        ? random.below(0x10000)
                                         : kind == 2 ? random.below(0x180)
                                                     : random.between(1, 0xFF));
        }
        std::u16string expected = text;
        while (!expected.empty() && expected.front() == 0xFEFF) expected.erase(0, 1);
        for (const bool compress : {false, true}) {
            Binary out;
            encodeText(text, compress, out);
            EXPECT_LE(out.size(), 2 * expected.size());
            std::u16string back;
            appendUtf16(out, back);
            ASSERT_EQ(back, expected) << hex(out);
        }
    }
}

// ---- Values -------------------------------------------------------------------------------------

TEST(EncodeValue, OfEveryType) {
    EXPECT_EQ(encoded(true, columnOf(ColumnType::Boolean)), "");
    EXPECT_EQ(encoded(std::uint8_t{200}, columnOf(ColumnType::Byte)), "C8");
    EXPECT_EQ(encoded(std::int16_t{-2}, columnOf(ColumnType::Integer)), "FEFF");
    EXPECT_EQ(encoded(std::int32_t{-2}, columnOf(ColumnType::Long)), "FEFFFFFF");
    EXPECT_EQ(encoded(Currency{-1}, columnOf(ColumnType::Currency)), "FFFFFFFFFFFFFFFF");
    EXPECT_EQ(encoded(1.5f, columnOf(ColumnType::Single)), "0000C03F");
    EXPECT_EQ(encoded(1.5, columnOf(ColumnType::Double)), "000000000000F83F");
    EXPECT_EQ(encoded(Date{2.0}, columnOf(ColumnType::Date)), "0000000000000040");
    EXPECT_EQ(encoded(Binary{1, 0, 2}, columnOf(ColumnType::Binary, 5)), "010002");
    EXPECT_EQ(encoded(Binary{1, 0, 2}, columnOf(ColumnType::Ole)), "010002");
    EXPECT_EQ(encoded(std::u16string{u"abc"}, columnOf(ColumnType::Text, 6)), "FFFE616263");
    Guid guid;
    guid.bytes[0] = 0xAB;
    EXPECT_EQ(encoded(guid, columnOf(ColumnType::Guid)), "AB" + std::string(30, '0'));
}

TEST(EncodeValue, NumbersOfTheirColumnsScale) {
    Column column = columnOf(ColumnType::Numeric);
    column.scale = 2;
    Numeric number{.negative = true, .scale = 2, .magnitude = {0, 0, 1, 0x23456789}};
    EXPECT_EQ(encoded(number, column), "8000000000000000000100000089674523");
    number.scale = 3;
    expectFault(Fault::WrongType, [&] { encoded(number, column); });
}

TEST(EncodeValue, FixedColumnsAreFilledUp) {
    Column text = columnOf(ColumnType::Text, 8);
    text.fixed = true;
    EXPECT_EQ(encoded(std::u16string{u"ab"}, text), "6100620020002000");
    expectFault(Fault::ValueTooLarge, [&] { encoded(std::u16string{u"abcde"}, text); });
    Column binary = columnOf(ColumnType::Binary, 4);
    binary.fixed = true;
    EXPECT_EQ(encoded(Binary{1, 2}, binary), "01020000");
}

TEST(EncodeValue, TooLongOnes) {
    const Column text = columnOf(ColumnType::Text, 10);
    EXPECT_EQ(encoded(std::u16string{u"abcde"}, text), "FFFE6162636465");
    const auto message =
        expectFault(Fault::ValueTooLarge, [&] { encoded(std::u16string{u"abcdef"}, text); });
    EXPECT_NE(message.find("'C'"), std::string::npos);
    expectFault(Fault::ValueTooLarge,
                [&] { encoded(Binary(11, 1), columnOf(ColumnType::Binary, 10)); });
    EXPECT_EQ(encoded(Binary(11, 0), columnOf(ColumnType::Ole)).size(), 22u);
}

// Long memos are stored as they are: 1,024 characters are the last that are compressed.
TEST(EncodeValue, MemosUpToALengthAreCompressed) {
    const Column memo = columnOf(ColumnType::Memo);
    EXPECT_EQ(encoded(std::u16string(1024, u'm'), memo).size(), 2u * (2 + 1024));
    EXPECT_EQ(encoded(std::u16string(1025, u'm'), memo).size(), 2u * 2 * 1025);
    Column plain = memo;
    plain.compressed = false;
    EXPECT_EQ(encoded(std::u16string(100, u'm'), plain).size(), 2u * 2 * 100);
}

TEST(EncodeValue, OfAnotherTypeThanTheColumns) {
    const std::vector<std::pair<ColumnType, Value>> own{{ColumnType::Boolean, true},
                                                        {ColumnType::Byte, std::uint8_t{1}},
                                                        {ColumnType::Integer, std::int16_t{1}},
                                                        {ColumnType::Long, std::int32_t{1}},
                                                        {ColumnType::Currency, Currency{}},
                                                        {ColumnType::Single, 1.0f},
                                                        {ColumnType::Double, 1.0},
                                                        {ColumnType::Date, Date{}},
                                                        {ColumnType::Binary, Binary{}},
                                                        {ColumnType::Text, std::u16string{}},
                                                        {ColumnType::Guid, Guid{}},
                                                        {ColumnType::Numeric, Numeric{}}};
    for (const auto& [type, value] : own) {
        for (const auto& [other, otherValue] : own) {
            const Column column = columnOf(type, 20);
            if (type == other) {
                EXPECT_NO_THROW(encoded(otherValue, column));
            } else {
                expectFault(Fault::WrongType, [&, &wrong = otherValue] { encoded(wrong, column); });
            }
        }
    }
    expectFault(Fault::WrongType,
                [] { encoded(Binary{}, columnOf(ColumnType::InternalBinary, 10)); });
}

TEST(EncodeValue, ComesBackFromDecodeField) {
    fixture::Random random{6};
    const MemoryStorage nothing{MemoryStorage::Content{}};
    PageCache cache{nothing};
    PageReader pages{nothing, cache};
    for (int round = 0; round < 500; ++round) {
        const auto bits = random.next();
        Guid guid;
        for (auto& byte : guid.bytes) byte = static_cast<std::uint8_t>(random.next());
        Binary bytes(random.below(20));
        for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random.next());
        const std::vector<std::pair<ColumnType, Value>> values{
            {ColumnType::Byte, static_cast<std::uint8_t>(bits)},
            {ColumnType::Integer, static_cast<std::int16_t>(bits)},
            {ColumnType::Long, static_cast<std::int32_t>(bits)},
            {ColumnType::Currency, Currency{static_cast<std::int64_t>(bits)}},
            {ColumnType::Single, static_cast<float>(static_cast<std::int64_t>(bits)) / 7.0f},
            {ColumnType::Double, static_cast<double>(static_cast<std::int64_t>(bits)) / 7.0},
            {ColumnType::Date, Date{static_cast<double>(bits % 4000000) / 7.0 - 50000}},
            {ColumnType::Binary, bytes},
            {ColumnType::Guid, guid},
            {ColumnType::Numeric, Numeric{.negative = random.oneIn(2),
                                          .scale = 4,
                                          .magnitude = {0, static_cast<std::uint32_t>(bits >> 40),
                                                        static_cast<std::uint32_t>(bits >> 8),
                                                        static_cast<std::uint32_t>(bits)}}}};
        for (const auto& [type, value] : values) {
            Column column = columnOf(type, 40);
            column.scale = 4;
            Binary stored;
            encodeValue(value, column, stored);
            const StoredField field{.null = false, .truth = false, .bytes = stored};
            ASSERT_EQ(decodeField(pages, column, field, PageNumber{1}), value)
                << static_cast<int>(type);
        }
    }
}

}  // namespace
}  // namespace jet

#include "engine/jet/value.h"

#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/memory_pages.h"
#include "tests/support/byte_writer.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

namespace jet {
namespace {

using fixture::ByteVector;

constexpr PageNumber kPage{1};

Value decode(ColumnType type, const ByteVector& bytes, std::uint8_t scale = 0) {
    static MemoryPages pages{numberedPages(2)};
    PageReader reader = pages.reader();
    Column column;
    column.type = type;
    column.scale = scale;
    return decodeField(reader, column, {.null = false, .truth = false, .bytes = bytes}, kPage);
}

template <typename T>
ByteVector bytesOf(T value) {
    ByteVector bytes;
    fixture::append(bytes, value);
    return bytes;
}

TEST(Value, NullOfEveryType) {
    MemoryPages pages{numberedPages(2)};
    PageReader reader = pages.reader();
    for (unsigned type = 0; type < 256; ++type) {
        Column column;
        column.type = ColumnType{static_cast<std::uint8_t>(type)};
        EXPECT_TRUE(isNull(decodeField(reader, column, {}, kPage)));
    }
}

TEST(Value, Booleans) {
    MemoryPages pages{numberedPages(2)};
    PageReader reader = pages.reader();
    Column column;
    column.type = ColumnType::Boolean;
    EXPECT_EQ(decodeField(reader, column, {.null = false, .truth = true, .bytes = {}}, kPage),
              Value{true});
    EXPECT_EQ(decodeField(reader, column, {.null = false, .truth = false, .bytes = {}}, kPage),
              Value{false});
}

template <typename T>
void expectLimits(ColumnType type) {
    for (T number : {std::numeric_limits<T>::lowest(), std::numeric_limits<T>::max(), T{0}, T{1}}) {
        EXPECT_EQ(decode(type, bytesOf(number)), Value{number});
    }
}

TEST(Value, Numbers) {
    expectLimits<std::uint8_t>(ColumnType::Byte);
    expectLimits<std::int16_t>(ColumnType::Integer);
    expectLimits<std::int32_t>(ColumnType::Long);
    expectLimits<float>(ColumnType::Single);
    expectLimits<double>(ColumnType::Double);
    EXPECT_EQ(decode(ColumnType::Integer, {0xFF, 0xFF}), Value{std::int16_t{-1}});
    EXPECT_EQ(decode(ColumnType::Byte, {0xFF}), Value{std::uint8_t{255}});
}

TEST(Value, Money) {
    for (const auto amount :
         {std::numeric_limits<std::int64_t>::min(), std::int64_t{-1}, std::int64_t{12345}}) {
        EXPECT_EQ(decode(ColumnType::Currency, bytesOf(amount)), Value{Currency{amount}});
    }
}

TEST(Value, DatesAreTheirDays) {
    for (double days : {0.0, -1.25, -657434.0, 2958465.99999, 38838.333}) {
        EXPECT_EQ(decode(ColumnType::Date, bytesOf(days)), Value{Date{days}});
    }
    // No date, but nothing that may stop a reader either.
    const Value odd = decode(ColumnType::Date, bytesOf(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_TRUE(std::isnan(std::get<Date>(odd).days));
}

TEST(Value, Texts) {
    EXPECT_EQ(decode(ColumnType::Text, {'a', 0}), Value{std::u16string{u"a"}});
    EXPECT_EQ(decode(ColumnType::Text, {0xFF, 0xFE, 'a', 'b', 'c'}), Value{std::u16string{u"abc"}});
    EXPECT_EQ(decode(ColumnType::Text, {}), Value{std::u16string{}});
    EXPECT_EQ(decode(ColumnType::Memo, {}), Value{std::u16string{}});
}

TEST(Value, Bytes) {
    EXPECT_EQ(decode(ColumnType::Binary, {1, 0, 255}), (Value{Binary{1, 0, 255}}));
    EXPECT_EQ(decode(ColumnType::Ole, {}), Value{Binary{}});
    for (const std::uint8_t type : std::initializer_list<std::uint8_t>{0, 13, 14, 17, 18, 255}) {
        EXPECT_EQ(decode(ColumnType{type}, {9, 8}), (Value{Binary{9, 8}}));
    }
}

TEST(Value, GuidsPrintTheirFirstGroupsTurnedAround) {
    ByteVector bytes(16);
    for (std::uint8_t i = 0; i < 16; ++i) bytes[i] = static_cast<std::uint8_t>(0xA0 + i);
    const Value value = decode(ColumnType::Guid, bytes);
    EXPECT_EQ(toText(std::get<Guid>(value)), "{A3A2A1A0-A5A4-A7A6-A8A9-AAABACADAEAF}");
    EXPECT_EQ(toText(Guid{}), "{00000000-0000-0000-0000-000000000000}");
}

ByteVector numericBytes(bool negative, std::array<std::uint32_t, 4> words) {
    ByteVector bytes{static_cast<std::uint8_t>(negative ? 0x80 : 0)};
    for (std::uint32_t word : words) fixture::append(bytes, word);
    return bytes;
}

std::string numericText(bool negative, std::array<std::uint32_t, 4> words, std::uint8_t scale) {
    const Value value = decode(ColumnType::Numeric, numericBytes(negative, words), scale);
    return toDecimalText(std::get<Numeric>(value));
}

TEST(Numeric, WholeNumbers) {
    EXPECT_EQ(numericText(false, {0, 0, 0, 0}, 0), "0");
    EXPECT_EQ(numericText(true, {0, 0, 0, 7}, 0), "-7");
    EXPECT_EQ(numericText(false, {0, 0, 0, 1000}, 0), "1000");
    EXPECT_EQ(numericText(false, {0, 0, 1, 0}, 0), "4294967296");
    // The 28 digits that a column can declare at most, and all that the bytes can hold.
    EXPECT_EQ(numericText(false, {0, 0x204FCE5E, 0x3E250261, 0x0FFFFFFF}, 0),
              "9999999999999999999999999999");
    EXPECT_EQ(numericText(true, {~0u, ~0u, ~0u, ~0u}, 0),
              "-340282366920938463463374607431768211455");
}

TEST(Numeric, Scales) {
    EXPECT_EQ(numericText(false, {0, 0, 0, 12345}, 2), "123.45");
    EXPECT_EQ(numericText(true, {0, 0, 0, 5}, 1), "-0.5");
    EXPECT_EQ(numericText(false, {0, 0, 0, 5}, 4), "0.0005");
    EXPECT_EQ(numericText(false, {0, 0, 0, 100}, 2), "1.00");
    EXPECT_EQ(numericText(false, {0, 0x204FCE5E, 0x3E250261, 0x0FFFFFFF}, 28),
              "0.9999999999999999999999999999");
    EXPECT_EQ(numericText(false, {0, 0, 0, 1}, 28), "0.0000000000000000000000000001");
    EXPECT_EQ(numericText(false, {0, 0, 0, 1}, 255).size(), 257u);
}

TEST(Numeric, ZeroHasNoSign) {
    EXPECT_EQ(numericText(true, {0, 0, 0, 0}, 0), "0");
    EXPECT_EQ(numericText(true, {0, 0, 0, 0}, 2), "0.00");
}

}  // namespace
}  // namespace jet

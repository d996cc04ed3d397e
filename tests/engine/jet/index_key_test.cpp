#include "engine/jet/index_key.h"

#include "tests/engine/jet/hex.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace jet {
namespace {

Column columnOf(ColumnType type) {
    Column column;
    column.type = type;
    column.collation = {0x0409, 0};
    return column;
}

Key keyOf(ColumnType type, const Value& value, bool ascending = true) {
    Key key;
    appendKeyPart(value, columnOf(type), ascending, key);
    return key;
}

std::string ascending(ColumnType type, const Value& value) { return hex(keyOf(type, value)); }
std::string descending(ColumnType type, const Value& value) {
    return hex(keyOf(type, value, false));
}

/// Checks that values which ascend have ascending keys, and descending ones the other way.
void expectOrder(ColumnType type, const std::vector<Value>& values) {
    for (std::size_t i = 1; i < values.size(); ++i) {
        EXPECT_LT(keyOf(type, values[i - 1]), keyOf(type, values[i])) << "place " << i;
        EXPECT_GT(keyOf(type, values[i - 1], false), keyOf(type, values[i], false))
            << "place " << i;
    }
}

TEST(IndexKey, OfNullIsAFlagAlone) {
    for (const auto type : {ColumnType::Long, ColumnType::Text, ColumnType::Binary}) {
        EXPECT_EQ(ascending(type, {}), "00");
        EXPECT_EQ(descending(type, {}), "FF");
    }
    expectOrder(ColumnType::Text, {Value{}, std::u16string{}, std::u16string{u"a"}});
}

TEST(IndexKey, OfIntegers) {
    EXPECT_EQ(ascending(ColumnType::Long, 1), "7F80000001");
    EXPECT_EQ(ascending(ColumnType::Long, -1), "7F7FFFFFFF");
    EXPECT_EQ(descending(ColumnType::Long, 1), "807FFFFFFE");
    EXPECT_EQ(ascending(ColumnType::Byte, std::uint8_t{200}), "7FC8");
    EXPECT_EQ(descending(ColumnType::Byte, std::uint8_t{200}), "8037");
    EXPECT_EQ(ascending(ColumnType::Integer, std::int16_t{-2}), "7F7FFE");
    EXPECT_EQ(ascending(ColumnType::Currency, Currency{10'000}), "7F8000000000002710");
    expectOrder(ColumnType::Long,
                {std::numeric_limits<int>::min(), -2, -1, 0, 1, std::numeric_limits<int>::max()});
    expectOrder(ColumnType::Currency, {Currency{std::numeric_limits<std::int64_t>::min()},
                                       Currency{-1}, Currency{0}, Currency{1}});
}

TEST(IndexKey, OfFloatingPoint) {
    EXPECT_EQ(ascending(ColumnType::Date, Date{2.0}), "7FC000000000000000");
    EXPECT_EQ(ascending(ColumnType::Double, -2.0), "7F3FFFFFFFFFFFFFFF");
    EXPECT_EQ(descending(ColumnType::Double, 2.0), "803FFFFFFFFFFFFFFF");
    EXPECT_EQ(ascending(ColumnType::Single, 1.0F), "7FBF800000");
    expectOrder(ColumnType::Double, {-HUGE_VAL, -1e300, -1.5, -1e-300, 0.0, 1e-300, 1.5, HUGE_VAL});
    expectOrder(ColumnType::Single, {-1e30F, -1.0F, 0.0F, 0.5F, 1e30F});
    expectOrder(ColumnType::Date, {Date{-657434.0}, Date{-0.5}, Date{0.0}, Date{38000.25}});
}

TEST(IndexKey, OfBooleansPutsTrueFirst) {
    EXPECT_EQ(ascending(ColumnType::Boolean, true), "7F00");
    EXPECT_EQ(ascending(ColumnType::Boolean, false), "7FFF");
    EXPECT_EQ(descending(ColumnType::Boolean, true), "80FF");
    EXPECT_EQ(descending(ColumnType::Boolean, false), "8000");
}

TEST(IndexKey, OfBinaryGoesInGroupsOfEight) {
    EXPECT_EQ(ascending(ColumnType::Binary, Binary{0, 0, 0, 1}), "7F000000010000000004");
    EXPECT_EQ(descending(ColumnType::Binary, Binary{0, 0, 0, 1}), "80FFFFFFFEFFFFFFFFFB");
    EXPECT_EQ(ascending(ColumnType::Binary, Binary(8, 0xAB)), "7FABABABABABABABAB08");
    EXPECT_EQ(ascending(ColumnType::Binary, Binary(9, 0xAB)),
              "7FABABABABABABABAB09AB0000000000000001");
    EXPECT_EQ(descending(ColumnType::Binary, Binary(9, 0xAB)),
              "80545454545454545409"
              "54FFFFFFFFFFFFFFFE");
    EXPECT_EQ(ascending(ColumnType::Binary, Binary{}), "7F");
    expectOrder(ColumnType::Binary, {Binary{1}, Binary{1, 0}, Binary{1, 1}, Binary{2}});
}

TEST(IndexKey, OfGuidsIsInPrintedOrder) {
    Guid guid;
    for (std::uint8_t i = 0; i < 16; ++i) guid.bytes[i] = i;
    EXPECT_EQ(ascending(ColumnType::Guid, guid),
              "7F030201000504070609"
              "08090A0B0C0D0E0F08");
}

TEST(IndexKey, OfDecimals) {
    const Numeric five{false, 0, {0, 0, 0, 5}};
    const Numeric minusFive{true, 0, {0, 0, 0, 5}};
    EXPECT_EQ(ascending(ColumnType::Numeric, five), "7FFF" + std::string(30, '0') + "05");
    EXPECT_EQ(ascending(ColumnType::Numeric, minusFive), "7F00" + std::string(30, 'F') + "FA");
    EXPECT_EQ(descending(ColumnType::Numeric, five), "80FF" + std::string(30, 'F') + "FA");
    EXPECT_EQ(descending(ColumnType::Numeric, minusFive), "8000" + std::string(30, '0') + "05");
}

TEST(IndexKey, OfTextTakesTheFirst255Characters) {
    EXPECT_EQ(ascending(ColumnType::Text, std::u16string{u"O'Brien"}),
              "7F644C6959516201010101800B068000");
    EXPECT_EQ(descending(ColumnType::Memo, std::u16string{u"notifier"}),
              "809D9B92A6ACA6AE96FEFF00");
    const std::u16string longest(255, u'x');
    EXPECT_EQ(keyOf(ColumnType::Text, longest).size(), 258u);
    EXPECT_EQ(keyOf(ColumnType::Memo, longest + u"more"), keyOf(ColumnType::Memo, longest));
}

TEST(IndexKey, RefusesWhatHasNone) {
    EXPECT_THROW(keyOf(ColumnType::Ole, Binary{1}), std::invalid_argument);
    EXPECT_THROW(keyOf(ColumnType::InternalBinary, Binary{1}), std::invalid_argument);
    EXPECT_THROW(keyOf(ColumnType::Long, std::u16string{u"1"}), std::invalid_argument);
    Column chinese = columnOf(ColumnType::Text);
    chinese.collation = {0x0804, 0};
    Key key;
    EXPECT_THROW(appendKeyPart(std::u16string{u"a"}, chinese, true, key), std::invalid_argument);
}

TEST(IndexKey, OfSeveralColumnsIsOnePartAfterTheOther) {
    TableDefinition definition;
    definition.columns = {columnOf(ColumnType::Text), columnOf(ColumnType::Long)};
    definition.columns[0].id = 4;
    definition.columns[1].id = 9;
    PhysicalIndex index;
    index.columns = {{9, false}, {4, true}};
    const std::vector<Value> values{1, std::u16string{u"coop"}};
    EXPECT_EQ(hex(encodeKey(values, definition, index)),
              "807FFFFFFE"
              "7F4D6464660100");
    EXPECT_TRUE(canMakeKeys(definition, index));

    EXPECT_THROW(encodeKey(std::span{values}.first(1), definition, index), std::invalid_argument);
    index.columns[0].columnId = 5;
    EXPECT_FALSE(canMakeKeys(definition, index));
    EXPECT_THROW(encodeKey(values, definition, index), std::invalid_argument);
}

}  // namespace
}  // namespace jet

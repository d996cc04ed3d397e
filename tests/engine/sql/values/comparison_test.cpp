#include "engine/sql/values/comparison.h"

#include "tests/support/random.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

namespace {

jet::Numeric numeric(bool negative, std::uint8_t scale, std::uint32_t high, std::uint32_t low) {
    return {negative, scale, {0, 0, high, low}};
}

int order(const jet::Value& left, const jet::Value& right) {
    const auto result = sql::compareValues(left, right);
    return result < 0 ? -1 : result > 0 ? 1 : 0;
}

TEST(Comparison, IsExactWhereNumbersAre) {
    const auto huge = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(order(jet::Currency{huge}, jet::Currency{huge - 1}), 1);
    EXPECT_EQ(order(jet::Currency{20000}, std::int32_t{2}), 0);
    EXPECT_EQ(order(numeric(false, 2, 0, 150), 1.5), 0);
    EXPECT_EQ(order(numeric(false, 2, 0, 150), numeric(false, 1, 0, 15)), 0);
    EXPECT_EQ(order(numeric(true, 2, 0, 150), numeric(true, 2, 0, 149)), -1);
    EXPECT_EQ(order(numeric(true, 2, 0, 0), std::int32_t{0}), 0);
    EXPECT_EQ(order(numeric(false, 0, 1u << 30, 1), numeric(false, 0, 1u << 30, 0)), 1);
    EXPECT_EQ(order(numeric(false, 3, 0, 1), jet::Currency{11}), -1);
    EXPECT_EQ(order(std::uint8_t{255}, std::int16_t{-1}), 1);
    EXPECT_EQ(order(true, std::int32_t{-1}), 0);
    EXPECT_EQ(order(0.5f, 0.5), 0);
    EXPECT_EQ(order(jet::Date{2.5}, 2.5), 0);
}

TEST(Comparison, PlacesWhatIsNoNumberBelowAll) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(order(none, none), 0);
    EXPECT_EQ(order(none, -std::numeric_limits<double>::infinity()), -1);
    EXPECT_EQ(order(0.0, -0.0), 0);
}

std::vector<std::uint8_t> key(const jet::Value& value, jet::ColumnType type, bool ascending) {
    sql::OrderKey bytes;
    sql::appendOrderKey(value, type, ascending, bytes);
    return bytes;
}

void expectKeysOrderAs(const std::vector<jet::Value>& values, jet::ColumnType type) {
    for (const jet::Value& left : values) {
        for (const jet::Value& right : values) {
            const int expected = order(left, right);
            const auto sign = [](auto ordering) {
                return ordering < 0 ? -1 : ordering > 0 ? 1 : 0;
            };
            EXPECT_EQ(sign(key(left, type, true) <=> key(right, type, true)), expected);
            EXPECT_EQ(sign(key(right, type, false) <=> key(left, type, false)), expected);
        }
        EXPECT_LT(key({}, type, true), key(left, type, true));
        EXPECT_GT(key({}, type, false), key(left, type, false));
    }
}

TEST(Comparison, KeysOrderAsTheirValuesDo) {
    const double infinity = std::numeric_limits<double>::infinity();
    expectKeysOrderAs({-infinity, -1e300, -1.5, -0.0, 0.0, 1e-300, 2.0, infinity,
                       std::numeric_limits<double>::quiet_NaN()},
                      jet::ColumnType::Double);
    expectKeysOrderAs(
        {std::int32_t{INT32_MIN}, std::int32_t{-1}, std::int32_t{0}, std::int32_t{INT32_MAX}},
        jet::ColumnType::Long);
    expectKeysOrderAs({jet::Currency{INT64_MIN}, jet::Currency{-1}, jet::Currency{INT64_MAX - 1},
                       jet::Currency{INT64_MAX}},
                      jet::ColumnType::Currency);
    expectKeysOrderAs({numeric(true, 2, 7, 1), numeric(true, 2, 0, 9), numeric(true, 2, 0, 0),
                       numeric(false, 2, 0, 0), numeric(false, 2, 0, 9), numeric(false, 2, 1, 0)},
                      jet::ColumnType::Numeric);
    expectKeysOrderAs({std::u16string{}, std::u16string{u"a"}, std::u16string{u"A "},
                       std::u16string{u"ab"}, std::u16string{u"á"}, std::u16string{u"co-op"},
                       std::u16string{u"coop"}, std::u16string{u"日本"}},
                      jet::ColumnType::Text);
    expectKeysOrderAs({jet::Binary{}, jet::Binary{0}, jet::Binary{0, 0}, jet::Binary{0, 1},
                       jet::Binary{1}, jet::Binary{255, 255}},
                      jet::ColumnType::Binary);
    expectKeysOrderAs({true, false}, jet::ColumnType::Boolean);
}

TEST(Comparison, DecidesTruth) {
    EXPECT_EQ(sql::truth({}), std::nullopt);
    EXPECT_EQ(sql::truth(true), true);
    EXPECT_EQ(sql::truth(std::int32_t{-1}), true);
    EXPECT_EQ(sql::truth(0.0), false);
    EXPECT_EQ(sql::truth(jet::Date{0}), false);
    EXPECT_EQ(sql::truth(jet::Currency{1}), true);
}

}  // namespace

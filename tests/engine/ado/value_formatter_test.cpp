#include "engine/ado/value_formatter.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using ado::ValueFormatter;

std::u16string text(const jet::Value& value) {
    std::u16string out;
    ValueFormatter{}.append(value, out);
    return out;
}

TEST(ValueFormatter, EveryType) {
    EXPECT_EQ(text({}), u"");
    EXPECT_EQ(text(true), u"True");
    EXPECT_EQ(text(false), u"False");
    EXPECT_EQ(text(std::uint8_t{255}), u"255");
    EXPECT_EQ(text(std::int16_t{-32768}), u"-32768");
    EXPECT_EQ(text(std::numeric_limits<std::int32_t>::min()), u"-2147483648");
    EXPECT_EQ(text(0.1f), u"0.1");
    EXPECT_EQ(text(0.1), u"0.1");
    EXPECT_EQ(text(std::u16string{u"\u00C4 text"}), u"\u00C4 text");
    EXPECT_EQ(text(jet::Binary{0x00, 0xAB}), u"0x00AB");
    EXPECT_EQ(text(jet::Guid{}), u"{00000000-0000-0000-0000-000000000000}");
    EXPECT_EQ(text(jet::Numeric{true, 2, {0, 0, 0, 12345}}), u"-123.45");
}

TEST(ValueFormatter, Currency) {
    EXPECT_EQ(text(jet::Currency{0}), u"0");
    EXPECT_EQ(text(jet::Currency{-12'500}), u"-1.25");
    EXPECT_EQ(text(jet::Currency{20'001}), u"2.0001");
    EXPECT_EQ(text(jet::Currency{std::numeric_limits<std::int64_t>::min()}),
              u"-922337203685477.5808");
}

TEST(ValueFormatter, Dates) {
    EXPECT_EQ(text(jet::Date{36'526.0}), u"2000-01-01 00:00:00");
    EXPECT_EQ(text(jet::Date{0.25}), u"1899-12-30 06:00:00");
    EXPECT_EQ(text(jet::Date{-1.25}), u"1899-12-29 06:00:00");
    EXPECT_EQ(text(jet::Date{2'958'465.999988426}), u"9999-12-31 23:59:59");
    EXPECT_EQ(text(jet::Date{1e9}), u"1000000000") << "no date of the calendar";
}

}  // namespace

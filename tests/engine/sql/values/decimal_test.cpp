#include "engine/sql/values/decimal.h"

#include <gtest/gtest.h>

namespace {

using sql::parseDecimal;
using sql::roundedDigits;

/// The digits of a text that is a number, rounded to `scale` places; its sign in front.
std::string rounded(std::u16string_view text, int scale) {
    const auto number = parseDecimal(text);
    if (!number) return "no number";
    const auto digits = roundedDigits(*number, scale);
    return digits ? (number->negative ? "-" : "") + *digits : "too many digits";
}

TEST(Decimal, ReadsNumbers) {
    EXPECT_EQ(rounded(u"12", 0), "12");
    EXPECT_EQ(rounded(u" -12.50\t", 2), "-1250");
    EXPECT_EQ(rounded(u"+.5", 1), "5");
    EXPECT_EQ(rounded(u"5.", 0), "5");
    EXPECT_EQ(rounded(u"00012", 0), "12");
    EXPECT_EQ(rounded(u"1.5E3", 0), "1500");
    EXPECT_EQ(rounded(u"15e-1", 1), "15");
    EXPECT_EQ(rounded(u"0", 4), "");
    EXPECT_EQ(rounded(u"-0.000", 4), "-");
}

TEST(Decimal, RefusesOtherTexts) {
    for (const auto text : {u"", u" ", u".", u"-", u"1 2", u"1.2.3", u"1,5", u"e5", u"1e", u"1e+",
                            u"--1", u"0x10", u"inf", u"nan", u"1e12345", u"12a", u"\u0661"}) {
        EXPECT_EQ(rounded(text, 0), "no number");
    }
}

TEST(Decimal, RoundsHalfToEven) {
    EXPECT_EQ(rounded(u"0.5", 0), "");
    EXPECT_EQ(rounded(u"1.5", 0), "2");
    EXPECT_EQ(rounded(u"2.5", 0), "2");
    EXPECT_EQ(rounded(u"2.5000001", 0), "3");
    EXPECT_EQ(rounded(u"2.4999999", 0), "2");
    EXPECT_EQ(rounded(u"9.96", 1), "100");
    EXPECT_EQ(rounded(u"0.96", 1), "10");
    EXPECT_EQ(rounded(u"0.6", 0), "1");
    EXPECT_EQ(rounded(u"0.04", 0), "");
    EXPECT_EQ(rounded(u"0.06", 0), "");
}

TEST(Decimal, BoundsItsLength) {
    EXPECT_EQ(rounded(u"1e39", 0), "1" + std::string(39, '0'));
    EXPECT_EQ(rounded(u"1e40", 0), "too many digits");
    EXPECT_EQ(rounded(u"1e9999", 4), "too many digits");
    EXPECT_EQ(rounded(u"1e-9999", 4), "");
}

}  // namespace

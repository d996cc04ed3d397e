#include "engine/sql/values/text_form.h"

#include <gtest/gtest.h>

namespace sql {
namespace {

std::u16string textOf(const jet::Value& value) {
    std::u16string text;
    appendText(value, text);
    return text;
}

// Seven digits of a single and fifteen of a double are exact.
TEST(TextForm, FloatingPointNumbersShowTheDigitsTheyHold) {
    EXPECT_EQ(textOf(1 / 3.0f), u"0.3333333");
    EXPECT_EQ(textOf(16777216.0f), u"1.677722E+07");
    EXPECT_EQ(textOf(1 / 3.0), u"0.333333333333333");
    EXPECT_EQ(textOf(0.1 + 0.2), u"0.3");
    EXPECT_EQ(textOf(-2.5), u"-2.5");
}

TEST(TextForm, AmountsShowNoZerosBehindTheirLastDigit) {
    EXPECT_EQ(textOf(jet::Currency{123'4500}), u"123.45");
    EXPECT_EQ(textOf(jet::Currency{-10'0000}), u"-10");
    EXPECT_EQ(textOf(jet::Currency{-1}), u"-0.0001");
}

TEST(TextForm, TruthIsANumberAndNullIsNothing) {
    EXPECT_EQ(textOf(true), u"-1");
    EXPECT_EQ(textOf(false), u"0");
    EXPECT_EQ(textOf({}), u"");
}

}  // namespace
}  // namespace sql

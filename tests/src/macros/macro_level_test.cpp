#include "src/macros/macro_level.h"

#include "src/log/procedure.h"

#include <gtest/gtest.h>

namespace {

using macros::keyNamesLevel;
using macros::toLevel;

void expectOverflow(std::u16string_view text) {
    try {
        toLevel(text);
        FAIL() << "a number beyond 16 bits was accepted";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.failure().number, 6);
        EXPECT_EQ(error.failure().description, u"Overflow");
    }
}

TEST(MacroLevelTest, TakesTheNumberAtTheBeginning) {
    EXPECT_EQ(toLevel(u"12"), 12);
    EXPECT_EQ(toLevel(u"-3"), -3);
    EXPECT_EQ(toLevel(u"+7"), 7);
    EXPECT_EQ(toLevel(u" \t 11abc"), 11);
    EXPECT_EQ(toLevel(u"007"), 7);
    EXPECT_EQ(toLevel(u"1e2"), 100);
    EXPECT_EQ(toLevel(u"1e+2x"), 100);
    EXPECT_EQ(toLevel(u"5em"), 5);
    EXPECT_EQ(toLevel(u"25e-1"), 2);
}

TEST(MacroLevelTest, NoNumberIsZero) {
    for (const auto* text :
         {u"", u" ", u"x", u"x12", u"-", u".", u"e5", u"--5", u"+-5", u"\u0661"}) {
        EXPECT_EQ(toLevel(text), 0);
    }
    EXPECT_EQ(toLevel(u"1e-999999999"), 0);
}

TEST(MacroLevelTest, HalvesGoToTheEvenNeighbour) {
    EXPECT_EQ(toLevel(u"12.5"), 12);
    EXPECT_EQ(toLevel(u"13.5"), 14);
    EXPECT_EQ(toLevel(u"-0.5"), 0);
    EXPECT_EQ(toLevel(u"-1.5"), -2);
    EXPECT_EQ(toLevel(u".75"), 1);
    EXPECT_EQ(toLevel(u"12.4999"), 12);
}

TEST(MacroLevelTest, SixteenBitsAreTheLimit) {
    EXPECT_EQ(toLevel(u"32767"), 32767);
    EXPECT_EQ(toLevel(u"32767.4"), 32767);
    EXPECT_EQ(toLevel(u"-32768.5"), -32768);
    expectOverflow(u"32767.5");
    expectOverflow(u"32768");
    expectOverflow(u"-32769");
    expectOverflow(u"99999");
    expectOverflow(u"1e999999999");
    expectOverflow(std::u16string(100'000, u'9'));
}

TEST(MacroLevelTest, ALevelIsLookedForAnywhereInTheKey) {
    EXPECT_TRUE(keyNamesLevel(u"Notifier_MsgSvc_12_CSession", 12));
    EXPECT_TRUE(keyNamesLevel(u"Notifier_MsgSvc_12_CSession", 1));
    EXPECT_TRUE(keyNamesLevel(u"Notifier2_MsgSvc_30_CSession", 2));
    EXPECT_TRUE(keyNamesLevel(u"A_B_-5_C", -5));
    EXPECT_FALSE(keyNamesLevel(u"A_B_5_C", -5));
    EXPECT_FALSE(keyNamesLevel(u"Notifier_MsgSvc_12_CSession", 3));
    EXPECT_FALSE(keyNamesLevel(u"", 0));
}

}  // namespace

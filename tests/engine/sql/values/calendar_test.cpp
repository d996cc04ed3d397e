#include "engine/sql/values/calendar.h"

#include "engine/jet/text.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

std::optional<double> days(std::u16string_view text) {
    const auto date = sql::parseDate(text);
    return date ? std::optional{date->days} : std::nullopt;
}

TEST(Calendar, ReadsTheFormsOfALiteral) {
    EXPECT_EQ(days(u"12/30/1899"), 0);
    EXPECT_EQ(days(u"1/1/1900"), 2);
    EXPECT_EQ(days(u"2006-05-02 12:00:00"), 38839.5);
    EXPECT_EQ(days(u"5/2/2006 6:00 PM"), 38839.75);
    EXPECT_EQ(days(u"5/2/2006 12:00 AM"), 38839);
    EXPECT_EQ(days(u"6:00"), 0.25);
    EXPECT_EQ(days(u"12/29/1899 6:00"), -1.25);
    EXPECT_EQ(days(u"25/12/2006"), days(u"12/25/2006"));
    EXPECT_EQ(days(u"5/2/06"), days(u"5/2/2006"));
    EXPECT_EQ(days(u"5/2/30"), days(u"5/2/1930"));
    EXPECT_EQ(days(u" 2/29/2000 "), 36585);
}

TEST(Calendar, RefusesWhatIsNoDate) {
    for (const auto text :
         {u"", u"x", u"2/29/1900", u"13/13/2000", u"1/1", u"1/1/2000 25:00", u"1/1/2000 1:60",
          u"1/1/2000 13:00 PM", u"1/1/2000 x", u"1/1/99999", u"1-1/2000", u"1:00 XM"}) {
        EXPECT_EQ(days(text), std::nullopt) << jet::toUtf8(text);
    }
}

TEST(Calendar, FindsEveryDayAgain) {
    for (double day = -657434; day < 2958466; day += 97) {
        const auto time = sql::toCalendar(jet::Date{day});
        ASSERT_TRUE(time) << day;
        const auto back = sql::fromCalendar(*time);
        ASSERT_TRUE(back) << day;
        ASSERT_EQ(back->days, day);
    }
}

TEST(Calendar, RoundsToSeconds) {
    const auto time = sql::toCalendar(jet::Date{1.999999});
    ASSERT_TRUE(time);
    EXPECT_EQ(time->year, 1900);
    EXPECT_EQ(time->month, 1);
    EXPECT_EQ(time->day, 1);
    EXPECT_EQ(time->hour, 0);
    EXPECT_EQ(time->second, 0);
}

TEST(Calendar, HasNoDatesOutsideItsYears) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double odd : {1e300, -1e300, infinity, -infinity, infinity - infinity, 2958466.0,
                             2958465.9999999, -657435.5}) {
        EXPECT_FALSE(sql::toCalendar(jet::Date{odd})) << odd;
        EXPECT_EQ(sql::generalDate(jet::Date{odd}), u"");
    }
    EXPECT_TRUE(sql::toCalendar(jet::Date{-657434}));
    EXPECT_TRUE(sql::toCalendar(jet::Date{2958465.5}));
}

TEST(Calendar, WritesTheGeneralForm) {
    EXPECT_EQ(sql::generalDate(jet::Date{38839.75}), u"2006-05-02 18:00:00");
    EXPECT_EQ(sql::generalDate(jet::Date{38839}), u"2006-05-02");
    EXPECT_EQ(sql::generalDate(jet::Date{0.25}), u"06:00:00");
    EXPECT_EQ(sql::generalDate(jet::Date{0}), u"1899-12-30");
    EXPECT_EQ(sql::generalDate(jet::Date{-1.25}), u"1899-12-29 06:00:00");
}

}  // namespace

// Dates between their stored form, days since 1899-12-30, and the calendar.
//
//   if (auto time = sql::toCalendar(date)) show(time->year, time->month, time->day);
//
// Pure functions; any thread may call them.
#pragma once

#include "engine/jet/value.h"

#include <optional>
#include <string>
#include <string_view>

namespace sql {

struct CalendarTime {
    int year = 1899;
    int month = 12;
    int day = 30;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

/// Rounded to the nearest second. Nothing for a date outside of the years 100 to 9999.
std::optional<CalendarTime> toCalendar(jet::Date date);

/// Nothing if there is no such day or time.
std::optional<jet::Date> fromCalendar(const CalendarTime& time);

/// Parses "m/d/yyyy", "yyyy-mm-dd", "h:mm[:ss] [AM|PM]" or a date and a time. A month above 12 is
/// taken as the day if possible; two-digit years are 1930 to 2029. Nothing if it does not parse.
std::optional<jet::Date> parseDate(std::u16string_view text);

/// "yyyy-mm-dd hh:mm:ss"; only the date at midnight, only the time on day zero.
std::u16string generalDate(jet::Date date);

}  // namespace sql

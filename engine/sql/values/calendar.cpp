#include "engine/sql/values/calendar.h"

#include <cmath>
#include <cstdlib>
#include <vector>

namespace sql {

namespace {

constexpr int kSecondsPerDay = 86400;
constexpr std::int64_t kDayZero = 25569;  ///< days from 1899-12-30 to 1970-01-01

/// Days since 1970-01-01 of a day of the Gregorian calendar. Years count from March here, so that
/// the leap day is the last of its year; 400 years are 146,097 days.
std::int64_t daysFromCalendar(int year, int month, int day) {
    const std::int64_t shifted = month > 2 ? year : year - 1;
    const std::int64_t era = (shifted >= 0 ? shifted : shifted - 399) / 400;
    const std::int64_t yearOfEra = shifted - era * 400;
    const std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 719468;
}

/// The inverse of daysFromCalendar.
CalendarTime calendarFromDays(std::int64_t days) {
    const std::int64_t shifted = days + 719468;
    const std::int64_t era = (shifted >= 0 ? shifted : shifted - 146096) / 146097;
    const std::int64_t dayOfEra = shifted - era * 146097;
    const std::int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t month = (5 * dayOfYear + 2) / 153;
    CalendarTime time;
    time.day = static_cast<int>(dayOfYear - (153 * month + 2) / 5 + 1);
    time.month = static_cast<int>(month < 10 ? month + 3 : month - 9);
    time.year = static_cast<int>(yearOfEra + era * 400 + (time.month <= 2 ? 1 : 0));
    return time;
}

bool isDay(const CalendarTime& time) {
    if (time.year < 100 || time.year > 9999 || time.month < 1 || time.month > 12) return false;
    if (time.day < 1 || time.day > 31) return false;
    const auto back = calendarFromDays(daysFromCalendar(time.year, time.month, time.day));
    return back.month == time.month && back.day == time.day;
}

bool isTimeOfDay(const CalendarTime& time) {
    return time.hour >= 0 && time.hour < 24 && time.minute >= 0 && time.minute < 60 &&
           time.second >= 0 && time.second < 60;
}

int fullYear(int year, std::size_t digits) {
    if (digits > 2) return year;
    return year < 30 ? 2000 + year : 1900 + year;
}

/// Walks over the text of a date literal.
class DateText {
public:
    explicit DateText(std::u16string_view text) : text_{text} {}

    std::optional<jet::Date> parse() {
        if (!number()) return std::nullopt;
        const char16_t separator = peek();
        if (separator == u':') return time() && atEnd() ? fromCalendar(time_) : std::nullopt;
        if (!day(separator)) return std::nullopt;
        skipBlanks();
        if (atEnd()) return fromCalendar(time_);
        return number() && time() && atEnd() ? fromCalendar(time_) : std::nullopt;
    }

private:
    char16_t peek() const { return at_ < text_.size() ? text_[at_] : u'\0'; }
    bool atEnd() {
        skipBlanks();
        return at_ == text_.size();
    }

    void skipBlanks() {
        while (peek() == u' ') ++at_;
    }

    bool take(char16_t c) {
        if (peek() != c) return false;
        ++at_;
        return true;
    }

    bool number() {
        skipBlanks();
        const std::size_t start = at_;
        for (number_ = 0; peek() >= u'0' && peek() <= u'9' && at_ - start < 4; ++at_) {
            number_ = number_ * 10 + (peek() - u'0');
        }
        digits_ = at_ - start;
        return digits_ > 0;
    }

    /// The first number is read; two more follow.
    bool day(char16_t separator) {
        if (separator != u'/' && separator != u'-') return false;
        const bool yearFirst = digits_ > 2;
        const int first = number_;
        if (!take(separator) || !number()) return false;
        const int second = number_;
        if (!take(separator) || !number()) return false;
        time_.year = yearFirst ? first : fullYear(number_, digits_);
        time_.month = yearFirst ? second : first;
        time_.day = yearFirst ? number_ : second;
        if (!yearFirst && time_.month > 12 && time_.day <= 12) std::swap(time_.month, time_.day);
        return isDay(time_);
    }

    /// The hour is read.
    bool time() {
        time_.hour = number_;
        if (!take(u':') || !number()) return false;
        time_.minute = number_;
        if (take(u':')) {
            if (!number()) return false;
            time_.second = number_;
        }
        skipBlanks();
        const char16_t half = static_cast<char16_t>(peek() | 0x20);
        if (half != u'a' && half != u'p') return isTimeOfDay(time_);
        ++at_;
        if ((peek() | 0x20) != u'm') return false;
        ++at_;
        if (time_.hour < 1 || time_.hour > 12) return false;
        time_.hour = time_.hour % 12 + (half == u'p' ? 12 : 0);
        return isTimeOfDay(time_);
    }

    std::u16string_view text_;
    std::size_t at_ = 0;
    int number_ = 0;
    std::size_t digits_ = 0;
    CalendarTime time_;
};

void appendPadded(int value, int digits, std::u16string& out) {
    std::u16string reversed;
    for (int i = 0; i < digits || value > 0; ++i, value /= 10) {
        reversed += static_cast<char16_t>(u'0' + value % 10);
    }
    out.append(reversed.rbegin(), reversed.rend());
}

}  // namespace

std::optional<CalendarTime> toCalendar(jet::Date date) {
    constexpr double kFirst = -657434;  // 0100-01-01
    constexpr double kEnd = 2958466;    // 10000-01-01
    if (!(date.days > kFirst - 1 && date.days < kEnd)) return std::nullopt;
    const double whole = std::trunc(date.days);
    auto day = static_cast<std::int64_t>(whole);
    auto second = static_cast<int>(std::lround(std::fabs(date.days - whole) * kSecondsPerDay));
    if (second == kSecondsPerDay) {
        second = 0;
        ++day;
    }
    CalendarTime time = calendarFromDays(day - kDayZero);
    if (time.year < 100 || time.year > 9999) return std::nullopt;
    time.hour = second / 3600;
    time.minute = second / 60 % 60;
    time.second = second % 60;
    return time;
}

std::optional<jet::Date> fromCalendar(const CalendarTime& time) {
    if (!isDay(time) || !isTimeOfDay(time)) return std::nullopt;
    const auto day =
        static_cast<double>(daysFromCalendar(time.year, time.month, time.day) + kDayZero);
    const double fraction =
        (time.hour * 3600 + time.minute * 60 + time.second) / double{kSecondsPerDay};
    return jet::Date{day < 0 ? day - fraction : day + fraction};
}

std::optional<jet::Date> parseDate(std::u16string_view text) { return DateText{text}.parse(); }

std::u16string generalDate(jet::Date date) {
    const auto time = toCalendar(date);
    if (!time) return u"";
    const bool midnight = time->hour == 0 && time->minute == 0 && time->second == 0;
    const bool dayZero = std::fabs(date.days) < 1 && time->day == 30 && time->year == 1899;
    std::u16string out;
    if (!dayZero || midnight) {
        appendPadded(time->year, 4, out);
        out += u'-';
        appendPadded(time->month, 2, out);
        out += u'-';
        appendPadded(time->day, 2, out);
        if (midnight) return out;
        out += u' ';
    }
    appendPadded(time->hour, 2, out);
    out += u':';
    appendPadded(time->minute, 2, out);
    out += u':';
    appendPadded(time->second, 2, out);
    return out;
}

}  // namespace sql

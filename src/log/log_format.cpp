#include "src/log/log_format.h"

#include "src/log/procedure.h"
#include "src/text/text.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace logformat {
namespace {

constexpr std::size_t kLevelWidth = 7;
constexpr std::size_t kLabelWidth = 45;
constexpr std::size_t kHeaderWidth = 120;
constexpr std::u16string_view kLineEnd = u"\r\n";

constexpr std::array<std::u16string_view, 4> kLevelNames{u"Info", u"Warning", u"ERROR", u"VerInfo"};

struct Calendar {
    int year, month, day, hour, minute, second;
};

Calendar toCalendar(LocalSeconds time) {
    const LocalSeconds days = (time >= 0 ? time : time - (kDay - 1)) / kDay;
    const int rest = static_cast<int>(time - days * kDay);
    const std::chrono::year_month_day date{
        std::chrono::sys_days{std::chrono::days{static_cast<int>(days)}}};
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            rest / 3600,
            rest / 60 % 60,
            rest % 60};
}

template <typename... Numbers>
std::u16string print(const char* pattern, Numbers... numbers) {
    std::array<char, 64> text{};
    const int length = std::snprintf(text.data(), text.size(), pattern, numbers...);
    return fromAscii({text.data(), static_cast<std::size_t>(length)});
}

void appendTwoDigits(int number, std::u16string& out) {
    out.push_back(static_cast<char16_t>(u'0' + number / 10));
    out.push_back(static_cast<char16_t>(u'0' + number % 10));
}

std::u16string_view levelName(int level) {
    if (level < 0 || level >= static_cast<int>(kLevelNames.size())) {
        throw RuntimeError{RuntimeError::kSubscript, u"Subscript out of range"};
    }
    return kLevelNames[static_cast<std::size_t>(level)];
}

void appendRight(std::u16string_view text, std::size_t width, std::u16string& out) {
    if (text.size() < width) out.append(width - text.size(), u' ');
    out.append(text);
}

std::uint64_t rounded(std::uint64_t number, std::uint64_t unit) {
    return number / unit + (number % unit >= unit / 2 ? 1 : 0);
}

}  // namespace

std::u16string line(const Line& parts) {
    const std::u16string_view level = levelName(parts.level);
    const int rest = static_cast<int>(((parts.time % kDay) + kDay) % kDay);
    std::u16string text;
    text.reserve(64 + parts.indent.size() + parts.message.size());
    appendTwoDigits(rest / 3600, text);
    text.push_back(u':');
    appendTwoDigits(rest / 60 % 60, text);
    text.push_back(u':');
    appendTwoDigits(rest % 60, text);
    text.push_back(u' ');
    appendRight(level, kLevelWidth, text);
    text.append(u":(");
    appendRight(parts.label.substr(0, kLabelWidth), kLabelWidth, text);
    text.append(u") ");
    text.append(parts.indent);
    text.append(parts.message);
    return text;
}

std::u16string header(const LogProgram& program, std::u16string_view started) {
    const std::u16string stars(kHeaderWidth, u'*');
    std::u16string text{kLineEnd};
    text.append(stars).append(kLineEnd);
    text.append(program.baseName).append(u" Version: ").append(toText(program.major));
    text.append(u".").append(toText(program.minor)).append(u".").append(toText(program.revision));
    text.append(u"   Started: ").append(started).append(kLineEnd);
    text.append(stars).append(kLineEnd);
    return text;
}

std::u16string fileName(std::u16string_view baseName, LocalSeconds now) {
    const Calendar at = toCalendar(now);
    return std::u16string{baseName} + print("_%04d%02d%02d_%02d%02d%02d.LOG", at.year, at.month,
                                            at.day, at.hour, at.minute, at.second);
}

std::u16string isoDate(LocalSeconds time) {
    const Calendar at = toCalendar(time);
    return print("%04d-%02d-%02d %02d:%02d:%02d", at.year, at.month, at.day, at.hour, at.minute,
                 at.second);
}

std::u16string elapsed(double seconds, char16_t decimalPoint) {
    constexpr double kMillion = 1e6;
    const long long all = std::llround(seconds * kMillion);
    std::u16string text = print("%s%lld", all < 0 ? "-" : "", std::llabs(all) / 1000000);
    std::u16string decimals = print("%06lld", std::llabs(all) % 1000000);
    while (decimals.size() > 1 && decimals.back() == u'0') decimals.pop_back();
    text.push_back(decimalPoint);
    return text + decimals;
}

std::u16string millionsWithTenths(std::uint64_t bytes, char16_t decimalPoint) {
    const std::uint64_t tenths = rounded(bytes, 100'000);
    std::u16string text = toText(static_cast<std::int64_t>(tenths / 10));
    text.push_back(decimalPoint);
    if (tenths % 10 != 0) text += toText(static_cast<std::int64_t>(tenths % 10));
    return text;
}

std::u16string millions(std::uint64_t bytes, char16_t groupSeparator) {
    const std::uint64_t number = rounded(bytes, 1'000'000);
    if (number == 0) return {};
    std::u16string text = toText(static_cast<std::int64_t>(number));
    for (std::size_t at = text.size(); at > 3;) {
        at -= 3;
        text.insert(at, 1, groupSeparator);
    }
    return text;
}

std::u16string alignedRight(std::u16string_view text, std::size_t width) {
    std::u16string out;
    appendRight(text, width, out);
    return out;
}

std::u16string alignedLeft(std::u16string_view text, std::size_t width) {
    std::u16string out{text};
    if (out.size() < width) out.resize(width, u' ');
    return out;
}

LocalSeconds fromCalendar(int year, unsigned month, unsigned day, int hour, int minute,
                          int second) {
    const std::chrono::sys_days date =
        std::chrono::year{year} / static_cast<int>(month) / static_cast<int>(day);
    const LocalSeconds days = date.time_since_epoch().count();
    return days * kDay + hour * 3600 + minute * 60 + second;
}

}  // namespace logformat

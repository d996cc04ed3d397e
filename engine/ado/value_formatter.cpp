#include "engine/ado/value_formatter.h"

#include "engine/sql/values/calendar.h"
#include "engine/sql/values/text_form.h"

#include <array>
#include <charconv>
#include <string_view>

namespace ado {
namespace {

void appendWhole(int number, std::u16string& out) {
    std::array<char, 16> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    out.append(buffer.data(), end);
}

void appendPadded(int number, int width, std::u16string& out) {
    for (int power = width == 4 ? 1000 : 10; power > 0; power /= 10) {
        out.push_back(static_cast<char16_t>(u'0' + number / power % 10));
    }
}

void appendBinary(const jet::Binary& bytes, std::u16string& out) {
    constexpr std::string_view kHex = "0123456789ABCDEF";
    out.append(u"0x");
    for (const std::uint8_t byte : bytes) {
        out.push_back(static_cast<char16_t>(kHex[byte >> 4]));
        out.push_back(static_cast<char16_t>(kHex[byte & 0xF]));
    }
}

}  // namespace

void ValueFormatter::append(const jet::Value& value, std::u16string& out) const {
    std::visit(
        [&](const auto& held) {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, std::monostate> ||
                          std::is_same_v<Held, jet::Unreadable>) {
                return;
            } else if constexpr (std::is_same_v<Held, bool>) {
                appendTruth(held, out);
            } else if constexpr (std::is_integral_v<Held>) {
                appendWhole(static_cast<int>(held), out);
            } else if constexpr (std::is_same_v<Held, jet::Date>) {
                appendDate(held, out);
            } else if constexpr (std::is_same_v<Held, jet::Binary>) {
                appendBinary(held, out);
            } else if constexpr (std::is_same_v<Held, std::u16string>) {
                out.append(held);
            } else if constexpr (std::is_same_v<Held, jet::Guid>) {
                sql::appendText(value, out);
            } else {
                appendDecimal(value, out);
            }
        },
        value);
}

void ValueFormatter::appendDate(jet::Date date, std::u16string& out) const {
    const auto time = sql::toCalendar(date);
    if (!time) return appendDecimal(date.days, out);
    appendPadded(time->year, 4, out);
    out.push_back(u'-');
    appendPadded(time->month, 2, out);
    out.push_back(u'-');
    appendPadded(time->day, 2, out);
    out.push_back(u' ');
    appendPadded(time->hour, 2, out);
    out.push_back(u':');
    appendPadded(time->minute, 2, out);
    out.push_back(u':');
    appendPadded(time->second, 2, out);
}

void ValueFormatter::appendDecimal(const jet::Value& number, std::u16string& out) const {
    sql::appendText(number, out);
}

void ValueFormatter::appendTruth(bool truth, std::u16string& out) const {
    out.append(truth ? u"True" : u"False");
}

}  // namespace ado

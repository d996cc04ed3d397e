#include "engine/sql/values/text_form.h"

#include "engine/sql/values/calendar.h"
#include "engine/sql/values/error.h"

#include <array>
#include <charconv>
#include <string_view>

namespace sql {

namespace {

void appendAscii(std::string_view ascii, std::u16string& out) {
    out.append(ascii.begin(), ascii.end());
}

/// Digits that a number of the type can hold exactly: 15 of a double, 7 of a single.
template <typename Float>
void appendFloat(Float number, int digits, std::u16string& out) {
    std::array<char, 40> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                   std::chars_format::general, digits)
                         .ptr;
    for (const char* at = buffer.data(); at != end; ++at) {
        out += static_cast<char16_t>(*at == 'e' ? 'E' : *at);
    }
}

void appendCurrency(jet::Currency amount, std::u16string& out) {
    const bool negative = amount.tenThousandths < 0;
    const auto bits = static_cast<std::uint64_t>(amount.tenThousandths);
    const std::uint64_t magnitude = negative ? 0 - bits : bits;
    std::string text = (negative ? "-" : "") + std::to_string(magnitude / 10000);
    if (magnitude % 10000 != 0) {
        text += "." + std::to_string(10000 + magnitude % 10000).substr(1);
        text.erase(text.find_last_not_of('0') + 1);
    }
    appendAscii(text, out);
}

struct Appender {
    std::u16string& out;

    void operator()(std::monostate) const {}
    void operator()(const jet::Unreadable&) const {}
    void operator()(bool truth) const { out += truth ? u"-1" : u"0"; }
    void operator()(std::uint8_t number) const { appendAscii(std::to_string(number), out); }
    void operator()(std::int16_t number) const { appendAscii(std::to_string(number), out); }
    void operator()(std::int32_t number) const { appendAscii(std::to_string(number), out); }
    void operator()(jet::Currency amount) const { appendCurrency(amount, out); }
    void operator()(float number) const { appendFloat(number, 7, out); }
    void operator()(double number) const { appendFloat(number, 15, out); }
    void operator()(jet::Date date) const { out += generalDate(date); }
    void operator()(const std::u16string& text) const { out += text; }
    void operator()(const jet::Guid& guid) const { appendAscii(jet::toText(guid), out); }
    void operator()(const jet::Numeric& number) const {
        appendAscii(jet::toDecimalText(number), out);
    }
    void operator()(const jet::Binary&) const {
        throw Error{Fault::TypeMismatch, "Data type mismatch: a binary value cannot be text."};
    }
};

}  // namespace

void appendText(const jet::Value& value, std::u16string& out) { std::visit(Appender{out}, value); }

}  // namespace sql

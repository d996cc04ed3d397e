#include "tools/plain_form.h"

#include "engine/jet/bytes.h"
#include "engine/jet/text.h"
#include "engine/sql/values/calendar.h"

#include <charconv>
#include <cmath>
#include <string_view>

namespace plain {

namespace {

constexpr std::string_view kNull = "\\N";
constexpr std::string_view kUnreadable = "\\?";

template <typename Number>
void appendNumber(Number number, std::string& out) {
    std::array<char, 40> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    out.append(buffer.data(), end);
}

void putTwoDigits(char* at, int number) {
    at[0] = static_cast<char>('0' + number / 10);
    at[1] = static_cast<char>('0' + number % 10);
}

/// What stands for a character behind a backslash; 0 for characters that stand for themselves.
char escapeOf(char c) {
    switch (c) {
        case '\\':
            return '\\';
        case '\t':
            return 't';
        case '\r':
            return 'r';
        case '\n':
            return 'n';
        default:
            return 0;
    }
}

constexpr std::uint64_t repeated(std::uint8_t byte) { return 0x0101010101010101u * byte; }

/// Whether one of eight bytes is less than 0x10 or a backslash; bytes above 0x7F may be taken for
/// one of these.
bool mayNeedEscape(std::uint64_t eight) {
    const std::uint64_t backslash = eight ^ repeated('\\');
    const std::uint64_t hits = (eight - repeated(0x10)) | (backslash - repeated(0x01)) | eight;
    return (hits & repeated(0x80)) != 0;
}

/// The first place from `at` on where a character must be escaped; `end` if there is none.
const char* findEscape(const char* at, const char* end) {
    while (at < end) {
        while (end - at >= 8 && !mayNeedEscape(jet::load<std::uint64_t>(
                                    reinterpret_cast<const std::uint8_t*>(at)))) {
            at += 8;
        }
        const char* const stop = end - at < 8 ? end : at + 8;
        for (; at < stop; ++at) {
            if (escapeOf(*at) != 0) return at;
        }
    }
    return end;
}

}  // namespace

/// Escapes what was written from `start` on.
void FieldWriter::escapeFrom(std::size_t start) {
    const char* const end = out_.data() + out_.size();
    const char* const first = findEscape(out_.data() + start, end);
    if (first == end) return;
    unescaped_.assign(first, end);
    out_.resize(static_cast<std::size_t>(first - out_.data()));
    const char* const stop = unescaped_.data() + unescaped_.size();
    for (const char* at = unescaped_.data(); at < stop;) {
        const char* const next = findEscape(at, stop);
        out_.append(at, next);
        if (next == stop) return;
        out_ += '\\';
        out_ += escapeOf(*next);
        at = next + 1;
    }
}

void FieldWriter::storedText(jet::Bytes stored) {
    const std::size_t start = out_.size();
    jet::appendUtf8(stored, out_);
    escapeFrom(start);
}

void FieldWriter::text(std::u16string_view text) {
    const std::size_t start = out_.size();
    jet::appendUtf8(text, out_);
    escapeFrom(start);
}

/// Rows of a trace follow each other in time, so the day of the last date is mostly the next one's.
void FieldWriter::date(jet::Date date) {
    const double day = std::trunc(date.days);
    const double seconds = std::round(std::fabs(date.days - day) * 86400);
    if (dayText_.empty() || day != lastDay_ || !(seconds < 86400)) {
        const auto time = sql::toCalendar(date);
        if (!time) return appendNumber(date.days, out_);
        std::string text = "0000-00-00 ";
        putTwoDigits(text.data(), time->year / 100);
        putTwoDigits(text.data() + 2, time->year % 100);
        putTwoDigits(text.data() + 5, time->month);
        putTwoDigits(text.data() + 8, time->day);
        if (!(seconds < 86400)) {
            out_ += text + "00:00:00";
            return;
        }
        lastDay_ = day;
        dayText_ = std::move(text);
    }
    const auto second = static_cast<int>(seconds);
    std::array<char, 8> time{'0', '0', ':', '0', '0', ':', '0', '0'};
    putTwoDigits(time.data(), second / 3600);
    putTwoDigits(time.data() + 3, second / 60 % 60);
    putTwoDigits(time.data() + 6, second % 60);
    out_ += dayText_;
    out_.append(time.data(), time.size());
}

void FieldWriter::currency(jet::Currency amount) {
    const bool negative = amount.tenThousandths < 0;
    const auto bits = static_cast<std::uint64_t>(amount.tenThousandths);
    const std::uint64_t magnitude = negative ? 0 - bits : bits;
    if (negative) out_ += '-';
    appendNumber(magnitude / 10000, out_);
    std::array<char, 5> fraction{'.'};
    putTwoDigits(fraction.data() + 1, static_cast<int>(magnitude % 10000 / 100));
    putTwoDigits(fraction.data() + 3, static_cast<int>(magnitude % 100));
    out_.append(fraction.data(), fraction.size());
}

void FieldWriter::binary(jet::Bytes bytes) {
    constexpr std::string_view kHex = "0123456789abcdef";
    out_ += "0x";
    for (const std::uint8_t byte : bytes) {
        out_ += kHex[byte >> 4];
        out_ += kHex[byte & 0xF];
    }
}

void FieldWriter::value(const jet::Value& value) {
    struct Visitor {
        FieldWriter& writer;
        std::string& out;

        void operator()(std::monostate) const { out += kNull; }
        void operator()(const jet::Unreadable&) const { out += kUnreadable; }
        void operator()(bool truth) const { out += truth ? '1' : '0'; }
        void operator()(std::uint8_t number) const { appendNumber(unsigned{number}, out); }
        void operator()(std::int16_t number) const { appendNumber(number, out); }
        void operator()(std::int32_t number) const { appendNumber(number, out); }
        void operator()(jet::Currency amount) const { writer.currency(amount); }
        void operator()(float number) const { appendNumber(number, out); }
        void operator()(double number) const { appendNumber(number, out); }
        void operator()(jet::Date date) const { writer.date(date); }
        void operator()(const jet::Binary& bytes) const { writer.binary(bytes); }
        void operator()(const std::u16string& text) const { writer.text(text); }
        void operator()(const jet::Guid& guid) const { out += jet::toText(guid); }
        void operator()(const jet::Numeric& number) const { out += jet::toDecimalText(number); }
    };
    std::visit(Visitor{*this, out_}, value);
}

void FieldWriter::field(jet::PageReader& pages, const jet::Column& column,
                        const jet::StoredField& field, jet::PageNumber page) {
    if (field.null) {
        out_ += kNull;
        return;
    }
    switch (column.type) {
        case jet::ColumnType::Boolean:
            out_ += field.truth ? '1' : '0';
            return;
        case jet::ColumnType::Integer:
            return appendNumber(jet::load<std::int16_t>(field.bytes, 0), out_);
        case jet::ColumnType::Long:
            return appendNumber(jet::load<std::int32_t>(field.bytes, 0), out_);
        case jet::ColumnType::Date:
            return date(jet::Date{jet::load<double>(field.bytes, 0)});
        case jet::ColumnType::Text:
            return storedText(field.bytes);
        case jet::ColumnType::Memo:
            return storedText(jet::readLongValue(pages, field.bytes, page, longValue_));
        default:
            return value(jet::decodeField(pages, column, field, page));
    }
}

}  // namespace plain

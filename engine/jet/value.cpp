#include "engine/jet/value.h"

#include "engine/jet/bytes.h"
#include "engine/jet/format/value.h"
#include "engine/jet/text.h"

#include <algorithm>

namespace jet {
namespace {

Numeric decodeNumeric(Bytes bytes, std::uint8_t scale) {
    Numeric number;
    namespace layout = format::value;
    number.negative = (load(bytes, layout::kNumericSign) & layout::kNegative) != 0;
    number.scale = scale;
    for (std::size_t i = 0; i < layout::kNumericWords; ++i) {
        number.magnitude[i] = load(bytes, layout::numericWord(i));
    }
    return number;
}

Guid decodeGuid(Bytes bytes) {
    Guid guid;
    std::copy_n(bytes.begin(), guid.bytes.size(), guid.bytes.begin());
    return guid;
}

std::u16string decodeText(Bytes bytes) {
    std::u16string text;
    appendUtf16(bytes, text);
    return text;
}

/// Divides a magnitude by 10 in place and returns the remainder.
std::uint32_t divideByTen(std::array<std::uint32_t, 4>& magnitude) {
    std::uint64_t remainder = 0;
    for (std::uint32_t& word : magnitude) {
        const std::uint64_t part = (remainder << 32) | word;
        word = static_cast<std::uint32_t>(part / 10);
        remainder = part % 10;
    }
    return static_cast<std::uint32_t>(remainder);
}

}  // namespace

Value decodeField(PageReader& pages, const Column& column, const StoredField& field,
                  PageNumber page) {
    if (field.null) return {};
    const Bytes bytes = field.bytes;
    switch (column.type) {
        case ColumnType::Boolean:
            return field.truth;
        case ColumnType::Byte:
            return bytes[0];
        case ColumnType::Integer:
            return load<std::int16_t>(bytes, 0);
        case ColumnType::Long:
            return load<std::int32_t>(bytes, 0);
        case ColumnType::Currency:
            return Currency{load<std::int64_t>(bytes, 0)};
        case ColumnType::Single:
            return load<float>(bytes, 0);
        case ColumnType::Double:
            return load<double>(bytes, 0);
        case ColumnType::Date:
            return Date{load<double>(bytes, 0)};
        case ColumnType::Text:
            return decodeText(bytes);
        case ColumnType::Guid:
            return decodeGuid(bytes);
        case ColumnType::Numeric:
            return decodeNumeric(bytes, column.scale);
        case ColumnType::Memo: {
            Binary scratch;
            return decodeText(readLongValue(pages, bytes, page, scratch));
        }
        case ColumnType::Ole: {
            Binary scratch;
            const Bytes value = readLongValue(pages, bytes, page, scratch);
            return Binary{value.begin(), value.end()};
        }
        default:
            return Binary{bytes.begin(), bytes.end()};
    }
}

void throwUnreadable(const Column& column, PageNumber page) {
    throw Error{Fault::Damaged, column.unreadable, page};
}

Value readField(PageReader& pages, const Column& column, const Record& record) {
    if (!column.unreadable.empty()) {
        if (record.isKnownNull(column)) return {};
        return Unreadable{column.unreadable};
    }
    try {
        return decodeField(pages, column, record.field(column), record.page());
    } catch (const Error& error) {
        if (!isDamage(error)) throw;
        return Unreadable{error.what()};
    }
}

std::string toDecimalText(const Numeric& number) {
    auto magnitude = number.magnitude;
    std::string digits;
    do {
        digits.push_back(static_cast<char>('0' + divideByTen(magnitude)));
    } while (std::any_of(magnitude.begin(), magnitude.end(), [](auto word) { return word != 0; }));
    while (digits.size() <= number.scale) digits.push_back('0');
    const bool zero = digits.find_first_not_of('0') == std::string::npos;
    if (number.scale != 0) digits.insert(number.scale, 1, '.');
    if (number.negative && !zero) digits.push_back('-');
    std::reverse(digits.begin(), digits.end());
    return digits;
}

std::string toText(const Guid& guid) {
    constexpr auto kOrder = format::value::kGuidPrinted;
    constexpr std::string_view kHex = "0123456789ABCDEF";
    std::string text = "{";
    for (std::size_t i = 0; i < kOrder.size(); ++i) {
        // Groups of 8, 4, 4, 4 and 12 digits.
        if (i == 4 || i == 6 || i == 8 || i == 10) text.push_back('-');
        const std::uint8_t byte = guid.bytes[kOrder[i]];
        text.push_back(kHex[byte >> 4]);
        text.push_back(kHex[byte & 0xF]);
    }
    text.push_back('}');
    return text;
}

}  // namespace jet

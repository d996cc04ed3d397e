#include "engine/jet/write/value_encoder.h"

#include "engine/jet/bytes.h"
#include "engine/jet/format/long_value.h"
#include "engine/jet/format/text.h"
#include "engine/jet/format/value.h"
#include "engine/jet/text.h"

#include <algorithm>
#include <string>

namespace jet {
namespace {

namespace layout = format::text;

constexpr std::size_t kMaxLongValue = format::long_value::kLengthMask;

constexpr char16_t kByteOrderMark = 0xFEFF;

template <typename T>
const T& expect(const Value& value, const Column& column) {
    if (const T* held = std::get_if<T>(&value)) return *held;
    throw Error{Fault::WrongType,
                "A value is not of the type of the column '" + toUtf8(column.name) + "'."};
}

[[noreturn]] void throwTooLarge(const Column& column) {
    throw Error{Fault::ValueTooLarge,
                "A value is too long for the column '" + toUtf8(column.name) + "'."};
}

void appendRaw(std::u16string_view text, Binary& out) {
    const auto* const at = reinterpret_cast<const std::uint8_t*>(text.data());
    out.insert(out.end(), at, at + layout::kUnitSize * text.size());
}

/// Appends the compressed form if it is shorter than the other one. Zero bytes change between
/// stretches of one and of two bytes a unit, so a unit with a zero byte in it cannot be in either.
bool appendCompressed(std::u16string_view text, Binary& out) {
    const std::size_t start = out.size();
    const std::size_t limit = layout::kUnitSize * text.size();
    out.insert(out.end(), layout::kCompressed.begin(), layout::kCompressed.end());
    bool wide = false;
    for (const char16_t unit : text) {
        const bool unitIsWide = unit > 0xFF;
        if ((unit & 0xFF) == 0 || out.size() - start >= limit) {
            out.resize(start);
            return false;
        }
        if (unitIsWide != wide) out.push_back(layout::kChange);
        wide = unitIsWide;
        out.push_back(static_cast<std::uint8_t>(unit));
        if (wide) out.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    if (out.size() - start < limit) return true;
    out.resize(start);
    return false;
}

/// A fixed column is filled up with blanks.
void encodeFixedText(std::u16string_view text, const Column& column, Binary& out) {
    std::u16string filled{text};
    filled.resize(column.size / layout::kUnitSize, u' ');
    appendRaw(filled, out);
}

void encodeTextValue(const std::u16string& text, const Column& column, Binary& out) {
    if (column.type == ColumnType::Text && layout::kUnitSize * text.size() > column.size)
        throwTooLarge(column);
    if (layout::kUnitSize * text.size() > kMaxLongValue) throwTooLarge(column);
    if (column.fixed) return encodeFixedText(text, column, out);
    const bool short_ =
        column.type == ColumnType::Text || text.size() <= layout::kMaxCompressedMemo;
    encodeText(text, column.compressed && short_, out);
}

void encodeNumeric(const Numeric& number, const Column& column, Binary& out) {
    if (number.scale != column.scale) {
        throw Error{Fault::WrongType, "A number has another scale than its column."};
    }
    out.push_back(number.negative ? format::value::kNegative : std::uint8_t{0});
    for (const std::uint32_t word : number.magnitude) append(out, word);
}

void encodeBinary(const Binary& bytes, const Column& column, Binary& out) {
    const bool isLong = column.type == ColumnType::Ole;
    if (bytes.size() > (isLong ? kMaxLongValue : column.size)) throwTooLarge(column);
    out.insert(out.end(), bytes.begin(), bytes.end());
    if (column.fixed) out.resize(out.size() + column.size - bytes.size());
}

}  // namespace

void encodeText(std::u16string_view text, bool compress, Binary& out) {
    // In front of a text these two bytes would say that it is compressed.
    while (!text.empty() && text.front() == kByteOrderMark) text.remove_prefix(1);
    if (compress && appendCompressed(text, out)) return;
    appendRaw(text, out);
}

void encodeValue(const Value& value, const Column& column, Binary& out) {
    switch (column.type) {
        case ColumnType::Boolean:
            expect<bool>(value, column);
            return;
        case ColumnType::Byte:
            return append(out, expect<std::uint8_t>(value, column));
        case ColumnType::Integer:
            return append(out, expect<std::int16_t>(value, column));
        case ColumnType::Long:
            return append(out, expect<std::int32_t>(value, column));
        case ColumnType::Currency:
            return append(out, expect<Currency>(value, column).tenThousandths);
        case ColumnType::Single:
            return append(out, expect<float>(value, column));
        case ColumnType::Double:
            return append(out, expect<double>(value, column));
        case ColumnType::Date:
            return append(out, expect<Date>(value, column).days);
        case ColumnType::Text:
        case ColumnType::Memo:
            return encodeTextValue(expect<std::u16string>(value, column), column, out);
        case ColumnType::Guid: {
            const Guid& guid = expect<Guid>(value, column);
            out.insert(out.end(), guid.bytes.begin(), guid.bytes.end());
            return;
        }
        case ColumnType::Numeric:
            return encodeNumeric(expect<Numeric>(value, column), column, out);
        case ColumnType::Binary:
        case ColumnType::Ole:
            return encodeBinary(expect<Binary>(value, column), column, out);
        case ColumnType::InternalBinary:
            break;
    }
    throw Error{Fault::WrongType, "Values of the column '" + toUtf8(column.name) +
                                      "' are of a type that cannot be written."};
}

}  // namespace jet

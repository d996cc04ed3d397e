#include "tests/support/record_writer.h"

#include <algorithm>
#include <stdexcept>

namespace fixture {

using jet::ColumnType;

namespace {

constexpr std::size_t kMaxRecordBytes = 4060;
constexpr std::size_t kMaxCompressedCharacters = 1024;

bool hasZeroLowByte(char16_t unit) { return (unit & 0xFF) == 0; }

void appendUnit(ByteVector& out, char16_t unit) { append(out, static_cast<std::uint16_t>(unit)); }

void appendRawText(std::u16string_view text, ByteVector& out) {
    for (const char16_t unit : text) appendUnit(out, unit);
}

void appendCompressedText(std::u16string_view text, ByteVector& out) {
    append(out, std::uint16_t{0xFEFF});
    bool wide = false;
    for (const char16_t unit : text) {
        if (wide != (unit > 0xFF)) {
            wide = !wide;
            out.push_back(0);
        }
        if (wide) {
            appendUnit(out, unit);
        } else {
            out.push_back(static_cast<std::uint8_t>(unit));
        }
    }
}

std::int64_t toWholeNumber(const jet::Value& value) {
    return std::visit(
        [](const auto& content) -> std::int64_t {
            if constexpr (std::integral<std::decay_t<decltype(content)>>) return content;
            throw std::invalid_argument{"not a whole number"};
        },
        value);
}

double toNumber(const jet::Value& value) {
    if (const auto* single = std::get_if<float>(&value)) return double{*single};
    if (const auto* number = std::get_if<double>(&value)) return *number;
    return static_cast<double>(toWholeNumber(value));
}

template <typename T>
const T& expect(const jet::Value& value) {
    if (const T* content = std::get_if<T>(&value)) return *content;
    throw std::invalid_argument{"a value of another type than the column"};
}

void appendNumeric(const jet::Numeric& number, ByteVector& out) {
    out.push_back(number.negative ? 0x80 : 0);
    for (const std::uint32_t word : number.magnitude) append(out, word);
}

void appendText(const PlacedColumn& column, std::u16string_view text, ByteVector& out) {
    if (column.spec.type == ColumnType::Text && text.size() > column.spec.length) {
        throw std::length_error{"a text is longer than its column"};
    }
    if (!column.fixed) return appendStoredText(text, column.spec.compressed, out);
    std::u16string padded{text};
    padded.resize(column.spec.length, u' ');
    appendRawText(padded, out);
}

void appendValue(const PlacedColumn& column, const jet::Value& value, ByteVector& out) {
    switch (column.spec.type) {
        case ColumnType::Byte:
            return append(out, static_cast<std::uint8_t>(toWholeNumber(value)));
        case ColumnType::Integer:
            return append(out, static_cast<std::int16_t>(toWholeNumber(value)));
        case ColumnType::Long:
            return append(out, static_cast<std::int32_t>(toWholeNumber(value)));
        case ColumnType::Currency:
            return append(out, expect<jet::Currency>(value).tenThousandths);
        case ColumnType::Single:
            return append(out, static_cast<float>(toNumber(value)));
        case ColumnType::Double:
            return append(out, toNumber(value));
        case ColumnType::Date:
            return append(out, expect<jet::Date>(value).days);
        case ColumnType::Guid:
            return appendBytes(out, expect<jet::Guid>(value).bytes);
        case ColumnType::Numeric:
            return appendNumeric(expect<jet::Numeric>(value), out);
        case ColumnType::Text:
        case ColumnType::Memo:
            return appendText(column, expect<std::u16string>(value), out);
        case ColumnType::Binary:
        case ColumnType::Ole:
        case ColumnType::InternalBinary:
            return appendBytes(out, expect<jet::Binary>(value));
        case ColumnType::Boolean:
            break;
    }
    throw std::invalid_argument{"a type without stored bytes"};
}

}  // namespace

void appendStoredText(std::u16string_view text, bool compressed, ByteVector& out) {
    const bool possible = compressed && text.size() <= kMaxCompressedCharacters &&
                          std::none_of(text.begin(), text.end(), hasZeroLowByte);
    if (!possible) return appendRawText(text, out);
    const std::size_t start = out.size();
    appendCompressedText(text, out);
    if (out.size() - start < text.size() * 2) return;
    out.resize(start);
    appendRawText(text, out);
}

void appendStoredValue(const PlacedColumn& column, const Cell& cell, ByteVector& out) {
    if (cell.stored) return appendBytes(out, *cell.stored);
    appendValue(column, cell.value, out);
}

void RecordWriter::begin(const TableLayout& layout) {
    layout_ = &layout;
    record_.assign(2 + layout.fixedWidth(), 0);
    put(std::span{record_}, 0, layout.columnsEver());
    mask_.assign((layout.columnsEver() + 7u) / 8u, 0);
    starts_.clear();
}

void RecordWriter::addField(const PlacedColumn& column, ByteView bytes) {
    setMaskBit(column.id);
    if (!column.fixed) {
        closeVariableColumns(column.variableIndex);
        starts_.push_back(static_cast<std::uint16_t>(record_.size()));
        appendBytes(record_, bytes);
        return;
    }
    if (bytes.size() != column.fixedBytes()) throw std::invalid_argument{"a wrong fixed length"};
    std::copy(bytes.begin(), bytes.end(),
              record_.begin() + static_cast<std::ptrdiff_t>(2u + column.fixedOffset));
}

void RecordWriter::setTruth(const PlacedColumn& column) { setMaskBit(column.id); }

ByteView RecordWriter::finish() {
    if (const std::size_t count = layout_->variableColumnsEver(); count > 0) {
        closeVariableColumns(count);
        append(record_, static_cast<std::uint16_t>(record_.size()));
        for (std::size_t i = count; i-- > 0;) append(record_, starts_[i]);
        append(record_, static_cast<std::uint16_t>(count));
    }
    appendBytes(record_, mask_);
    if (record_.size() > kMaxRecordBytes) throw std::length_error{"a record is too long"};
    return record_;
}

/// Null variable columns have no length: they start where the next value starts.
void RecordWriter::closeVariableColumns(std::size_t count) {
    while (starts_.size() < count) starts_.push_back(static_cast<std::uint16_t>(record_.size()));
}

void RecordWriter::setMaskBit(std::uint16_t id) {
    mask_[id / 8u] = static_cast<std::uint8_t>(mask_[id / 8u] | (1u << (id % 8u)));
}

}  // namespace fixture

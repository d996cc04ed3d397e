#include "tests/support/table_layout.h"

#include <algorithm>
#include <stdexcept>

namespace fixture {

using jet::ColumnType;

namespace {

bool isFixed(const ColumnSpec& spec) {
    if (spec.fixed) return *spec.fixed;
    return !isLongValue(spec) && spec.type != ColumnType::Text && spec.type != ColumnType::Binary;
}

std::uint16_t descriptorSize(const ColumnSpec& spec) {
    switch (spec.type) {
        case ColumnType::Boolean:
        case ColumnType::Byte:
            return 1;
        case ColumnType::Integer:
            return 2;
        case ColumnType::Long:
        case ColumnType::Single:
            return 4;
        case ColumnType::Currency:
        case ColumnType::Double:
        case ColumnType::Date:
            return 8;
        case ColumnType::Guid:
            return 16;
        case ColumnType::Numeric:
            return 17;
        case ColumnType::Text:
            return static_cast<std::uint16_t>(spec.length * 2);
        case ColumnType::Binary:
        case ColumnType::InternalBinary:
            return static_cast<std::uint16_t>(spec.length);
        case ColumnType::Ole:
        case ColumnType::Memo:
            return 0;
    }
    throw std::invalid_argument{"a column type that is not known"};
}

}  // namespace

ColumnSpec column(std::u16string name, ColumnType type) {
    return {.name = std::move(name), .type = type};
}

ColumnSpec textColumn(std::u16string name, unsigned characters, bool compressed) {
    return {.name = std::move(name), .length = characters, .compressed = compressed};
}

ColumnSpec fixedTextColumn(std::u16string name, unsigned characters) {
    return {.name = std::move(name), .length = characters, .fixed = true};
}

ColumnSpec memoColumn(std::u16string name, bool compressed) {
    return {.name = std::move(name), .type = ColumnType::Memo, .compressed = compressed};
}

ColumnSpec binaryColumn(std::u16string name, unsigned bytes) {
    return {.name = std::move(name), .type = ColumnType::Binary, .length = bytes};
}

ColumnSpec numericColumn(std::u16string name, std::uint8_t precision, std::uint8_t scale) {
    return {.name = std::move(name),
            .type = ColumnType::Numeric,
            .precision = precision,
            .scale = scale};
}

void TableLayout::add(ColumnSpec spec) {
    if (columns_.size() == 255) throw std::length_error{"a table has 255 columns at most"};
    PlacedColumn placed;
    placed.fixed = isFixed(spec);
    placed.size = descriptorSize(spec);
    placed.spec = std::move(spec);
    placed.id = columnsEver_++;
    placed.variableIndex = variableColumnsEver_;
    if (!placed.fixed) {
        ++variableColumnsEver_;
    } else if (placed.fixedBytes() > 0) {
        placed.fixedOffset = static_cast<std::uint16_t>(fixedWidth_);
        fixedWidth_ += placed.fixedBytes();
    }
    columns_.push_back(std::move(placed));
}

void TableLayout::drop(std::u16string_view name) {
    columns_.erase(columns_.begin() + static_cast<std::ptrdiff_t>(indexOf(name)));
}

std::size_t TableLayout::indexOf(std::u16string_view name) const {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        if (columns_[i].spec.name == name) return i;
    }
    throw std::out_of_range{"no such column"};
}

}  // namespace fixture

#include "engine/jet/record.h"

#include "engine/jet/bytes.h"

namespace jet {
namespace {

constexpr std::size_t kCountSize = 2;

}  // namespace

std::size_t sizeOfType(ColumnType type) {
    switch (type) {
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
        default:
            return 0;
    }
}

std::size_t storedSize(const Column& column) {
    const std::size_t ownSize = sizeOfType(column.type);
    return ownSize != 0 ? ownSize : column.size;
}

Record::Record(Bytes bytes, PageNumber page) : bytes_{bytes}, page_{page} {
    if (bytes.size() < kCountSize) throwDamaged(page, "a record is cut short");
    columnCount_ = load<std::uint16_t>(bytes, 0);
    const std::size_t maskSize = (columnCount_ + 7) / 8;
    if (kCountSize + maskSize > bytes.size()) throwDamaged(page, "a record is cut short");
    maskOffset_ = bytes.size() - maskSize;
    mask_ = bytes.data() + maskOffset_;
}

StoredField Record::field(const Column& column) const {
    StoredField field;
    if (column.id >= columnCount_) {
        field.null = column.type != ColumnType::Boolean;
        return field;
    }
    const bool bit = isSet(column.id);
    if (column.type == ColumnType::Boolean) {
        field.null = false;
        field.truth = bit;
        return field;
    }
    if (!bit) return field;
    if (!column.fixed) return variableField(column);

    const std::size_t size = storedSize(column);
    const std::size_t begin = kCountSize + column.fixedOffset;
    if (begin + size > maskOffset_) throwDamaged(page_, "a record is too short for its columns");
    field.null = false;
    field.bytes = bytes_.subspan(begin, size);
    return field;
}

StoredField Record::variableField(const Column& column) const {
    StoredField field;
    if (maskOffset_ < kCountSize + 4) throwDamaged(page_, "a record lacks its offset table");
    const std::size_t count = load<std::uint16_t>(bytes_, maskOffset_ - 2);
    if (column.variableIndex >= count) return field;
    // Offset k stands 2 k bytes before that of variable column 0; the end of the data comes last.
    const std::size_t offsetZero = maskOffset_ - 4;
    if (2 * count + kCountSize > offsetZero) throwDamaged(page_, "an offset table is too long");
    const std::size_t tableStart = offsetZero - 2 * count;
    const std::size_t place = offsetZero - 2 * std::size_t{column.variableIndex};
    const std::size_t begin = load<std::uint16_t>(bytes_, place);
    const std::size_t end = load<std::uint16_t>(bytes_, place - 2);
    if (begin < kCountSize || begin > end || end > tableStart) {
        throwDamaged(page_, "a field lies outside its record");
    }
    field.null = false;
    field.bytes = bytes_.subspan(begin, end - begin);
    const std::size_t ownSize = sizeOfType(column.type);
    if (ownSize > field.bytes.size()) throwDamaged(page_, "a field is too short for its type");
    return field;
}

}  // namespace jet

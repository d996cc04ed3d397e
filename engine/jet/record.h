// One record's bytes, taken apart.
//
//   offset from the front           offset from the end (m = bytes of the null mask)
//   0   2   column count            m          null mask: bit id set = not null
//   2   ..  fixed part              m+2    2   number of variable columns
//   ..  ..  variable values         m+4+2k 2   start of variable value k, k = 0 first
//                                   ..     2   end of the last variable value
//
// The trailer before the mask exists only if the table had a variable column when the record was
// written. A record knows the columns that existed then; later ones are null in it.
#pragma once

#include "engine/jet/bytes.h"
#include "engine/jet/table_definition.h"

#include <array>

namespace jet {

namespace detail {

inline constexpr auto kTypeSizes = [] {
    std::array<std::uint8_t, 256> sizes{};
    const auto set = [&](ColumnType type, std::uint8_t bytes) {
        sizes[static_cast<std::uint8_t>(type)] = bytes;
    };
    set(ColumnType::Byte, 1);
    set(ColumnType::Integer, 2);
    set(ColumnType::Long, 4);
    set(ColumnType::Single, 4);
    set(ColumnType::Currency, 8);
    set(ColumnType::Double, 8);
    set(ColumnType::Date, 8);
    set(ColumnType::Guid, 16);
    set(ColumnType::Numeric, 17);
    return sizes;
}();

}  // namespace detail

/// Bytes that a value of a fixed-size type takes wherever it is stored; 0 for the other types.
/// Descriptors found in the wild hold rubbish here, so the type decides.
constexpr std::size_t sizeOfType(ColumnType type) {
    return detail::kTypeSizes[static_cast<std::uint8_t>(type)];
}

/// Bytes of a value in the fixed part of a record.
inline std::size_t storedSize(const Column& column) {
    const std::size_t ownSize = sizeOfType(column.type);
    return ownSize != 0 ? ownSize : column.size;
}

/// The stored bytes of one field.
struct StoredField {
    bool null = true;
    bool truth = false;  ///< the value of a Boolean column, which has no bytes
    Bytes bytes;         ///< valid as long as the record's own bytes
};

class Record {
public:
    Record() = default;

    /// Takes the record's bytes apart as far as every field needs. Throws Error{Damaged}.
    Record(Bytes bytes, PageNumber page);

    /// The field of a column of the record's table. Throws Error{Damaged}.
    StoredField field(const Column& column) const;

    /// Columns that the table had when the record was written.
    unsigned columnCount() const { return columnCount_; }

    Bytes bytes() const { return bytes_; }
    PageNumber page() const { return page_; }

private:
    static constexpr std::size_t kCountSize = 2;

    bool isSet(unsigned id) const { return (mask_[id / 8] >> (id % 8)) & 1u; }
    StoredField variableField(const Column& column) const;

    Bytes bytes_;
    PageNumber page_ = kNoPage;
    const std::uint8_t* mask_ = nullptr;
    unsigned columnCount_ = 0;
    std::size_t maskOffset_ = 0;
};

inline Record::Record(Bytes bytes, PageNumber page) : bytes_{bytes}, page_{page} {
    if (bytes.size() < kCountSize) throwDamaged(page, "a record is cut short");
    columnCount_ = load<std::uint16_t>(bytes, 0);
    const std::size_t maskSize = (columnCount_ + 7) / 8;
    if (kCountSize + maskSize > bytes.size()) throwDamaged(page, "a record is cut short");
    maskOffset_ = bytes.size() - maskSize;
    mask_ = bytes.data() + maskOffset_;
}

inline StoredField Record::field(const Column& column) const {
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

inline StoredField Record::variableField(const Column& column) const {
    StoredField field;
    if (maskOffset_ < kCountSize + 4) throwDamaged(page_, "a record lacks its offset table");
    const std::size_t count = load<std::uint16_t>(bytes_, maskOffset_ - 2);
    if (column.variableIndex >= count) return field;
    /// Offset k stands 2 k bytes before that of variable column 0; the end of the data comes last.
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

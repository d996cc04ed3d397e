// One record's bytes, taken apart. The layout is in format/record.h.
//
//   const jet::Record stored{bytes, number};
//   const jet::StoredField name = stored.field(*definition.findColumn(u"Name"));
//
// A record knows the columns that existed when it was written; later ones are null in it. A view
// that is valid as long as its bytes; any thread may read it.
#pragma once

#include "engine/jet/bytes.h"
#include "engine/jet/format/record.h"
#include "engine/jet/format/value.h"
#include "engine/jet/table_definition.h"

namespace jet {

/// Bytes that a value of a fixed-size type takes wherever it is stored; 0 for the other types.
/// Real files declare other lengths for them, so the type decides.
constexpr std::size_t sizeOfType(ColumnType type) { return format::value::size(type); }

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

    /// Decodes what every field needs. Throws Error{Damaged}.
    Record(Bytes bytes, PageNumber page);

    /// The field of a column of the record's table. Throws Error{Damaged}.
    StoredField field(const Column& column) const;

    /// Whether the field of an unreadable column is known to be Null.
    bool isKnownNull(const Column& unreadable) const;

    /// For a record that has all columns of its table: how many of them are variable, which the
    /// record says, too. False if it says something else; the table is right then.
    bool expectVariableColumns(unsigned count);

    /// Columns that the table had when the record was written.
    unsigned columnCount() const { return columnCount_; }

    Bytes bytes() const { return bytes_; }
    PageNumber page() const { return page_; }

private:
    bool isSet(unsigned id) const { return (mask_[id / 8] >> (id % 8)) & 1u; }
    StoredField variableField(const Column& column) const;

    Bytes bytes_;
    PageNumber page_ = kNoPage;
    const std::uint8_t* mask_ = nullptr;
    unsigned columnCount_ = 0;
    std::size_t maskOffset_ = 0;
    unsigned variableCount_ = kAsStored;

    static constexpr unsigned kAsStored = 0xFFFFFFFF;
};

[[noreturn]] void throwUnreadable(const Column& column, PageNumber page);

inline bool Record::isKnownNull(const Column& unreadable) const {
    const unsigned id = unreadable.idForNull;
    if (id == format::table_definition::kNoColumn) return false;
    return id >= columnCount_ || !isSet(id);
}

inline bool Record::expectVariableColumns(unsigned count) {
    namespace layout = format::record;
    if (maskOffset_ < layout::kFixedPart + layout::trailerSize(0)) return false;
    if (load(bytes_, layout::variableCount(maskOffset_)) == count) return true;
    variableCount_ = count;
    return false;
}

inline Record::Record(Bytes bytes, PageNumber page) : bytes_{bytes}, page_{page} {
    namespace layout = format::record;
    if (bytes.size() < layout::kFixedPart) throwDamaged(page, "a record is cut short");
    columnCount_ = load(bytes, layout::kColumnCount);
    const std::size_t maskSize = layout::maskSize(columnCount_);
    if (layout::kFixedPart + maskSize > bytes.size()) throwDamaged(page, "a record is cut short");
    maskOffset_ = bytes.size() - maskSize;
    mask_ = bytes.data() + maskOffset_;
}

inline StoredField Record::field(const Column& column) const {
    StoredField field;
    if (column.id >= columnCount_) {
        if (!column.unreadable.empty() && !isKnownNull(column)) throwUnreadable(column, page_);
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
    const std::size_t begin = format::record::kFixedPart + column.fixedOffset;
    if (begin + size > maskOffset_) throwDamaged(page_, "a record is too short for its columns");
    field.null = false;
    field.bytes = bytes_.subspan(begin, size);
    return field;
}

inline StoredField Record::variableField(const Column& column) const {
    StoredField field;
    namespace layout = format::record;
    if (maskOffset_ < layout::kFixedPart + layout::trailerSize(0)) {
        throwDamaged(page_, "a record lacks its offset table");
    }
    const std::size_t count = variableCount_ == kAsStored
                                  ? load(bytes_, layout::variableCount(maskOffset_))
                                  : variableCount_;
    if (column.variableIndex >= count) return field;
    if (layout::kFixedPart + layout::trailerSize(count) > maskOffset_) {
        throwDamaged(page_, "an offset table is too long");
    }
    const std::size_t tableStart = layout::variableOffset(maskOffset_, count).offset;
    const std::size_t place = column.variableIndex;
    const std::size_t begin = load(bytes_, layout::variableOffset(maskOffset_, place));
    const std::size_t end = load(bytes_, layout::variableOffset(maskOffset_, place + 1));
    if (begin < layout::kFixedPart || begin > end || end > tableStart) {
        throwDamaged(page_, "a field lies outside its record");
    }
    field.null = false;
    field.bytes = bytes_.subspan(begin, end - begin);
    const std::size_t ownSize = sizeOfType(column.type);
    if (ownSize > field.bytes.size()) throwDamaged(page_, "a field is too short for its type");
    return field;
}

}  // namespace jet

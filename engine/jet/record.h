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

#include "engine/jet/table_definition.h"

namespace jet {

/// Bytes that a value of a fixed-size type takes wherever it is stored; 0 for the other types.
/// Descriptors found in the wild hold rubbish here, so the type decides.
std::size_t sizeOfType(ColumnType type);

/// Bytes of a value in the fixed part of a record.
std::size_t storedSize(const Column& column);

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
    bool isSet(unsigned id) const { return (mask_[id / 8] >> (id % 8)) & 1u; }
    StoredField variableField(const Column& column) const;

    Bytes bytes_;
    PageNumber page_ = kNoPage;
    const std::uint8_t* mask_ = nullptr;
    unsigned columnCount_ = 0;
    std::size_t maskOffset_ = 0;
};

}  // namespace jet

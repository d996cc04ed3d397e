// The stored bytes of values and of whole records.
#pragma once

#include "tests/support/cell.h"
#include "tests/support/table_layout.h"

#include <string_view>

namespace fixture {

/// Appends text as the format stores it: UTF-16LE or, if `compressed` and shorter so, the mark
/// FF FE with one byte a character and stretches of two bytes between zero bytes.
void appendStoredText(std::u16string_view text, bool compressed, ByteVector& out);

/// Appends the bytes of a value that is not null and not a Boolean. For a Memo or Ole column this
/// is the content, not the header that stands in the record.
/// Throws std::invalid_argument if the value does not suit the column.
void appendStoredValue(const PlacedColumn& column, const Cell& cell, ByteVector& out);

/// Puts records together; one writer is reused for all rows of a table.
class RecordWriter {
public:
    /// Begins a record with all columns null.
    void begin(const TableLayout& layout);

    /// Adds a field. Variable columns must come in the order of their ids.
    /// `bytes` are what stands in the record: for a Memo or Ole column its header.
    void addField(const PlacedColumn& column, ByteView bytes);
    void setTruth(const PlacedColumn& column);

    /// The record's bytes, until the next begin(). Throws std::length_error above 4060 bytes.
    ByteView finish();

private:
    void closeVariableColumns(std::size_t count);
    void setMaskBit(std::uint16_t id);

    const TableLayout* layout_ = nullptr;
    ByteVector record_;
    ByteVector mask_;
    std::vector<std::uint16_t> starts_;  ///< of the variable values met so far
};

}  // namespace fixture

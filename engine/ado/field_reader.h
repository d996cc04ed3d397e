// Fields of rows by their row ids, out of the file.
//
//   ado::FieldReader reader{table, ado::FieldReader::Reading::InOrder};
//   jet::StoredField field;
//   if (reader.read(rowId, column, field)) use(reader.value(field, column));
//
// Belongs to one thread.
#pragma once

#include "engine/jet/data_page.h"
#include "engine/jet/long_value.h"
#include "engine/jet/table.h"

#include <optional>
#include <string>

namespace ado {

class FieldReader {
public:
    enum class Reading {
        AnyRow,   ///< a page at a time, as the cache has it
        InOrder,  ///< many rows, mostly in the order of the file: in large blocks
    };

    FieldReader(std::shared_ptr<const jet::Table> table, Reading reading);
    FieldReader(const FieldReader&) = delete;
    FieldReader& operator=(const FieldReader&) = delete;

    /// False if the row is deleted or the field damaged. The field's bytes are valid until the next
    /// read(). Throws jet::Error for failures of the storage.
    bool read(jet::RowId row, const jet::Column& column, jet::StoredField& field);

    /// The value of a field just read; Unreadable if it is damaged. Throws as read().
    jet::Value value(const jet::StoredField& field, const jet::Column& column);

    /// Why the last read(), value(), storedText() or appendText() met damage; null if it did not.
    const std::string* damage() const { return damage_ ? &*damage_ : nullptr; }

    /// The stored bytes of a text, inline or not; nothing if it is Null, deleted or damaged.
    /// Valid until the next use of the reader. Throws as read().
    std::optional<jet::Bytes> storedText(jet::RowId row, const jet::Column& column);

    /// Appends the characters of a text; false if it is damaged. Throws as read().
    bool appendText(const jet::StoredField& field, const jet::Column& column, std::u16string& out);

private:
    template <typename Read>
    auto unlessDamaged(Read read) -> decltype(read());
    bool find(jet::RowId row);
    bool findInOrder(jet::RowId row);
    bool turnTo(jet::PageNumber page);
    void loadAround(jet::PageNumber page);

    std::shared_ptr<const jet::Table> table_;
    Reading reading_;

    // The record read last stays valid while its long values are read by a reader of their own,
    // which mostly finds them in the block that was loaded for the records.
    jet::PageReader records_;
    jet::PageReader longValuePages_;
    jet::LongValueReader longValues_;
    jet::Record record_;
    jet::Binary scratch_;
    std::optional<std::string> damage_;

    // When reading in order: the page of the rows read last, while its block is loaded, and another
    // reader for records that moved away from it.
    std::optional<jet::DataPage> page_;
    jet::PageReader moved_;

    // The block of pages in records_ when reading in order.
    std::uint32_t blockFirst_ = 0;
    std::uint32_t blockCount_ = 0;
    std::uint32_t lastPage_ = 0;
};

}  // namespace ado

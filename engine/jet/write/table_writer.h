// Adds, changes and removes the rows of one table and maintains its indexes and maps.
//
//   jet::TableWriter traces{context, table->definition()};
//   traces.insert(values);
//   traces.updateRows([&](const jet::Record&, jet::PageReader&, jet::Assignments& changes) {
//       changes.push_back({.column = 0, .value = values[0]});
//       return true;
//   });
//   traces.finish();
//
// One thread, that of the statement; one writer per table at a time. Changes can be read once
// finish() has been called. After a failure the statement must be undone.
#pragma once

#include "engine/jet/table.h"
#include "engine/jet/write/data_page_edit.h"
#include "engine/jet/write/index_writer.h"
#include "engine/jet/write/long_value_writer.h"
#include "engine/jet/write/record_encoder.h"
#include "engine/jet/write/row_keys.h"
#include "engine/jet/write/usage_map_writer.h"
#include "engine/jet/write/write_context.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace jet {

/// A new value for one field.
struct Assignment {
    std::size_t column = 0;  ///< place in TableDefinition::columns
    Value value;
};
using Assignments = std::vector<Assignment>;

class TableWriter {
public:
    /// Throws Error{Damaged}.
    TableWriter(WriteContext& context, const TableDefinition& definition);
    TableWriter(const TableWriter&) = delete;
    TableWriter& operator=(const TableWriter&) = delete;

    /// Adds a row; `values` are in the order of the definition's columns. A Null for an autonumber
    /// becomes the next number, for a Boolean false.
    /// Throws Error: WrongType if a value is not of its column's type, ValueTooLarge, DuplicateKey,
    /// NullKey, IndexNotWritable, Damaged, FileFull; as Pager::edit.
    RowId insert(std::span<const Value> values);

    /// Changes fields of one row. Requires: `id` is a row of the table. Throws as insert.
    void update(RowId id, std::span<const Assignment> changes);

    /// Removes a row. Requires: `id` is a row of the table. Throws as insert.
    void remove(RowId id);

    /// Decides about one row: fills `changes` (empty on entry) and returns true, or returns false
    /// to leave the row unchanged. `pages` is for long values of the record.
    using RowChange =
        std::function<bool(const Record& record, PageReader& pages, Assignments& changes)>;

    /// Goes through all rows once and changes those that `change` says; returns how many. As few
    /// rows as possible move to other pages. Throws as insert; Error{Damaged} if any row or page
    /// of the table is damaged, so that all rows are changed or none.
    std::uint64_t updateRows(const RowChange& change);

    /// Writes maps and counts. To be called last.
    void finish();

    const TableDefinition& definition() const { return definition_; }

private:
    struct KeyChange {
        std::optional<Key> before;
        std::optional<Key> after;
        RowId row;
    };

    /// One index, and what updateRows keeps for it until all rows are written.
    struct Index {
        IndexWriter writer;
        std::unique_ptr<RowKeys> keys;  ///< null if they cannot be made here
        std::vector<KeyChange> changes{};
        bool rebuild = false;  ///< too many changes to make one by one
    };

    /// Where a record is: at its home slot, or behind a pointer.
    struct Place {
        RowId home;
        RowId record;
    };

    // The current row: fields_ and what they point to.
    void takeFields(const Record& record);
    void setField(std::size_t column, const Value& value);
    void setLongValue(std::size_t column, const Value& value);
    void applyChanges(std::span<const Assignment> changes);
    void encodeRecord();
    std::int32_t nextNumber();

    Place locate(RowId id);
    RowId place(Bytes record, std::uint16_t flags);
    std::optional<RowId> placeOn(PageNumber page, Bytes record, std::uint16_t flags);
    void noteRoom(PageNumber page, const Page& content);
    void removeSlot(RowId id);
    void replaceRecord(const Place& place, Bytes record);
    void replaceAtHome(RowId home, Bytes record);
    void replaceMoved(const Place& place, Bytes record);

    std::uint64_t updatePage(PageNumber number, const RowChange& change);
    std::uint64_t updateMovedRows(std::span<const RowId> rows, const RowChange& change);
    bool changeRow(RowId id, const Record& record, const RowChange& change);
    void moveOut(PageLayout& layout);

    bool affects(const Index& index, std::span<const Assignment> changes) const;
    PageReader freshReader() const;
    std::optional<Key> keyOf(Index& index);
    void noteKeys(std::span<const Assignment> changes, RowId row, bool after);
    void changeKeys();
    void rebuildIndex(Index& index);
    void writeCounts();

    WriteContext& context_;
    TableDefinition definition_;
    RecordEncoder encoder_;
    UsageMapWriter owned_;
    UsageMapWriter free_;
    std::map<std::size_t, LongValueWriter> longValues_;  ///< by the column's place
    std::vector<Index> indexes_;

    std::vector<StoredField> fields_;
    std::vector<Binary> buffers_;         ///< of new fields, by the column's place
    std::vector<Binary> replacedValues_;  ///< long values that the current row no longer uses
    std::vector<std::uint8_t> record_;    ///< the current row, encoded
    PageNumber recordPage_ = kNoPage;

    PageNumber target_ = kNoPage;                        ///< where the last record was placed
    bool newPagesOnly_ = false;                          ///< for records that move to make room
    std::deque<std::vector<std::uint8_t>> pageRecords_;  ///< of updateRows' current page
};

}  // namespace jet

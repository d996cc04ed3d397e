// The rows of a table: all of them in storage order, or one by its identity.
//
//   jet::TableScan scan{*table};
//   while (scan.next()) use(scan.rowId(), scan.record());
//
// A Table is immutable and may be shared between threads; a TableScan belongs to one thread.
#pragma once

#include "engine/jet/data_page.h"
#include "engine/jet/losses.h"
#include "engine/jet/record.h"
#include "engine/jet/table_definition.h"
#include "engine/jet/value.h"

#include <memory>
#include <optional>
#include <vector>

namespace jet {

class Database;

class Table {
public:
    Table(std::shared_ptr<Database> database, TableDefinition definition)
        : database_{std::move(database)}, definition_{std::move(definition)} {}

    const TableDefinition& definition() const { return definition_; }
    Database& database() const { return *database_; }

    /// The data pages in storage order, as currently listed in the file: the cache is cleared
    /// first. If the list cannot be read, they are looked for in the whole file, and that is a loss.
    std::vector<PageNumber> dataPages(Losses& losses) const;
    std::vector<PageNumber> dataPages() const {
        Losses ignored;
        return dataPages(ignored);
    }

    /// A reader of pages for the calling thread.
    PageReader pageReader() const;

    /// Records on these pages that moved here although no row points to them: where the pointer is
    /// lost, or the mark is wrong. `pages`: all of the table.
    std::vector<RowId> recordsWithoutPointer(std::span<const PageNumber> pages) const;

    /// Compares the number of rows that a scan of all pages has found with the table's own. Fewer
    /// are a hint that rows are lost without a trace, unless another program is changing the file.
    void compareRowCount(std::uint64_t found, Losses& losses) const;

    /// Finds the record of a row id from a scan or an index, following a move.
    /// Returns false if the row is gone or no longer a row of this table (another program may have
    /// changed the file since); the record then is empty. The record's bytes hold until the next
    /// use of `pages`. Throws Error: what the storage throws.
    bool find(PageReader& pages, RowId id, Record& record) const;

private:
    std::shared_ptr<Database> database_;
    TableDefinition definition_;
};

/// Walks rows in storage order: by page as the table's map lists them, by slot on the page.
/// A moved row is returned once, at the place of its pointer; where rows are missing, a scan of all
/// pages ends with the moved records that no row points to. Damaged rows and pages are left
/// out and counted as losses; failures of the storage itself are thrown.
class TableScan {
public:
    /// `table` must stay alive.
    explicit TableScan(const Table& table);

    /// Scans only some of the table's data pages, so that threads can share the work.
    /// `table` and `pages` must stay alive.
    TableScan(const Table& table, std::span<const PageNumber> pages);

    /// Goes through the records that recordsWithoutPointer() gave. `table` must stay alive.
    TableScan(const Table& table, std::vector<RowId> withoutPointer);

    /// The current row and the list of pages point into the scan itself.
    TableScan(const TableScan&) = delete;
    TableScan& operator=(const TableScan&) = delete;

    /// Moves to the next row; false at the end.
    bool next();

    /// Requires: the last next() returned true. Both are valid until the next one.
    RowId rowId() const { return rowId_; }
    const Record& record() const { return record_; }

    /// For reading long values of the current row; uses the scan's block of pages. The record stays
    /// valid.
    PageReader& pages() { return values_; }

    /// Counts the current row as lost, for callers that cannot use what is left of it.
    void loseRow(const Error& error);

    /// Counts fields of the current row as lost, each once, and empties the list. Those of a column
    /// that is unreadable as a whole count with the table's definition.
    void loseFields(std::vector<LostField>& fields);

    /// Rows passed so far.
    std::uint64_t rowCount() const { return rowCount_; }

    /// What was lost so far. Each loss has been reported to the database, too.
    const Losses& losses() const { return losses_; }

private:
    bool nextPage();
    bool turnTo(PageNumber number);
    void checkColumnCounts();
    void checkShortRecord();
    bool variableValuesFit(unsigned count) const;
    bool loadBlock();
    bool takeSlot();
    bool finish();
    bool takeRecordWithoutPointer();
    void doubt(const char* why);
    void collectDoubts();
    void lose(Loss loss);

    const Table& table_;
    bool wholeTable_ = false;  ///< all rows are to be found, and have not been yet
    std::vector<PageNumber> ownPages_;
    std::span<const PageNumber> list_;
    std::size_t listIndex_ = 0;
    std::size_t blockEnd_ = 0;  ///< first place in list_ that the loaded block does not hold
    std::optional<DataPage> page_;
    unsigned slot_ = 0;
    RowId rowId_;
    Record record_;
    PageReader values_;  ///< holds the block that page_ and, mostly, record_ point into
    PageReader moved_;   ///< holds the page of a record that moved
    Losses losses_;
    std::uint64_t rowCount_ = 0;
    std::vector<const Column*> lostColumns_;  ///< of the current row
    std::vector<RowId> withoutPointer_;
    std::size_t nextWithoutPointer_ = 0;
};

}  // namespace jet

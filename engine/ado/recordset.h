// The rows of a query: fetched in the background if wanted, sorted, searched and read one at a time
// or anywhere.
//
//   ado::Recordset rows{scheduler};
//   rows.fetchComplete = [&](const ado::Error*, int) { rows.setSort(u"Date ASC"); };
//   rows.open(statement, connection, adOpenForwardOnly, adLockReadOnly, adAsyncFetch);
//
// One thread: the owner's, with its clones and its connection; events arrive there.
// A position is 0 for the first row shown; absolutePosition counts from 1 as ever. Every cursor
// moves freely in both directions.
#pragma once

#include "engine/ado/connection.h"
#include "engine/ado/current_record.h"
#include "engine/ado/error.h"
#include "engine/ado/field.h"
#include "engine/ado/opening.h"
#include "engine/ado/view_order.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ado {

class Cells;

class Recordset {
public:
    /// Without a scheduler every open fetches all rows before it returns.
    explicit Recordset(std::shared_ptr<Scheduler> scheduler = nullptr);

    /// Closes.
    ~Recordset();
    Recordset(const Recordset&) = delete;
    Recordset& operator=(const Recordset&) = delete;

    // ---- Settings. The setters throw Error{3001} for a wrong value. ----

    int cursorLocation() const { return cursorLocation_; }

    /// Throws Error{3705} while it is open.
    void setCursorLocation(int location);
    int pageSize() const { return pageSize_; }
    void setPageSize(int rows);
    int cacheSize() const { return cacheSize_; }
    void setCacheSize(int rows);

    /// "Initial Fetch Size".
    Properties& properties() { return properties_; }

    /// How values become text; never null. Clones take it over.
    void setFormatter(const std::shared_ptr<const ValueFormatter>& formatter);
    const ValueFormatter& formatter() const { return *formatter_; }

    // ---- Opening ----

    /// Opens the rows of a SELECT, with the first one current. With adAsyncFetch, a client cursor
    /// and a query whose rows are rows of a table, it returns when the first rows are there, and the
    /// rest follow. Other queries are run to their end; with adAsyncFetch fetchComplete follows.
    /// Changes on the connection become durable first; a failure of that is one of the open.
    ///
    /// Any other statement is executed, whatever cursor and lock are asked for, and leaves the
    /// recordset closed, without an event.
    ///
    /// Throws Error: 3705 while it is open, 3704 for a closed connection, 3001, 0x80004005,
    /// 0x80040E10, 0x80040E14, 0x80040E37; of a statement that changes something also 0x80040E09 and
    /// 0x80040E21. It is closed then.
    void open(std::u16string_view source, Connection& connection,
              int cursorType = adOpenForwardOnly, int lockType = adLockReadOnly,
              int options = adOptionUnspecified);

    /// Ends a fetch that runs, without its event. Throws Error{3704} if it is closed.
    void close();

    /// adStateClosed, adStateOpen or adStateOpen | adStateFetching.
    int state() const;

    const std::u16string& source() const { return source_; }

    /// Another view of the same rows, with its own position, at the first row, and its own sort, at
    /// first none. It sees the rows that the fetch adds, and has no events.
    /// Throws Error: 3704; 3001 for a lock type other than read-only and unspecified.
    std::unique_ptr<Recordset> clone(int lockType = adLockUnspecified);

    // ---- Events ----

    /// `progress` rows are there, a multiple of 1,000, of about `maxProgress`.
    std::function<void(std::uint32_t progress, std::uint32_t maxProgress, int status)>
        fetchProgress;

    /// The fetch has ended; `error` is null if every row could be read. The rows are sorted anew.
    std::function<void(const Error* error, int status)> fetchComplete;

    /// Another record has become the current one, or there is none any more.
    std::function<void()> moveComplete;

    /// The rows stand in another order.
    std::function<void()> orderChanged;

    // ---- The current record. All throw Error{3704} if it is closed. ----

    Fields fields() { return Fields{*this}; }

    bool bof() const;
    bool eof() const;

    /// These throw Error{3021} if there is no row, or none left on that side to leave.
    void moveFirst();
    void moveLast();
    void moveNext();
    void movePrevious();

    /// From 1; adPosBOF, adPosEOF, or adPosUnknown if there is no row.
    int absolutePosition() const;

    /// A number above the last row's puts it behind the last row.
    /// Throws Error: 3001 below 1, 3021 if there is no row.
    void setAbsolutePosition(int position);

    /// Rows there are by now.
    int recordCount() const;

    /// Damaged rows and pages that had to be left out until now.
    jet::Skipped skipped() const;

    const std::u16string& sort() const { return order_.sortString(); }

    /// "Date ASC, [Process] DESC", or "" for the order of the fetch. Makes the first row current.
    /// Rows that are still to come follow in the order of the fetch until it ends.
    /// Throws Error: 3265 for an unknown column, 3001, 0x80004005; the old order stays then. A
    /// closed recordset takes no sort but "": 3704.
    void setSort(std::u16string_view sort);

    /// Makes the next record current that satisfies "Field op value" (FindCriterion), from the
    /// current one on after leaving out `skipRecords`; behind the last or before the first row if
    /// there is none. A search for texts is left to the connection's runner, and what it finds out
    /// is kept for the next one with the same pattern.
    /// Throws Error: 3021 without a current record, 3001, 3265, 0x80004005; 3704 if it was closed
    /// meanwhile; 3712 if the connection was told to cancel it, at the record where it was.
    void find(std::u16string_view criterion, int skipRecords = 0, int direction = adSearchForward);

    /// The next `rows` rows as text, and moves behind them; all of them for adGetRowsRest.
    /// Throws Error: 3021 without a current record, 3001, 0x80004005.
    std::u16string getString(int format = adClipString, int rows = adGetRowsRest,
                             std::u16string_view columnDelimiter = u"\t",
                             std::u16string_view rowDelimiter = u"\r",
                             std::u16string_view nullText = u"");

    // ---- Any row, without making it current; for grids. No exception but Error{3704}. ----

    std::uint32_t rowCount() const;

    /// Null if there is no such row, it is gone, or it cannot be read.
    jet::Value valueAt(std::uint32_t position, std::size_t field);

    /// Replaces `out` by the text form; false, and an empty text, where valueAt has no value
    /// because there is no row.
    bool textAt(std::uint32_t position, std::size_t field, std::u16string& out);

    /// For each position a number by which rows are grouped: equal exactly for equal values, smaller
    /// for smaller ones, Null first, all numbers below the greatest used. Costs as much as sorting
    /// by the field. Throws Error: 3704, 0x80004005.
    std::vector<std::uint32_t> valueRanks(std::size_t field);

    /// Memory that the rows and their order take; when the fetch has ended.
    std::size_t byteCount() const;

private:
    friend class Connection;
    friend class Field;
    friend class Fields;

    void requireOpen() const;
    void requireClosed() const;
    RowSet& set() const;
    const std::vector<sql::OutputColumn>& columns() const { return set().columns(); }
    std::uint32_t currentPosition() const;
    jet::Value currentValue(std::size_t field);
    Cells cells() const;

    std::shared_ptr<Opening> fetched(std::shared_ptr<const sql::Query> query, bool asynchronous);
    std::shared_ptr<Opening> openingOf(std::shared_ptr<RowSet> set);
    void attachTo(Connection& connection, std::shared_ptr<Opening> opening);
    void onProgress(std::uint32_t progress);
    void onComplete(const std::exception_ptr& failure);
    void sortAgain();
    void moveTo(const CurrentRecord& wanted);
    void forgetTextMatches() { set().forgetTextMatches(); }

    std::shared_ptr<Scheduler> scheduler_;
    std::shared_ptr<const ValueFormatter> formatter_;
    Properties properties_;
    int cursorLocation_ = adUseServer;
    int pageSize_ = 10;
    int cacheSize_ = 1;

    // Of an open recordset.
    Connection* connection_ = nullptr;
    std::u16string source_;
    std::shared_ptr<Opening> opening_;  ///< null while closed
    CurrentRecord current_;
    ViewOrder order_;
};

}  // namespace ado

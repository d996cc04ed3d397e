// The rows of a query: fetched, in the background if requested, sorted, searched and read, one by
// one or at random.
//
//   ado::Recordset rows{scheduler};
//   rows.fetchComplete = [&](const ado::Error*, int) { rows.setSort(u"Date ASC"); };
//   rows.open(statement, connection, adOpenForwardOnly, adLockReadOnly, adAsyncFetch);
//
// One thread: the owner's, with its clones and its connection; events arrive there.
// Positions are 0 for the first row shown; absolutePosition counts from 1, as is customary. Every
// cursor moves in both directions.
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
    /// Without a scheduler, open() fetches all rows before it returns.
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

    /// How values become text; never null. Clones inherit it.
    void setFormatter(const std::shared_ptr<const ValueFormatter>& formatter);
    const ValueFormatter& formatter() const { return *formatter_; }

    // ---- Opening ----

    /// Opens the rows of a SELECT, with the first one current. With adAsyncFetch, a client cursor
    /// and a query whose rows are rows of a table, it returns when the first rows have been read;
    /// the rest follow. Other queries run to their end; with adAsyncFetch fetchComplete follows.
    /// Commits the connection's changes first; if that fails, so does open().
    ///
    /// Any other statement is executed, whatever the cursor and lock, and leaves the recordset
    /// closed, without an event.
    ///
    /// Throws Error: 3705 while it is open, 3704 for a closed connection, 3001, 0x80004005,
    /// 0x80040E10, 0x80040E14, 0x80040E37; of a statement that changes something also 0x80040E09
    /// and 0x80040E21. It is closed then.
    void open(std::u16string_view source, Connection& connection,
              int cursorType = adOpenForwardOnly, int lockType = adLockReadOnly,
              int options = adOptionUnspecified);

    /// Cancels a running fetch, without its event. Throws Error{3704} if it is closed.
    void close();

    /// adStateClosed, adStateOpen or adStateOpen | adStateFetching.
    int state() const;

    const std::u16string& source() const { return source_; }

    /// Another view of the same rows with its own position (the first row) and its own sort (none
    /// yet). It sees the rows that the fetch adds, and has no events.
    /// Throws Error: 3704; 3001 for a lock type other than read-only and unspecified.
    std::unique_ptr<Recordset> clone(int lockType = adLockUnspecified);

    // ---- Events ----

    /// `progress` rows of about `maxProgress` have been fetched; a multiple of 1,000.
    std::function<void(std::uint32_t progress, std::uint32_t maxProgress, int status)>
        fetchProgress;

    /// The fetch has ended; `error` is null if every row could be read. The rows are sorted anew.
    std::function<void(const Error* error, int status)> fetchComplete;

    /// Another record has become the current one, or there is none any more.
    std::function<void()> moveComplete;

    /// The order of the rows has changed.
    std::function<void()> orderChanged;

    // ---- The current record. All throw Error{3704} if it is closed. ----

    Fields fields() { return Fields{*this}; }

    bool bof() const;
    bool eof() const;

    /// These throw Error{3021} if there is no row, or if it is beyond that end already.
    void moveFirst();
    void moveLast();
    void moveNext();
    void movePrevious();

    /// From 1; adPosBOF, adPosEOF, or adPosUnknown if there is no row.
    int absolutePosition() const;

    /// A number above the last row's moves behind the last row.
    /// Throws Error: 3001 below 1, 3021 if there is no row.
    void setAbsolutePosition(int position);

    /// Rows so far.
    int recordCount() const;

    /// What could not be read so far.
    jet::Losses losses() const;

    const std::u16string& sort() const { return order_.sortString(); }

    /// "Date ASC, [Process] DESC", or "" for the order of the fetch. Makes the first row current.
    /// Rows that arrive later follow in the order of the fetch until it ends.
    /// Throws Error: 3265 for an unknown column, 3001, 0x80004005, and keeps the old order; 3704
    /// for any sort but "" on a closed recordset.
    void setSort(std::u16string_view sort);

    /// Moves to the next record that satisfies "Field op value" (FindCriterion), starting
    /// `skipRecords` after the current one; behind the last or before the first row if there is
    /// none. A search for texts uses the connection's runner, and its results are cached for the
    /// next search with the same pattern. Throws Error: 3021 without a current record, 3001, 3265,
    /// 0x80004005; 3704 if it was closed meanwhile; 3712 if the connection cancelled it, with the
    /// current record unchanged.
    void find(std::u16string_view criterion, int skipRecords = 0, int direction = adSearchForward);

    /// Returns the next `rows` rows as text and moves behind them; adGetRowsRest for all of them.
    /// Throws Error: 3021 without a current record, 3001, 0x80004005.
    std::u16string getString(int format = adClipString, int rows = adGetRowsRest,
                             std::u16string_view columnDelimiter = u"\t",
                             std::u16string_view rowDelimiter = u"\r",
                             std::u16string_view nullText = u"");

    // ---- Any row, without making it current; for grids. No exception but Error{3704}. ----

    std::uint32_t rowCount() const;

    /// Null if there is no such row, if it is deleted, or if it cannot be read.
    jet::Value valueAt(std::uint32_t position, std::size_t field);

    /// Sets `out` to the text form; false, and an empty text, if there is no such row.
    bool textAt(std::uint32_t position, std::size_t field, std::u16string& out);

    /// A rank for each position, for grouping: equal only for equal values, in their order, Null
    /// first, without gaps. Takes as long as sorting by the field. Throws Error: 3704, 0x80004005.
    std::vector<std::uint32_t> valueRanks(std::size_t field);

    /// Memory used by the rows and their order. Requires: the fetch has ended.
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

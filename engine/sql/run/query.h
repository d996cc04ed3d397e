// A SELECT, parsed and bound to the tables of a database, ready to run.
//
//   auto query = sql::Query::prepare(database, u"SELECT Name FROM People WHERE Age > 30");
//   for (auto cursor = query->execute(); cursor->next();) use(cursor->row());
//
// A Query is immutable, any thread may use it; a Cursor or RowFilter belongs to one
// thread.
#pragma once

#include "engine/jet/database.h"
#include "engine/sql/bind/definitions.h"
#include "engine/sql/bind/output_column.h"
#include "engine/sql/values/error.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sql {

/// Decides row by row whether a WHERE clause is satisfied. Results are cached by stored value, so
/// that a long list of alternatives takes one look-up per row.
class RowFilter {
public:
    virtual ~RowFilter() = default;

    /// `pages` is for long values of the record. A field that cannot be read is like Null.
    virtual bool matches(const jet::Record& record, jet::PageReader& pages) = 0;

    /// The fields that the last matches() could not read; the caller may empty it.
    virtual std::vector<jet::LostField>& lost() = 0;
};

/// The rows of a result, one at a time.
class Cursor {
public:
    virtual ~Cursor() = default;

    /// Moves to the next row; false at the end. Damaged rows are left out and counted.
    /// Throws jet::Error for failures of the storage, Error{TypeMismatch}.
    virtual bool next() = 0;

    /// The current row, one value an output column. Requires: the last next() returned true.
    virtual const std::vector<jet::Value>& row() const = 0;

    virtual jet::Losses losses() const = 0;
};

class Query {
public:
    virtual ~Query() = default;

    /// Throws Error: Syntax, NoSuchTable, UnknownColumn, TypeMismatch; jet::Error.
    static std::shared_ptr<const Query> prepare(const std::shared_ptr<jet::Database>& database,
                                                std::u16string_view text,
                                                const Definitions& definitions = {});

    /// Likewise, of a statement that has been parsed.
    static std::shared_ptr<const Query> prepare(const std::shared_ptr<jet::Database>& database,
                                                const SelectStatement& select,
                                                const Definitions& definitions = {});

    virtual const std::vector<OutputColumn>& columns() const = 0;

    /// The table whose rows are the rows of the result: no grouping, no order, and every output
    /// column is stored. Such a result can be scanned with jet::TableScan and rowFilter(). Null
    /// for any other query.
    virtual std::shared_ptr<const jet::Table> scannedTable() const = 0;

    /// A new filter for the WHERE clause; null if there is none or it is always true.
    virtual std::unique_ptr<RowFilter> rowFilter() const = 0;

    /// Whether the WHERE clause is false for every possible row (WHERE -1 = 1).
    virtual bool alwaysEmpty() const = 0;

    /// Runs the query.
    virtual std::unique_ptr<Cursor> execute() const = 0;
};

}  // namespace sql

// Definitions that a reader adds to a file without writing to it: computed columns of its tables,
// and stored queries.
//
//   sql::Definitions added;
//   added.addColumn(u"People", u"Initials", u"[First] & '.' & [Last]");
//   added.addQuery(u"Ages", u"SELECT Age FROM People GROUP BY Age");
//   const auto query = sql::Query::prepare(database, u"SELECT Initials FROM People", added);
//
// A SELECT uses them like stored ones, and instead of a stored column or table of the same name. A
// formula is made of stored columns; a stored query reads a table of the file and its computed
// columns. Statements that change the file do not see definitions.
//
// Plain values; any thread.
#pragma once

#include "engine/jet/database.h"
#include "engine/sql/parse/ast.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sql {

struct ComputedColumn {
    std::u16string table;
    std::u16string name;
    std::shared_ptr<const Node> formula;
};

struct StoredQuery {
    std::u16string name;
    std::shared_ptr<const SelectStatement> select;
};

class Definitions {
public:
    /// Throws Error{Syntax} unless the formula is one expression.
    void addColumn(std::u16string table, std::u16string name, std::u16string_view formula);
    void addColumn(ComputedColumn column) { columns_.push_back(std::move(column)); }

    /// Throws Error{Syntax} unless the text is a SELECT.
    void addQuery(std::u16string name, std::u16string_view text);

    bool empty() const { return columns_.empty() && queries_.empty(); }
    const std::vector<ComputedColumn>& columns() const { return columns_; }
    const std::vector<StoredQuery>& queries() const { return queries_; }

    /// The query of that name, compared as tables are; null if there is none.
    const StoredQuery* findQuery(std::u16string_view name) const;

private:
    std::vector<ComputedColumn> columns_;
    std::vector<StoredQuery> queries_;
};

/// Throws Error unless every definition can be used with the file: NoSuchTable, UnknownColumn,
/// TypeMismatch, Syntax; jet::Error.
void requireUsable(const Definitions& definitions, jet::Database& database);

}  // namespace sql

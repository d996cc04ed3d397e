// What the name behind FROM stands for: a table with its stored and computed columns, or the rows
// of a stored query.
//
//   const sql::Relation people = sql::openRelation(*database, u"People", {});
//   if (const sql::RelationColumn* found = people.find(u"Age")) use(found->value);
//
// Plain values; any thread.
#pragma once

#include "engine/jet/database.h"
#include "engine/sql/bind/definitions.h"
#include "engine/sql/bind/expression.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sql {

struct Plan;

struct RelationColumn {
    std::u16string name;
    std::uint16_t size = 0;  ///< declared size in bytes; 0 where it has none
    ExpressionPtr value;     ///< for a row of the relation
};

struct Relation {
    std::u16string name;
    std::shared_ptr<const jet::Table> table;  ///< keeps the columns alive; null for a stored query
    std::shared_ptr<const Plan> query;        ///< whose results are the rows; null for a table
    std::vector<RelationColumn> columns = {};

    /// The column of that name, case ignored; null if there is none.
    const RelationColumn* find(std::u16string_view columnName) const;
};

/// A table as it is in the file.
Relation relationOf(std::shared_ptr<const jet::Table> table);

/// A computed column replaces a stored one of its name, or comes last.
/// Throws Error: NoSuchTable, and what binding a formula or a stored query throws; jet::Error.
Relation openRelation(jet::Database& database, const std::u16string& name,
                      const Definitions& definitions);

/// Throws Error{NoSuchTable}; jet::Error.
std::shared_ptr<const jet::Table> openTable(jet::Database& database, const std::u16string& name);

}  // namespace sql

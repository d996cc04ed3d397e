// A SELECT bound to its table: what the cursors run.
//
//   const sql::Plan plan = sql::bind(select, *database);
//
// Immutable once bound; any thread may read it.
#pragma once

#include "engine/jet/database.h"
#include "engine/sql/bind/aggregate.h"
#include "engine/sql/bind/definitions.h"
#include "engine/sql/bind/expression.h"
#include "engine/sql/bind/output_column.h"
#include "engine/sql/parse/ast.h"

namespace sql {

struct OrderTerm {
    ExpressionPtr expression;
    bool ascending = true;
};

struct Plan {
    std::shared_ptr<const jet::Table> table;  ///< keeps the database and the columns alive
    std::shared_ptr<const Plan> query;  ///< instead of a table: the plan whose results are the rows
    std::vector<OutputColumn> columns;
    Expressions outputs;      ///< one a column; over a group if grouped
    ExpressionPtr condition;  ///< null: every row
    bool alwaysEmpty = false;
    bool grouped = false;
    Expressions groupKeys;              ///< the first values of a group
    std::vector<Aggregate> aggregates;  ///< the values behind them
    std::vector<OrderTerm> order;       ///< over a group if grouped
    bool distinct = false;
    std::optional<std::uint64_t> top;
};

/// Throws Error: NoSuchTable, UnknownColumn, TypeMismatch, Syntax; jet::Error.
Plan bind(const SelectStatement& select, jet::Database& database,
          const Definitions& definitions = {});

}  // namespace sql

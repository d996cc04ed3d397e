// A WHERE clause as a conjunction of terms.
//
//   auto filter = sql::makeRowFilter(condition, table);
//   if (filter->matches(record, pages)) use(record);
//
// A filter belongs to one thread.
#pragma once

#include "engine/jet/table.h"
#include "engine/sql/bind/expression.h"
#include "engine/sql/run/query.h"

namespace sql {

/// A filter for the rows of `table`, which it keeps alive, for one thread. A term that reads
/// columns of bounded length only is evaluated once for each of their stored contents, while there
/// are few.
std::unique_ptr<RowFilter> makeRowFilter(const ExpressionPtr& condition,
                                         std::shared_ptr<const jet::Table> table);

}  // namespace sql

// A WHERE clause taken apart into terms that all must hold.
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

/// A filter of the rows of `table`, which it keeps alive, for one thread. A term that depends on
/// one column of bounded length is decided once for each stored value, as long as there are few.
std::unique_ptr<RowFilter> makeRowFilter(const ExpressionPtr& condition,
                                         std::shared_ptr<const jet::Table> table);

}  // namespace sql

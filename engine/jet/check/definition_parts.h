// Semantic checks of a table's definition.
//
//   checkColumns(context, definition);
//   checkIndexes(context, definition);
//
// One thread, that of the check.
#pragma once

#include "engine/jet/check/context.h"
#include "engine/jet/table_definition.h"

namespace jet::checking {

/// Numbers, places in the record and names of the columns.
void checkColumns(Context& context, const TableDefinition& definition);

/// Columns, numbers and names of the indexes.
void checkIndexes(Context& context, const TableDefinition& definition);

}  // namespace jet::checking

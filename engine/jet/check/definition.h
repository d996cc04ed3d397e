// Checks of a table's definition: its pages as bytes, its columns, its indexes.
//
//   const auto definition = checkDefinition(context, first, u"tblTraces");
//   if (definition) use(definition->columns.size());
//
// One thread, that of the check.
#pragma once

#include "engine/jet/check/context.h"
#include "engine/jet/table_definition.h"

namespace jet::checking {

/// Bytes of a column in the fixed part of a record; none for a Boolean, whose value is a bit of the
/// null mask. Requires: the column is fixed.
std::size_t fixedBytes(const Column& column);

/// Claims the pages of the definition that starts on `first`, checks the definition and reads
/// it. Nothing if it cannot be read.
std::optional<TableDefinition> checkDefinition(Context& context, PageNumber first,
                                               std::u16string name);

}  // namespace jet::checking

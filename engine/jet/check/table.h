// The check of one table with its records, long values and indexes.
//
//   if (const auto table = checkTable(context, first, u"tblTraces")) use(table->rows.ids.size());
//
// One thread, that of the check.
#pragma once

#include "engine/jet/check/rows.h"

namespace jet::checking {

struct CheckedTable {
    TableDefinition definition;
    LiveRows rows;
};

/// Checks the table whose definition starts on `first`. Nothing if the definition cannot be read.
std::optional<CheckedTable> checkTable(Context& context, PageNumber first,
                                       const std::u16string& name);

}  // namespace jet::checking

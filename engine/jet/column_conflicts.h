// Columns whose description contradicts the format or the other columns: what their fields would show
// is not what was stored.
//
//   jet::TableDefinition traces = jet::TableDefinition::read(pages, number, u"tblTraces");
//   jet::setAsideConflicts(traces);
//
// Pure functions; any thread.
#pragma once

#include "engine/jet/table_definition.h"

namespace jet {

/// Makes columns of an unknown type, and those whose id, variable index or place in the fixed part
/// belongs to another column or is impossible, unreadable, and adds them to the losses. Where only
/// one of two columns can be the damaged one, the other stays. The second of two columns of a name
/// is called Column and its number.
void setAsideConflicts(TableDefinition& definition);

}  // namespace jet

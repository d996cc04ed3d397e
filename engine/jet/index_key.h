// Keys made of values, as the entries of an index hold them. The layout is in format/index_key.h.
//
//   jet::Key key;
//   jet::appendKeyPart(std::u16string{u"Notifier"}, column, true, key);
//   cursor.seek(key);
//
// Any thread may call these functions.
#pragma once

#include "engine/jet/index_page.h"
#include "engine/jet/table_definition.h"
#include "engine/jet/value.h"

#include <span>

namespace jet {

/// Whether keys for this index can be made: its columns exist, their types have keys, and its texts
/// have the General collation. Any index can be traversed, whatever the result.
bool canMakeKeys(const TableDefinition& definition, const PhysicalIndex& index);

/// Appends one column's part of a key: flag byte and value. Of text and memo, the collation key of
/// the first 255 characters. Throws std::invalid_argument for an unsupported column or a value that
/// is not of the column's type.
void appendKeyPart(const Value& value, const Column& column, bool ascending, Key& key);

/// The key of one row: the values of the index's columns in the index's order.
/// Throws std::invalid_argument as appendKeyPart does, and for another number of values.
Key encodeKey(std::span<const Value> values, const TableDefinition& definition,
              const PhysicalIndex& index);

}  // namespace jet

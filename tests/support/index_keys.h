// Keys of index entries: values in a form that orders byte by byte.
#pragma once

#include "tests/support/cell.h"

namespace fixture {

/// Appends one column's part of a key. Texts go through the format's collation.
/// Throws std::invalid_argument for a value that cannot be indexed.
void appendKeyPart(jet::ColumnType type, const Cell& cell, bool ascending, ByteVector& key);

}  // namespace fixture

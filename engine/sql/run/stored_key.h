// The stored bytes of some fields of a record as one key: rows with equal stored fields have equal
// keys.
//
//   const sql::Columns columns{&column};
//   sql::OrderKey key;
//   if (sql::haveStoredKeys(columns)) sql::makeStoredKey(record, columns, key);
//
// Pure functions; any thread may call them.
#pragma once

#include "engine/jet/record.h"
#include "engine/sql/values/comparison.h"

#include <vector>

namespace sql {

using Columns = std::vector<const jet::Column*>;

/// Whether the values of all these columns are stored in the record itself.
bool haveStoredKeys(const Columns& columns);

/// Replaces `key`; false if one of the fields is damaged.
bool makeStoredKey(const jet::Record& record, const Columns& columns, OrderKey& key);

}  // namespace sql

// The contents of a database as text: its tables, their columns and indexes.
//
//   plain::listTables(*database, stdout);
//
// Any thread may call.
#pragma once

#include "engine/jet/database.h"

#include <cstdio>

namespace plain {

/// One line for each user table: its name, a tab and the number of rows, counted, or why the table
/// cannot be read.
jet::Losses listTables(jet::Database& database, std::FILE* out);

/// Each user table with its columns, their types and sizes, and its indexes, or why the
/// table cannot be read.
jet::Losses listSchema(jet::Database& database, std::FILE* out);

}  // namespace plain

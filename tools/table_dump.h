// Whole tables in the plain form, by several threads, in storage order.
//
//   const jet::Losses lost = plain::dumpRows(*query, threads, stdout);
//
// Any thread may call, one at a time for a file.
#pragma once

#include "engine/sql/run/query.h"

#include <cstdio>

namespace plain {

/// Writes the rows of a query that scans a table, without the header row. The text is made by
/// `threads` threads (at least 1); the calling one writes it.
/// Requires: query.scannedTable() is not null. Throws jet::Error, sql::Error, std::system_error.
jet::Losses dumpRows(const sql::Query& query, unsigned threads, std::FILE* out);

/// Throws std::system_error if not all of `text` could be written.
void writeAll(std::string_view text, std::FILE* out);

/// Throws std::system_error if the buffered output could not be written.
void flush(std::FILE* out);

}  // namespace plain

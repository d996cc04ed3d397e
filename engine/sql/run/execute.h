// Runs the statements that change a database.
//
//   sql::execute(*database, u"UPDATE People SET Age = Age + 1 WHERE Name = 'Ada'");
//   database->commit();
//
// A statement is atomic, and what it did can be read at once; the commit makes it durable.
// One thread at a time, the one that writes.
#pragma once

#include "engine/jet/database.h"
#include "engine/sql/parse/ast.h"
#include "engine/sql/values/error.h"

namespace sql {

/// Whether the statement returns rows: those are run by Query, all others by execute().
bool isQuery(const Statement& statement);

/// Returns how many rows were changed or added; 0 for a statement that changes the schema.
/// Throws Error; jet::Error: what Database::write throws, the faults of jet/write, ReadOnly for a
/// system table. Nothing has changed then. Requires: not isQuery(statement).
std::uint64_t execute(jet::Database& database, const Statement& statement);

/// Throws Error{Syntax} for a SELECT, too.
std::uint64_t execute(jet::Database& database, std::u16string_view text);

}  // namespace sql

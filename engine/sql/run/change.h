// How UPDATE and INSERT change the rows of a table.
//
//   database->write([&](jet::WriteContext& context) { sql::updateRows(context, update); });
//
// One thread, that of the statement.
#pragma once

#include "engine/jet/table.h"
#include "engine/jet/write/write_context.h"
#include "engine/sql/parse/ast.h"

namespace sql {

/// The table, to be changed. Throws Error{NoSuchTable}; jet::Error{ReadOnly} for a system table.
std::shared_ptr<const jet::Table> openToChange(jet::WriteContext& context,
                                               const std::u16string& name);

/// The index of a column in the table's definition. Throws Error{UnknownColumn}.
std::size_t placeOfColumn(const jet::Table& table, std::u16string_view name);

/// Returns how many rows satisfy the condition. All expressions see the row as it was before.
/// Throws Error; jet::Error, Damaged also for a damaged row anywhere in the table.
std::uint64_t updateRows(jet::WriteContext& context, const UpdateStatement& update);

/// Returns how many rows were added. Damaged rows of a SELECT are skipped, as always; a SELECT from
/// the same table sees the rows that were there before. Without a list of columns, values are
/// assigned by position and those of a SELECT by name.
/// Throws Error; jet::Error.
std::uint64_t insertRows(jet::WriteContext& context, const InsertStatement& insert);

}  // namespace sql

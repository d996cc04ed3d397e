// The filter: makes the WHERE clause from the ticked unique traces, and their keys and texts in the
// tree.
//
//   const std::u16string expression = constructFilterExpression(modDatabase::uniqueTraces());
//   modDatabase::openDiagRecordset(whereClause(expression));
//
// Plain functions of their arguments; any thread.
#pragma once

#include "src/db/unique_trace.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// One term " ( qrxIndex = 'KEY' ) " for each ticked row, joined by " OR "; "-1" if every row is
/// ticked; empty if none is. Keys are inserted literally, quotes are not doubled.
std::u16string constructFilterExpression(const UniqueTraces& traces);

/// "WHERE " and the expression; if that is empty, a clause that no row satisfies.
std::u16string whereClause(const std::u16string& expression);

/// A value as shown in the tree; Null is empty text.
std::u16string plainText(const jet::Value& value);

/// Key and text of a component's node.
std::u16string componentKey(const UniqueTrace& trace);
std::u16string componentText(const UniqueTrace& trace);

/// Key of a unique trace's node: "Item:" and its row.
std::u16string itemKey(std::size_t row);

/// The row of an item's key; nothing for a component's key.
std::optional<std::size_t> rowOfKey(std::u16string_view key);

/// "PROCESS Process", "Level: N" and "Source: SOURCE" in columns of a fixed-width font. A text that
/// is longer than its column moves the rest to the right.
std::u16string itemText(const UniqueTrace& trace);

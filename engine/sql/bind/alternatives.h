// Sets of constants that a column may equal: what long lists of OR and IN turn into.
//
//   sql::ExpressionPtr known = sql::makeAlternatives(sql::makeColumn(column), values);
//
// Pure functions; any thread may call them.
#pragma once

#include "engine/sql/bind/expression.h"

#include <optional>
#include <utility>
#include <vector>

namespace sql {

/// Whether `operand` equals one of `values`: a look-up, however many there are. Null values never
/// equal, they make the answer for all others null. Throws Error{TypeMismatch} for a value that
/// does not compare with the operand.
ExpressionPtr makeAlternatives(ExpressionPtr operand, std::vector<jet::Value> values);

/// The column and the constants if `expression` is `column = constant`, in either order, or a set
/// of a column; else nothing.
std::optional<std::pair<ExpressionPtr, std::vector<jet::Value>>> alternativesOf(
    const Expression& expression);

}  // namespace sql

// Sets of constants that a column may equal, made from long lists of OR and IN.
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

/// Whether `operand` equals one of `values`: one look-up, however many there are. A null value
/// equals nothing and turns every false into null. Throws Error{TypeMismatch} for a value that
/// cannot be compared with the operand.
ExpressionPtr makeAlternatives(ExpressionPtr operand, std::vector<jet::Value> values);

/// The operand and the constants if `expression` is `operand = constant`, in either order, or a set
/// of alternatives; else nothing.
std::optional<std::pair<ExpressionPtr, std::vector<jet::Value>>> alternativesOf(
    const Expression& expression);

}  // namespace sql

// Conversion of a value to the type of the column in which it is stored.
//
//   values[place] = sql::toColumnValue(expression->evaluate(row), column);
//
// Independent of the system's language, like `&`. Any thread may call.
#pragma once

#include "engine/jet/table_definition.h"
#include "engine/jet/value.h"

namespace sql {

/// Null stays Null, except that it is False in a Boolean column. Numbers are converted between
/// types, rounded half to even where the type has fewer decimals; True is -1, and 255 in a Byte. A
/// date counts as its number of days. Texts are parsed as numbers, dates, Booleans ("True", "False"
/// or a number) and GUIDs, and everything except binary values becomes text as in appendText.
/// Throws Error: Conversion if the value is out of the column's range, too long for its text or
/// does not parse; TypeMismatch if there is no such conversion.
jet::Value toColumnValue(jet::Value value, const jet::Column& column);

}  // namespace sql

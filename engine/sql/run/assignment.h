// How a value becomes one of a column's type when it is stored there.
//
//   values[place] = sql::toColumnValue(expression->evaluate(row), column);
//
// The forms are those of one fixed language, as `&` has them. Any thread may call.
#pragma once

#include "engine/jet/table_definition.h"
#include "engine/jet/value.h"

namespace sql {

/// Null stays Null, but is False in a Boolean column. Numbers become numbers of other types, rounded
/// half to even where the type has fewer decimals; True is -1, and 255 in a Byte. A date is its
/// number of days. Texts become numbers, dates, Booleans ("True", "False" or a number) and GUIDs if
/// they are written like one, and everything but binary values becomes text as appendText has it.
/// Throws Error: Conversion if the value is out of the column's range, longer than its text or not
/// written like what it has to become; TypeMismatch if nothing of its kind can.
jet::Value toColumnValue(jet::Value value, const jet::Column& column);

}  // namespace sql

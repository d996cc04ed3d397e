// The text form of a value in the concatenation operator.
//
//   sql::appendText(left, text);
//
// A pure function; any thread may call it.
#pragma once

#include "engine/jet/value.h"

#include <string>

namespace sql {

/// Appends the text of `value`: nothing for null, numbers in decimal with a point whatever the
/// system's language, Booleans as -1 and 0, dates as in generalDate.
/// Throws Error{TypeMismatch} for binary values.
void appendText(const jet::Value& value, std::u16string& out);

}  // namespace sql

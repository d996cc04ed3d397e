// Encodes values for storage: the inverse of decodeField.
//
//   jet::Binary stored;
//   jet::encodeValue(std::u16string{u"Notifier"}, column, stored);
//
// Pure functions; any thread may call them.
#pragma once

#include "engine/jet/table_definition.h"
#include "engine/jet/value.h"

namespace jet {

/// Appends the stored form of text: compressed if `compress` is set and that is shorter, else
/// UTF-16. The result is the same as the original engine's.
void encodeText(std::u16string_view text, bool compress, Binary& out);

/// Appends the bytes of a value that is not null; of a Memo or Ole the content, without its header;
/// of a Boolean nothing.
/// Throws Error: WrongType if it is not of the column's type, ValueTooLarge if it is too long for
/// the column.
void encodeValue(const Value& value, const Column& column, Binary& out);

}  // namespace jet

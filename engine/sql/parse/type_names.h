// The types of columns as statements write them.
//
//   jet::NewColumn notes{.name = u"Notes"};
//   sql::parseType(tokens, notes);  // TEXT(255)
//
// One thread, that of the token stream.
#pragma once

#include "engine/sql/parse/token_stream.h"

namespace sql {

/// Parses a type with its size into the column.
/// Throws Error{Syntax} for an unknown type and for a size that it cannot have.
void parseType(TokenStream& tokens, jet::NewColumn& column);

}  // namespace sql

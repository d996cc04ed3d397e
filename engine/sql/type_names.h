// The types of columns as statements write them.
//
//   jet::NewColumn column{.name = u"Notes"};
//   sql::parseType(tokens, column);  // TEXT(255)
#pragma once

#include "engine/sql/token_stream.h"

namespace sql {

/// Reads a type with its size and fills in what the column has of it.
/// Throws Error{Syntax} for an unknown type and for a size that it cannot have.
void parseType(TokenStream& tokens, jet::NewColumn& column);

}  // namespace sql

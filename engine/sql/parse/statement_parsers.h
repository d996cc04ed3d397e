// The parsers of the kinds of statements. Each starts after the keyword that names its kind and
// stops at the end of the statement.
//
//   if (tokens.takeWord(u"SELECT")) use(sql::parseSelect(tokens));
//
// All throw Error{Syntax}, naming the place. One thread, that of the token stream.
#pragma once

#include "engine/sql/parse/token_stream.h"

namespace sql {

SelectStatement parseSelect(TokenStream& tokens);
UpdateStatement parseUpdate(TokenStream& tokens);
InsertStatement parseInsert(TokenStream& tokens);

/// CREATE TABLE, CREATE INDEX
Statement parseCreate(TokenStream& tokens);

/// ALTER TABLE, which adds a column
AddColumnStatement parseAlter(TokenStream& tokens);

/// DROP TABLE
DropTableStatement parseDrop(TokenStream& tokens);

}  // namespace sql

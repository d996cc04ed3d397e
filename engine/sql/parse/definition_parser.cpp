// CREATE, ALTER and DROP.
#include "engine/sql/parse/statement_parsers.h"
#include "engine/sql/parse/type_names.h"

namespace sql {

namespace {

/// What a key made by a column's own definition is called.
constexpr std::u16string_view kKeyName = u"PrimaryKey";

/// Whether the column cannot be Null anyway.
bool neverNull(const jet::NewColumn& column, bool key) {
    return key || column.autonumber || column.type == jet::ColumnType::Boolean;
}

/// A column and the index that it asks for.
jet::NewColumn parseColumn(TokenStream& tokens, std::vector<jet::NewIndex>& indexes) {
    jet::NewColumn column{.name = tokens.expectName()};
    parseType(tokens, column);
    const std::size_t position = tokens.peek().position;
    const bool required = tokens.takeWord(u"NOT");
    if (required) tokens.expectWord(u"NULL");
    const bool key = tokens.takeWord(u"PRIMARY");
    if (key) {
        tokens.expectWord(u"KEY");
        indexes.push_back(
            {.name = std::u16string{kKeyName}, .columns = {{column.name}}, .primary = true});
    }
    if (required && !neverNull(column, key)) {
        tokens.failAt(position,
                      "Syntax error: NOT NULL needs PRIMARY KEY or an index WITH DISALLOW NULL");
    }
    return column;
}

CreateTableStatement parseCreateTable(TokenStream& tokens) {
    tokens.setReason("Syntax error in CREATE TABLE statement");
    CreateTableStatement create;
    create.table = tokens.expectName();
    tokens.expectSymbol(u"(");
    do {
        create.columns.push_back(parseColumn(tokens, create.indexes));
    } while (tokens.takeSymbol(u","));
    tokens.expectSymbol(u")");
    return create;
}

jet::NewIndexColumn parseIndexColumn(TokenStream& tokens) {
    jet::NewIndexColumn column{.name = tokens.expectName()};
    column.ascending = !tokens.takeWord(u"DESC");
    if (column.ascending) tokens.takeWord(u"ASC");
    return column;
}

void parseIndexOption(TokenStream& tokens, jet::NewIndex& index) {
    if (tokens.takeWord(u"PRIMARY")) {
        index.primary = true;
    } else if (tokens.takeWord(u"DISALLOW")) {
        tokens.expectWord(u"NULL");
        index.required = true;
    } else {
        tokens.expectWord(u"IGNORE");
        tokens.expectWord(u"NULL");
        index.ignoreNulls = true;
    }
}

CreateIndexStatement parseCreateIndex(TokenStream& tokens, bool unique) {
    tokens.setReason("Syntax error in CREATE INDEX statement");
    CreateIndexStatement create;
    create.index.unique = unique;
    create.index.name = tokens.expectName();
    tokens.expectWord(u"ON");
    create.table = tokens.expectName();
    tokens.expectSymbol(u"(");
    do {
        create.index.columns.push_back(parseIndexColumn(tokens));
    } while (tokens.takeSymbol(u","));
    tokens.expectSymbol(u")");
    if (tokens.takeWord(u"WITH")) parseIndexOption(tokens, create.index);
    return create;
}

/// COLUMN is a word of the language where a name and a type follow, else a column's name.
void skipColumnWord(TokenStream& tokens) {
    const bool nameFollows = tokens.peek(1).kind == TokenKind::Name;
    const bool typeFollows = tokens.peek(2).kind == TokenKind::Name;
    if (nameFollows && typeFollows) tokens.takeWord(u"COLUMN");
}

}  // namespace

Statement parseCreate(TokenStream& tokens) {
    tokens.setReason("Syntax error in CREATE statement");
    if (tokens.takeWord(u"TABLE")) return parseCreateTable(tokens);
    const bool unique = tokens.takeWord(u"UNIQUE");
    tokens.expectWord(u"INDEX");
    return parseCreateIndex(tokens, unique);
}

AddColumnStatement parseAlter(TokenStream& tokens) {
    tokens.setReason("Syntax error in ALTER TABLE statement");
    AddColumnStatement alter;
    tokens.expectWord(u"TABLE");
    alter.table = tokens.expectName();
    tokens.expectWord(u"ADD");
    skipColumnWord(tokens);
    alter.column = parseColumn(tokens, alter.indexes);
    return alter;
}

DropTableStatement parseDrop(TokenStream& tokens) {
    tokens.setReason("Syntax error in DROP TABLE statement");
    tokens.expectWord(u"TABLE");
    return {tokens.expectName()};
}

}  // namespace sql

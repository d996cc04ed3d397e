// UPDATE and INSERT.
#include "engine/sql/parse/statement_parsers.h"

namespace sql {

namespace {

/// A column's name; one of the table itself may stand before it.
std::u16string columnName(TokenStream& tokens) {
    std::u16string name = tokens.expectName();
    if (tokens.takeSymbol(u".") || tokens.takeSymbol(u"!")) name = tokens.expectName();
    return name;
}

ColumnChange parseChange(TokenStream& tokens) {
    ColumnChange change;
    change.position = tokens.peek().position;
    change.column = columnName(tokens);
    tokens.expectSymbol(u"=");
    change.value = parseExpression(tokens);
    return change;
}

std::vector<NodePtr> parseValues(TokenStream& tokens) {
    std::vector<NodePtr> values;
    tokens.expectSymbol(u"(");
    do {
        values.push_back(parseExpression(tokens));
    } while (tokens.takeSymbol(u","));
    tokens.expectSymbol(u")");
    return values;
}

}  // namespace

UpdateStatement parseUpdate(TokenStream& tokens) {
    tokens.setReason("Syntax error in UPDATE statement");
    UpdateStatement update;
    update.table = tokens.expectName();
    if (tokens.takeWord(u"AS")) update.tableAlias = tokens.expectName();
    tokens.expectWord(u"SET");
    do {
        update.changes.push_back(parseChange(tokens));
    } while (tokens.takeSymbol(u","));
    if (tokens.takeWord(u"WHERE")) update.where = parseExpression(tokens);
    return update;
}

InsertStatement parseInsert(TokenStream& tokens) {
    tokens.setReason("Syntax error in INSERT INTO statement");
    InsertStatement insert;
    tokens.expectWord(u"INTO");
    insert.table = tokens.expectName();
    if (tokens.takeSymbol(u"(")) {
        do {
            insert.columns.push_back(columnName(tokens));
        } while (tokens.takeSymbol(u","));
        tokens.expectSymbol(u")");
    }
    if (tokens.takeWord(u"SELECT")) {
        insert.rows = parseSelect(tokens);
    } else {
        tokens.expectWord(u"VALUES");
        insert.values = parseValues(tokens);
    }
    return insert;
}

}  // namespace sql

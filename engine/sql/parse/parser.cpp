#include "engine/sql/parse/statement_parsers.h"

namespace sql {

namespace {

Statement parseAnyStatement(TokenStream& tokens) {
    if (tokens.takeWord(u"SELECT")) return parseSelect(tokens);
    if (tokens.takeWord(u"UPDATE")) return parseUpdate(tokens);
    if (tokens.takeWord(u"INSERT")) return parseInsert(tokens);
    if (tokens.takeWord(u"CREATE")) return parseCreate(tokens);
    if (tokens.takeWord(u"ALTER")) return parseAlter(tokens);
    if (tokens.takeWord(u"DROP")) return parseDrop(tokens);
    tokens.fail("Syntax error: SELECT, UPDATE, INSERT, CREATE, ALTER or DROP is expected");
}

}  // namespace

Statement parseStatement(std::u16string_view text) {
    TokenStream tokens{text};
    Statement statement = parseAnyStatement(tokens);
    tokens.takeSymbol(u";");
    if (tokens.peek().kind != TokenKind::End) tokens.fail();
    return statement;
}

NodePtr parseExpression(std::u16string_view text) {
    TokenStream tokens{text};
    NodePtr expression = parseExpression(tokens);
    if (tokens.peek().kind != TokenKind::End) tokens.fail();
    return expression;
}

}  // namespace sql

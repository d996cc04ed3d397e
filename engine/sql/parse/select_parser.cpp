#include "engine/sql/parse/statement_parsers.h"

namespace sql {

namespace {

class SelectParser {
public:
    explicit SelectParser(TokenStream& tokens) : tokens_{tokens} {}

    SelectStatement parse() {
        parseQuantity();
        parseItems();
        if (!tokens_.takeWord(u"FROM")) tokens_.fail("Syntax error: FROM and a table are expected");
        parseTable();
        if (tokens_.takeWord(u"WHERE")) select_.where = parseExpression(tokens_);
        if (takeClause(u"GROUP")) parseGroups();
        if (takeClause(u"ORDER")) parseOrder();
        return std::move(select_);
    }

private:
    /// ALL, DISTINCT and TOP n are words of the language only where a list can follow them.
    void parseQuantity() {
        if (isQuantity(u"ALL")) {
            tokens_.take();
        } else if (isQuantity(u"DISTINCT")) {
            tokens_.take();
            select_.distinct = true;
        }
        const Token& count = tokens_.peek(1);
        if (!tokens_.isWord(u"TOP") || count.kind != TokenKind::Literal) return;
        const auto* number = std::get_if<std::int32_t>(&count.value);
        if (!number) tokens_.failAt(count.position, "Syntax error: TOP needs a whole number");
        select_.top = static_cast<std::uint64_t>(*number);
        tokens_.take();
        tokens_.take();
    }

    bool isQuantity(std::u16string_view word) const {
        return tokens_.isWord(word) && !tokens_.isSymbol(u",", 1) && !tokens_.isSymbol(u".", 1) &&
               !tokens_.isWord(u"FROM", 1) && !tokens_.isWord(u"AS", 1);
    }

    void parseItems() {
        do {
            select_.items.push_back(parseItem());
        } while (tokens_.takeSymbol(u","));
    }

    SelectItem parseItem() {
        SelectItem item;
        item.position = tokens_.peek().position;
        if (tokens_.takeSymbol(u"*")) return item;
        if (tokens_.peek().kind == TokenKind::Name && tokens_.isSymbol(u".", 1) &&
            tokens_.isSymbol(u"*", 2)) {
            item.starOf = tokens_.expectName();
            tokens_.take();
            tokens_.take();
            return item;
        }
        item.expression = parseExpression(tokens_);
        if (tokens_.takeWord(u"AS")) item.alias = tokens_.expectName();
        return item;
    }

    void parseTable() {
        select_.table = tokens_.expectName();
        if (tokens_.takeWord(u"AS")) {
            select_.tableAlias = tokens_.expectName();
        } else if (tokens_.peek().kind == TokenKind::Name && !startsClause()) {
            select_.tableAlias = tokens_.expectName();
        }
        if (tokens_.isSymbol(u",") || tokens_.isWord(u"INNER") || tokens_.isWord(u"JOIN")) {
            tokens_.fail("Syntax error: only one table is supported");
        }
    }

    bool startsClause() const {
        for (const auto word : {u"WHERE", u"GROUP", u"ORDER", u"HAVING", u"UNION", u"INNER",
                                u"LEFT", u"RIGHT", u"JOIN"}) {
            if (tokens_.isWord(word)) return true;
        }
        return false;
    }

    bool takeClause(std::u16string_view word) {
        if (!tokens_.takeWord(word)) return false;
        tokens_.expectWord(u"BY");
        return true;
    }

    void parseGroups() {
        do {
            select_.groupBy.push_back(parseExpression(tokens_));
        } while (tokens_.takeSymbol(u","));
    }

    void parseOrder() {
        do {
            OrderItem item;
            item.expression = parseExpression(tokens_);
            if (tokens_.takeWord(u"DESC")) {
                item.ascending = false;
            } else {
                tokens_.takeWord(u"ASC");
            }
            select_.orderBy.push_back(std::move(item));
        } while (tokens_.takeSymbol(u","));
    }

    TokenStream& tokens_;
    SelectStatement select_;
};

}  // namespace

SelectStatement parseSelect(TokenStream& tokens) { return SelectParser{tokens}.parse(); }

}  // namespace sql

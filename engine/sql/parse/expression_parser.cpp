#include "engine/sql/parse/token_stream.h"

#include <array>
#include <utility>

namespace sql {

namespace {

/// Parentheses within parentheses, and nodes within nodes. Walks of a tree recurse this deep, with
/// one to two kilobytes a level, on threads whose stack may be one megabyte.
constexpr unsigned kMaxDepth = 500;

/// How tightly operators bind, loosest first.
enum class Binding { Or, And, Not, Comparison, Join, Additive, Multiplicative, Sign };

Binding tighter(Binding binding) { return static_cast<Binding>(static_cast<int>(binding) + 1); }

struct OperatorSign {
    std::u16string_view symbol;
    Operator op;
    Binding binding;
};

constexpr std::array<OperatorSign, 11> kSigns{{
    {u"=", Operator::Equal, Binding::Comparison},
    {u"<>", Operator::Unequal, Binding::Comparison},
    {u"<", Operator::Less, Binding::Comparison},
    {u">", Operator::Greater, Binding::Comparison},
    {u"<=", Operator::LessOrEqual, Binding::Comparison},
    {u">=", Operator::GreaterOrEqual, Binding::Comparison},
    {u"&", Operator::Join, Binding::Join},
    {u"+", Operator::Add, Binding::Additive},
    {u"-", Operator::Subtract, Binding::Additive},
    {u"*", Operator::Multiply, Binding::Multiplicative},
    {u"/", Operator::Divide, Binding::Multiplicative},
}};

/// Words that cannot be a column's name without brackets where an operand is expected.
constexpr std::array<std::u16string_view, 13> kReserved{
    u"SELECT", u"FROM",    u"WHERE", u"AND", u"OR", u"NOT",   u"LIKE",
    u"IN",     u"BETWEEN", u"IS",    u"AS",  u"BY", u"HAVING"};

/// Precedence climbing.
class ExpressionParser {
public:
    explicit ExpressionParser(TokenStream& tokens) : tokens_{tokens} {}

    /// An expression of operators that bind at least as tightly as `loosest`.
    NodePtr parse(Binding loosest) {
        if (++depth_ > kMaxDepth) failDepth();
        NodePtr left = operand();
        for (NodePtr more; (more = extended(left, loosest)) != nullptr;) left = std::move(more);
        --depth_;
        return left;
    }

private:
    [[noreturn]] void failDepth() const {
        tokens_.fail("Syntax error: the expression is nested too deeply");
    }

    NodePtr node(NodeKind kind) const {
        auto made = std::make_unique<Node>();
        made->kind = kind;
        made->position = tokens_.peek().position;
        return made;
    }

    void adopt(Node& parent, NodePtr child) const {
        parent.depth = std::max(parent.depth, child->depth + 1);
        if (parent.depth > kMaxDepth) failDepth();
        parent.operands.push_back(std::move(child));
    }

    /// `left` with the operator that follows it and its right side; null, and `left` untouched, if
    /// none follows or it binds too loosely.
    NodePtr extended(NodePtr& left, Binding loosest) {
        if (loosest <= Binding::Or && tokens_.takeWord(u"OR")) {
            return listed(NodeKind::Or, std::move(left), parse(Binding::And));
        }
        if (loosest <= Binding::And && tokens_.takeWord(u"AND")) {
            return listed(NodeKind::And, std::move(left), parse(Binding::Not));
        }
        if (loosest <= Binding::Comparison && startsPredicate()) return predicate(std::move(left));
        if (tokens_.peek().kind != TokenKind::Symbol) return nullptr;
        for (const OperatorSign& sign : kSigns) {
            if (sign.binding < loosest || !tokens_.isSymbol(sign.symbol)) continue;
            tokens_.take();
            return chained(sign.op, std::move(left), parse(tighter(sign.binding)));
        }
        return nullptr;
    }

    NodePtr listed(NodeKind kind, NodePtr left, NodePtr right) const {
        if (left->kind != kind) {
            NodePtr list = node(kind);
            list->position = left->position;
            adopt(*list, std::move(left));
            left = std::move(list);
        }
        if (right->kind != kind) {
            adopt(*left, std::move(right));
        } else {
            for (NodePtr& operand : right->operands) adopt(*left, std::move(operand));
        }
        return left;
    }

    NodePtr chained(Operator op, NodePtr left, NodePtr right) const {
        const bool continues =
            left->kind == NodeKind::Chain && levelOf(left->operators.front()) == levelOf(op);
        if (!continues) {
            NodePtr chain = node(NodeKind::Chain);
            chain->position = left->position;
            adopt(*chain, std::move(left));
            left = std::move(chain);
        }
        left->operators.push_back(op);
        adopt(*left, std::move(right));
        return left;
    }

    bool startsPredicate() const {
        const std::size_t at = tokens_.isWord(u"NOT") ? 1 : 0;
        return tokens_.isWord(u"IN", at) || tokens_.isWord(u"LIKE", at) ||
               tokens_.isWord(u"BETWEEN", at) || (at == 0 && tokens_.isWord(u"IS"));
    }

    NodePtr predicate(NodePtr left) {
        NodePtr result = node(NodeKind::IsNull);
        result->position = left->position;
        result->negated = tokens_.takeWord(u"NOT");
        adopt(*result, std::move(left));
        if (tokens_.takeWord(u"IN")) {
            result->kind = NodeKind::In;
            tokens_.expectSymbol(u"(");
            adoptList(*result);
        } else if (tokens_.takeWord(u"LIKE")) {
            result->kind = NodeKind::Like;
            adopt(*result, parse(Binding::Join));
        } else if (tokens_.takeWord(u"BETWEEN")) {
            result->kind = NodeKind::Between;
            adopt(*result, parse(Binding::Join));
            tokens_.expectWord(u"AND");
            adopt(*result, parse(Binding::Join));
        } else {
            tokens_.expectWord(u"IS");
            result->negated = tokens_.takeWord(u"NOT");
            tokens_.expectWord(u"NULL");
        }
        return result;
    }

    /// One or more expressions and the parenthesis that closes them.
    void adoptList(Node& parent) {
        do {
            adopt(parent, parse(Binding::Or));
        } while (tokens_.takeSymbol(u","));
        tokens_.expectSymbol(u")");
    }

    NodePtr operand() {
        NodePtr result = node(NodeKind::Literal);
        if (tokens_.takeSymbol(u"(")) {
            result = parse(Binding::Or);
            tokens_.expectSymbol(u")");
            return result;
        }
        if (tokens_.takeSymbol(u"-")) return unary(std::move(result), NodeKind::Negative);
        if (tokens_.takeSymbol(u"+")) return parse(Binding::Sign);
        if (tokens_.peek().kind == TokenKind::Literal) {
            result->value = tokens_.take().value;
            return result;
        }
        if (tokens_.peek().kind != TokenKind::Name) tokens_.fail();
        if (tokens_.takeWord(u"NOT")) return unary(std::move(result), NodeKind::Not);
        if (tokens_.takeWord(u"NULL")) return result;
        if (tokens_.isWord(u"TRUE") || tokens_.isWord(u"FALSE")) {
            result->value = tokens_.isWord(u"TRUE");
            tokens_.take();
            return result;
        }
        return named(std::move(result));
    }

    NodePtr unary(NodePtr result, NodeKind kind) {
        result->kind = kind;
        adopt(*result, parse(kind == NodeKind::Not ? Binding::Not : Binding::Sign));
        return result;
    }

    /// A column, a column of a table, or a function's call.
    NodePtr named(NodePtr result) {
        const bool quoted = tokens_.peek().quoted;
        for (const auto word : kReserved) {
            if (tokens_.isWord(word)) tokens_.fail();
        }
        result->name = tokens_.expectName();
        if (!quoted && tokens_.takeSymbol(u"(")) return call(std::move(result));
        result->kind = NodeKind::Column;
        if (tokens_.takeSymbol(u".") || tokens_.takeSymbol(u"!")) {
            result->qualifier = std::exchange(result->name, tokens_.expectName());
        }
        return result;
    }

    NodePtr call(NodePtr result) {
        result->kind = NodeKind::Call;
        if (tokens_.isSymbol(u"*")) {
            adopt(*result, node(NodeKind::Star));
            tokens_.take();
            tokens_.expectSymbol(u")");
        } else if (!tokens_.takeSymbol(u")")) {
            adoptList(*result);
        }
        return result;
    }

    TokenStream& tokens_;
    unsigned depth_ = 0;
};

}  // namespace

NodePtr parseExpression(TokenStream& tokens) { return ExpressionParser{tokens}.parse(Binding::Or); }

}  // namespace sql

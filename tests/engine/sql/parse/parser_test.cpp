#include "engine/jet/text.h"
#include "engine/sql/parse/ast.h"
#include "engine/sql/values/error.h"

#include <gtest/gtest.h>

namespace {

using sql::NodeKind;

sql::SelectStatement select(std::u16string_view text) {
    return std::get<sql::SelectStatement>(sql::parseStatement(text));
}

sql::NodePtr condition(const std::u16string& text) {
    return std::move(select(u"SELECT * FROM t WHERE " + text).where);
}

/// The tree of an expression, every operand in parentheses of its own.
std::string tree(const sql::Node& node) {
    static const char* const kNames[] = {"",    "",   "*",       "-",    "",     "AND", "OR",
                                         "NOT", "IN", "BETWEEN", "LIKE", "NULL", ""};
    static const char* const kOperators[] = {
        "=", "<>", "<", ">", "<=", ">=", "&", "+", "-", "*", "/"};
    if (node.kind == NodeKind::Literal) return "#";
    if (node.kind == NodeKind::Column) {
        return (node.qualifier.empty() ? "" : jet::toUtf8(node.qualifier) + ".") +
               jet::toUtf8(node.name);
    }
    std::string text = std::string{"("} + (node.negated ? "!" : "") +
                       kNames[static_cast<int>(node.kind)] + jet::toUtf8(node.name);
    for (std::size_t i = 0; i < node.operands.size(); ++i) {
        if (i > 0 && node.kind == NodeKind::Chain) {
            text += kOperators[static_cast<int>(node.operators[i - 1])];
        } else if (text.size() > 1) {
            text += " ";
        }
        text += tree(*node.operands[i]);
    }
    return text + ")";
}

std::string treeOf(const std::u16string& text) { return tree(*condition(text)); }

std::string errorOf(std::u16string_view text) {
    try {
        sql::parseStatement(text);
    } catch (const sql::Error& error) {
        EXPECT_EQ(error.fault(), sql::Fault::Syntax);
        return error.what();
    }
    return "none";
}

TEST(Parser, ReadsAllClauses) {
    const auto parsed = select(
        u"select distinct top 5 a, t.b AS [my b], t.*, * FROM [tbl x] AS t WHERE a = 1 "
        u"group by a, b ORDER BY a DESC, 2 asc, b;");
    EXPECT_TRUE(parsed.distinct);
    EXPECT_EQ(parsed.top, 5u);
    ASSERT_EQ(parsed.items.size(), 4u);
    EXPECT_EQ(parsed.items[1].alias, u"my b");
    EXPECT_EQ(parsed.items[2].starOf, u"t");
    EXPECT_EQ(parsed.items[3].expression, nullptr);
    EXPECT_EQ(parsed.table, u"tbl x");
    EXPECT_EQ(parsed.tableAlias, u"t");
    EXPECT_NE(parsed.where, nullptr);
    EXPECT_EQ(parsed.groupBy.size(), 2u);
    ASSERT_EQ(parsed.orderBy.size(), 3u);
    EXPECT_FALSE(parsed.orderBy[0].ascending);
    EXPECT_TRUE(parsed.orderBy[1].ascending);
}

TEST(Parser, BindsOperatorsInTheirOrder) {
    EXPECT_EQ(treeOf(u"a + b * c - d / e"), "(a+(b*c)-(d/e))");
    EXPECT_EQ(treeOf(u"a & b + c = d"), "((a&(b+c))=d)");
    EXPECT_EQ(treeOf(u"a = 1 AND b = 2 OR NOT c = 3 AND d"),
              "(OR (AND (a=#) (b=#)) (AND (NOT (c=#)) d))");
    EXPECT_EQ(treeOf(u"-a * -b"), "((- a)*(- b))");
    EXPECT_EQ(treeOf(u"(a + b) * c"), "((a+b)*c)");
    EXPECT_EQ(treeOf(u"a - (b - c)"), "(a-(b-c))");
    EXPECT_EQ(treeOf(u"a - b - c"), "(a-b-c)");
    EXPECT_EQ(treeOf(u"NOT a = b"), "(NOT (a=b))");
}

TEST(Parser, ReadsPredicates) {
    EXPECT_EQ(treeOf(u"a BETWEEN 1 AND 2 AND b"), "(AND (BETWEEN a # #) b)");
    EXPECT_EQ(treeOf(u"a NOT BETWEEN 1 + x AND 2"), "(!BETWEEN a (#+x) #)");
    EXPECT_EQ(treeOf(u"a IN (1, b, 'c') OR a NOT IN (2)"), "(OR (IN a # b #) (!IN a #))");
    EXPECT_EQ(treeOf(u"a LIKE 'x' & b"), "(LIKE a (#&b))");
    EXPECT_EQ(treeOf(u"a NOT LIKE 'x'"), "(!LIKE a #)");
    EXPECT_EQ(treeOf(u"a IS NULL AND b IS NOT NULL"), "(AND (NULL a) (!NULL b))");
}

TEST(Parser, KeepsListsFlat) {
    EXPECT_EQ(treeOf(u"a OR b OR (c OR d) OR e"), "(OR a b c d e)");
    EXPECT_EQ(treeOf(u"a AND b AND c"), "(AND a b c)");
    std::u16string list = u"a = 0";
    for (int i = 1; i < 10000; ++i) list += u" OR  ( a = 1 ) ";
    const auto parsed = condition(list);
    EXPECT_EQ(parsed->kind, NodeKind::Or);
    EXPECT_EQ(parsed->operands.size(), 10000u);
    EXPECT_EQ(parsed->depth, 3u);
}

TEST(Parser, TakesReservedWordsAsNamesWhereItCan) {
    const auto parsed = select(
        u"SELECT Date, Level, Source, Order, Group, Top, t.From, t.Select FROM tbl t ORDER BY "
        u"Order");
    ASSERT_EQ(parsed.items.size(), 8u);
    EXPECT_EQ(parsed.items[3].expression->name, u"Order");
    EXPECT_EQ(parsed.items[6].expression->name, u"From");
    EXPECT_EQ(parsed.orderBy.front().expression->name, u"Order");
    EXPECT_EQ(select(u"SELECT Top FROM t").items.front().expression->name, u"Top");
    EXPECT_EQ(select(u"SELECT Distinct FROM t").items.front().expression->name, u"Distinct");
    EXPECT_EQ(select(u"SELECT [Select], [Null] FROM t").items.size(), 2u);
    EXPECT_EQ(select(u"SELECT a AS [Order] FROM t").items.front().alias, u"Order");
}

TEST(Parser, NamesThePlaceOfAnError) {
    EXPECT_NE(errorOf(u"SELECT a FROM t WHERE a = = 1").find("near '= 1'"), std::string::npos);
    EXPECT_NE(errorOf(u"SELECT a FROM t WHERE (a = 1").find("near the end"), std::string::npos);
    EXPECT_NE(errorOf(u"SELECT a b FROM t").find("near 'b FROM t'"), std::string::npos);
    for (const auto text : {u"",
                            u"SELECT",
                            u"SELECT FROM t",
                            u"SELECT a",
                            u"SELECT a FROM",
                            u"SELECT a FROM t WHERE",
                            u"SELECT a FROM t GROUP a",
                            u"SELECT a FROM t ORDER BY",
                            u"SELECT a FROM t x y",
                            u"SELECT a, FROM t",
                            u"SELECT a FROM t, u",
                            u"SELECT a FROM t INNER JOIN u ON a = b",
                            u"SELECT a FROM t WHERE a IN ()",
                            u"SELECT a FROM t WHERE a BETWEEN 1",
                            u"SELECT a FROM t WHERE a NOT 1",
                            u"SELECT a FROM t WHERE a IS 1",
                            u"SELECT a.b.c FROM t",
                            u"SELECT a FROM t; SELECT b FROM t",
                            u"SELECT TOP 1.5 a FROM t",
                            u"SELECT a FROM t HAVING a = 1",
                            u"SELECT a FROM t WHERE a OR",
                            u"SELECT a FROM t WHERE)"}) {
        EXPECT_NE(errorOf(text), "none") << jet::toUtf8(text);
    }
}

TEST(Parser, RefusesOtherStatements) {
    for (const auto text : {u"DELETE FROM t", u"TRUNCATE t", u"(SELECT a FROM t)", u"[SELECT] a"}) {
        EXPECT_NE(errorOf(text).find("SELECT, UPDATE, INSERT, CREATE, ALTER or DROP is expected"),
                  std::string::npos);
    }
}

std::u16string nested(std::u16string_view opening, std::size_t count, std::u16string_view closing) {
    std::u16string text = u"SELECT a FROM t WHERE ";
    for (std::size_t i = 0; i < count; ++i) text += opening;
    text += u"1";
    for (std::size_t i = 0; i < count; ++i) text += closing;
    return text;
}

TEST(Parser, BoundsNesting) {
    EXPECT_EQ(errorOf(nested(u"(", 450, u")")), "none");
    for (const std::size_t count : {1100u, 30000u}) {
        EXPECT_NE(errorOf(nested(u"(", count, u")")).find("too deep"), std::string::npos);
        EXPECT_NE(errorOf(nested(u"NOT ", count, u"")).find("too deep"), std::string::npos);
        EXPECT_NE(errorOf(nested(u"- ", count, u"")).find("too deep"), std::string::npos);
        EXPECT_NE(
            errorOf(nested(u"a OR b AND NOT c = d & e + f * (", count, u")")).find("too deep"),
            std::string::npos);
        EXPECT_NE(errorOf(nested(u"", count, u" IS NULL")).find("too deep"), std::string::npos);
    }
    EXPECT_EQ(errorOf(nested(u"1 + ", 10000, u"")), "none");
}

TEST(Parser, ComparesExpressions) {
    const auto same = [](const std::u16string& left, const std::u16string& right) {
        return sql::sameExpression(*condition(left), *condition(right));
    };
    EXPECT_TRUE(same(u"t.A + 1", u"a + 1"));
    EXPECT_TRUE(same(u"[a] & 'x'", u"A & 'x'"));
    EXPECT_FALSE(same(u"a & 'x'", u"a & 'X'"));
    EXPECT_FALSE(same(u"a + 1", u"a - 1"));
    EXPECT_FALSE(same(u"a IS NULL", u"a IS NOT NULL"));
}

}  // namespace

// UPDATE and INSERT as parsed.
#include "engine/jet/text.h"
#include "engine/sql/parse/ast.h"
#include "engine/sql/values/error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using sql::NodeKind;
using testing::ElementsAre;
using testing::HasSubstr;

template <typename Kind>
Kind parsed(std::u16string_view text) {
    return std::get<Kind>(sql::parseStatement(text));
}

sql::UpdateStatement update(std::u16string_view text) { return parsed<sql::UpdateStatement>(text); }
sql::InsertStatement insert(std::u16string_view text) { return parsed<sql::InsertStatement>(text); }

std::string errorOf(std::u16string_view text) {
    try {
        sql::parseStatement(text);
    } catch (const sql::Error& error) {
        EXPECT_EQ(error.fault(), sql::Fault::Syntax);
        return error.what();
    }
    return "none";
}

TEST(ChangeParser, ReadsUpdates) {
    const auto one = update(u"update [my table] set a = 1");
    EXPECT_EQ(one.table, u"my table");
    EXPECT_EQ(one.tableAlias, u"");
    ASSERT_EQ(one.changes.size(), 1u);
    EXPECT_EQ(one.changes[0].column, u"a");
    EXPECT_EQ(one.changes[0].value->value, jet::Value{1});
    EXPECT_EQ(one.where, nullptr);

    const auto more = update(
        u"UPDATE t AS x SET x.a = b & 'c', t![d e] = NULL, Set = (1 = 2) WHERE a = 1 AND b = 2;");
    EXPECT_EQ(more.tableAlias, u"x");
    ASSERT_EQ(more.changes.size(), 3u);
    EXPECT_EQ(more.changes[0].column, u"a");
    EXPECT_EQ(more.changes[0].value->kind, NodeKind::Chain);
    EXPECT_EQ(more.changes[1].column, u"d e");
    EXPECT_EQ(more.changes[1].value->value, jet::Value{});
    EXPECT_EQ(more.changes[2].column, u"Set");
    EXPECT_EQ(more.changes[2].position, 49u);
    ASSERT_NE(more.where, nullptr);
    EXPECT_EQ(more.where->kind, NodeKind::And);
}

TEST(ChangeParser, ReadsTheKeyOfTheTraces) {
    const auto parsed = update(
        u"UPDATE tblTraces SET qrxIndex = [Component] & '_' & [Process] & '_' & [TraceLevel] & '_' "
        u"& "
        u"[Source]");
    ASSERT_EQ(parsed.changes.size(), 1u);
    EXPECT_EQ(parsed.changes[0].column, u"qrxIndex");
    EXPECT_EQ(parsed.changes[0].value->operands.size(), 7u);
    EXPECT_EQ(parsed.where, nullptr);
}

TEST(ChangeParser, TakesWordsOfTheLanguageAsColumns) {
    const auto parsed = update(u"UPDATE t SET Date = 1, Select = 2, Where = 3 WHERE Date = 4");
    ASSERT_EQ(parsed.changes.size(), 3u);
    EXPECT_EQ(parsed.changes[0].column, u"Date");
    EXPECT_EQ(parsed.changes[2].column, u"Where");
    EXPECT_EQ(insert(u"INSERT INTO Values (Date, Into) VALUES (1, 2)").columns[1], u"Into");
}

TEST(ChangeParser, ReadsInserts) {
    const auto values = insert(u"INSERT INTO t (a, t.b, [c d]) VALUES (1, -2.5, 'x' & 'y')");
    EXPECT_EQ(values.table, u"t");
    EXPECT_THAT(values.columns, ElementsAre(u"a", u"b", u"c d"));
    EXPECT_EQ(values.values.size(), 3u);
    EXPECT_FALSE(values.rows);

    const auto plain = insert(u"insert into t values (Null)");
    EXPECT_TRUE(plain.columns.empty());
    EXPECT_EQ(plain.values.size(), 1u);

    const auto rows =
        insert(u"INSERT INTO t ( a, b) SELECT x, y From u WHERE x > 1 GROUP BY x, y ORDER BY x;");
    ASSERT_TRUE(rows.rows);
    EXPECT_THAT(rows.columns, ElementsAre(u"a", u"b"));
    EXPECT_EQ(rows.rows->table, u"u");
    EXPECT_EQ(rows.rows->groupBy.size(), 2u);
    EXPECT_TRUE(rows.values.empty());
    EXPECT_TRUE(insert(u"INSERT INTO t SELECT * FROM u").rows);
}

TEST(ChangeParser, NamesThePlaceOfAnError) {
    const auto inUpdate = [](std::u16string_view text, const std::string& place) {
        EXPECT_THAT(errorOf(text), HasSubstr("Syntax error in UPDATE statement near " + place));
    };
    inUpdate(u"UPDATE", "the end");
    inUpdate(u"UPDATE 'x' SET a = 1", "''x' SET a = 1'");
    inUpdate(u"UPDATE t a = 1", "'a = 1'");
    inUpdate(u"UPDATE t SET", "the end");
    inUpdate(u"UPDATE t SET a 1", "'1'");
    inUpdate(u"UPDATE t SET a =", "the end");
    inUpdate(u"UPDATE t SET a = 1,", "the end");
    inUpdate(u"UPDATE t SET a = 1 b = 2", "'b = 2'");
    inUpdate(u"UPDATE t SET a = 1 WHERE", "the end");
    inUpdate(u"UPDATE t SET a = 1 WHERE b ORDER BY c", "'ORDER BY c'");
    inUpdate(u"UPDATE t SET a = 1; UPDATE t SET a = 2", "'UPDATE t SET a = 2'");
    inUpdate(u"UPDATE t, u SET a = 1", "', u SET a = 1'");

    const auto inInsert = [](std::u16string_view text, const std::string& place) {
        EXPECT_THAT(errorOf(text),
                    HasSubstr("Syntax error in INSERT INTO statement near " + place));
    };
    inInsert(u"INSERT t VALUES (1)", "'t VALUES (1)'");
    inInsert(u"INSERT INTO", "the end");
    inInsert(u"INSERT INTO t", "the end");
    inInsert(u"INSERT INTO t () VALUES (1)", "') VALUES (1)'");
    inInsert(u"INSERT INTO t (a VALUES (1)", "'VALUES (1)'");
    inInsert(u"INSERT INTO t (a)", "the end");
    inInsert(u"INSERT INTO t (a) VALUES 1", "'1'");
    inInsert(u"INSERT INTO t (a) VALUES ()", "')'");
    inInsert(u"INSERT INTO t (a) VALUES (1", "the end");
    inInsert(u"INSERT INTO t (a) VALUES (1), (2)", "', (2)'");
    EXPECT_NE(errorOf(u"INSERT INTO t SELECT a"), "none");
}

}  // namespace

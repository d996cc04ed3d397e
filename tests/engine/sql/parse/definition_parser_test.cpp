// CREATE, ALTER and DROP as parsed.
#include "engine/jet/text.h"
#include "engine/sql/parse/ast.h"
#include "engine/sql/values/error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using jet::ColumnType;
using testing::HasSubstr;

template <typename Kind>
Kind parsed(std::u16string_view text) {
    return std::get<Kind>(sql::parseStatement(text));
}

std::string errorOf(std::u16string_view text) {
    try {
        sql::parseStatement(text);
    } catch (const sql::Error& error) {
        EXPECT_EQ(error.fault(), sql::Fault::Syntax);
        return error.what();
    }
    return "none";
}

/// The column of "ALTER TABLE t ADD COLUMN c TYPE".
jet::NewColumn columnOf(const std::u16string& type) {
    return parsed<sql::AddColumnStatement>(u"ALTER TABLE t ADD COLUMN c " + type).column;
}

TEST(DefinitionParser, KnowsTheNamesOfTypes) {
    const auto are = [](ColumnType type, std::initializer_list<const char16_t*> names) {
        for (const char16_t* name : names) {
            EXPECT_EQ(columnOf(name).type, type) << jet::toUtf8(name);
            EXPECT_EQ(columnOf(name).autonumber, false) << jet::toUtf8(name);
        }
    };
    are(ColumnType::Boolean, {u"YESNO", u"BIT", u"BOOLEAN", u"LOGICAL", u"YesNo"});
    are(ColumnType::Byte, {u"BYTE"});
    are(ColumnType::Integer, {u"SHORT", u"SMALLINT", u"INTEGER", u"INTEGER2", u"Integer"});
    are(ColumnType::Long, {u"LONG", u"INT", u"INTEGER4"});
    are(ColumnType::Currency, {u"CURRENCY", u"MONEY"});
    are(ColumnType::Single, {u"SINGLE", u"REAL"});
    are(ColumnType::Double, {u"DOUBLE", u"FLOAT", u"NUMBER"});
    are(ColumnType::Date, {u"DATETIME", u"DATE", u"TIME"});
    are(ColumnType::Text, {u"TEXT", u"CHAR", u"VARCHAR", u"STRING", u"text(5)"});
    are(ColumnType::Memo, {u"MEMO", u"LONGTEXT", u"NOTE"});
    are(ColumnType::Ole, {u"OLEOBJECT", u"LONGBINARY"});
    are(ColumnType::Binary, {u"BINARY", u"VARBINARY"});
    are(ColumnType::Guid, {u"GUID"});
    are(ColumnType::Numeric, {u"DECIMAL", u"NUMERIC"});
    for (const auto name : {u"COUNTER", u"AUTOINCREMENT"}) {
        EXPECT_EQ(columnOf(name).type, ColumnType::Long);
        EXPECT_TRUE(columnOf(name).autonumber);
    }
}

TEST(DefinitionParser, ReadsSizes) {
    EXPECT_EQ(columnOf(u"TEXT").size, 510);
    EXPECT_EQ(columnOf(u"Text(255)").size, 510);
    EXPECT_EQ(columnOf(u"TEXT ( 160 )").size, 320);
    EXPECT_EQ(columnOf(u"TEXT(1)").size, 2);
    EXPECT_TRUE(columnOf(u"TEXT(1)").compressed);
    EXPECT_TRUE(columnOf(u"MEMO").compressed);
    EXPECT_EQ(columnOf(u"BINARY").size, 510);
    EXPECT_EQ(columnOf(u"BINARY(16)").size, 16);
    EXPECT_EQ(columnOf(u"DECIMAL").precision, 18);
    EXPECT_EQ(columnOf(u"DECIMAL").scale, 0);
    EXPECT_EQ(columnOf(u"DECIMAL(28)").precision, 28);
    EXPECT_EQ(columnOf(u"NUMERIC(10, 4)").precision, 10);
    EXPECT_EQ(columnOf(u"NUMERIC(10, 4)").scale, 4);
    for (const auto type : {u"TEXT(0)", u"TEXT(256)", u"TEXT(-1)", u"TEXT(1.5)", u"TEXT()",
                            u"TEXT('a')", u"BINARY(511)", u"DECIMAL(29)", u"DECIMAL(0)",
                            u"DECIMAL(3, 4)", u"DECIMAL(3, -1)", u"TEXT(99999999999)"}) {
        EXPECT_THAT(errorOf(std::u16string{u"ALTER TABLE t ADD c "} + type), HasSubstr("size of a"))
            << jet::toUtf8(type);
    }
    for (const auto type : {u"TEXT(5", u"TEXT(5,6)", u"LONG(4)", u"YESNO(1)", u"DECIMAL(5,2,1)"}) {
        EXPECT_THAT(errorOf(std::u16string{u"ALTER TABLE t ADD c "} + type),
                    HasSubstr("Syntax error in ALTER TABLE statement near"))
            << jet::toUtf8(type);
    }
}

TEST(DefinitionParser, ReadsNewTables) {
    const auto create = parsed<sql::CreateTableStatement>(
        u"CREATE Table tblUniqueFilters ( Component Text(50), Process Text(50), TraceLevel "
        u"Integer, "
        u"Source Text(50), qrxIndex Text(160) )");
    EXPECT_EQ(create.table, u"tblUniqueFilters");
    ASSERT_EQ(create.columns.size(), 5u);
    EXPECT_EQ(create.columns[0].name, u"Component");
    EXPECT_EQ(create.columns[0].size, 100);
    EXPECT_EQ(create.columns[2].type, ColumnType::Integer);
    EXPECT_EQ(create.columns[4].size, 320);
    EXPECT_TRUE(create.indexes.empty());

    const auto keyed = parsed<sql::CreateTableStatement>(
        u"create table [a b] (Id counter not null primary key, Date date, [x y] yesno NOT NULL);");
    EXPECT_EQ(keyed.table, u"a b");
    EXPECT_EQ(keyed.columns[1].name, u"Date");
    EXPECT_EQ(keyed.columns[2].name, u"x y");
    ASSERT_EQ(keyed.indexes.size(), 1u);
    EXPECT_EQ(keyed.indexes[0].name, u"PrimaryKey");
    EXPECT_TRUE(keyed.indexes[0].primary);
    EXPECT_EQ(keyed.indexes[0].columns[0].name, u"Id");
}

TEST(DefinitionParser, ReadsNewColumns) {
    const auto alter =
        parsed<sql::AddColumnStatement>(u"ALTER Table tblTraces ADD COLUMN qrxIndex TEXT(160)");
    EXPECT_EQ(alter.table, u"tblTraces");
    EXPECT_EQ(alter.column.name, u"qrxIndex");
    EXPECT_EQ(alter.column.size, 320);
    EXPECT_EQ(parsed<sql::AddColumnStatement>(u"alter table t add c long").column.name, u"c");
    EXPECT_EQ(parsed<sql::AddColumnStatement>(u"ALTER TABLE t ADD Column Text(5)").column.name,
              u"Column");
    EXPECT_EQ(parsed<sql::AddColumnStatement>(u"ALTER TABLE t ADD COLUMN Column Text").column.name,
              u"Column");
    EXPECT_EQ(parsed<sql::AddColumnStatement>(u"ALTER TABLE t ADD [Column] Long").column.name,
              u"Column");
}

TEST(DefinitionParser, ReadsNewIndexes) {
    const auto plain =
        parsed<sql::CreateIndexStatement>(u"CREATE INDEX qrxIndex ON tblTraces (qrxIndex)");
    EXPECT_EQ(plain.table, u"tblTraces");
    EXPECT_EQ(plain.index.name, u"qrxIndex");
    ASSERT_EQ(plain.index.columns.size(), 1u);
    EXPECT_EQ(plain.index.columns[0].name, u"qrxIndex");
    EXPECT_TRUE(plain.index.columns[0].ascending);
    EXPECT_FALSE(plain.index.unique || plain.index.primary || plain.index.required ||
                 plain.index.ignoreNulls);

    const auto index = [](const std::u16string& text) {
        return parsed<sql::CreateIndexStatement>(text).index;
    };
    const auto several = index(u"create unique index [i j] on t (a asc, Desc desc, [c d]);");
    EXPECT_TRUE(several.unique);
    ASSERT_EQ(several.columns.size(), 3u);
    EXPECT_TRUE(several.columns[0].ascending);
    EXPECT_EQ(several.columns[1].name, u"Desc");
    EXPECT_FALSE(several.columns[1].ascending);
    EXPECT_TRUE(several.columns[2].ascending);
    EXPECT_TRUE(index(u"CREATE INDEX i ON t (a) WITH PRIMARY").primary);
    EXPECT_TRUE(index(u"CREATE INDEX i ON t (a) with disallow null").required);
    EXPECT_TRUE(index(u"CREATE INDEX i ON t (a) WITH IGNORE NULL").ignoreNulls);
}

TEST(DefinitionParser, ReadsDrops) {
    EXPECT_EQ(parsed<sql::DropTableStatement>(u"drop table [a b];").table, u"a b");
}

TEST(DefinitionParser, NamesThePlaceOfAnError) {
    const auto fails = [](std::u16string_view text, const std::string& part) {
        EXPECT_THAT(errorOf(text), HasSubstr(part));
    };
    fails(u"CREATE", "CREATE statement near the end");
    fails(u"CREATE VIEW v", "CREATE statement near 'VIEW v'");
    fails(u"CREATE UNIQUE TABLE t (a LONG)", "CREATE statement near 'TABLE t (a LONG)'");
    fails(u"CREATE TABLE", "CREATE TABLE statement near the end");
    fails(u"CREATE TABLE t", "CREATE TABLE statement near the end");
    fails(u"CREATE TABLE t ()", "CREATE TABLE statement near ')'");
    fails(u"CREATE TABLE t (a)", "a type is expected near ')'");
    fails(u"CREATE TABLE t (a MONEYS)", "a type is expected near 'MONEYS)'");
    fails(u"CREATE TABLE t (a [LONG])", "a type is expected near '[LONG])'");
    fails(u"CREATE TABLE t (a LONG", "CREATE TABLE statement near the end");
    fails(u"CREATE TABLE t (a LONG,)", "CREATE TABLE statement near ')'");
    fails(u"CREATE TABLE t (a LONG) b", "CREATE TABLE statement near 'b'");
    fails(u"CREATE TABLE t (a LONG PRIMARY)", "CREATE TABLE statement near ')'");
    fails(u"CREATE TABLE t (a LONG NOT)", "CREATE TABLE statement near ')'");
    fails(u"CREATE TABLE t (a LONG NOT NULL)", "NOT NULL needs PRIMARY KEY");
    fails(u"ALTER t ADD a LONG", "ALTER TABLE statement near 't ADD a LONG'");
    fails(u"ALTER TABLE t", "ALTER TABLE statement near the end");
    fails(u"ALTER TABLE t DROP COLUMN a", "ALTER TABLE statement near 'DROP COLUMN a'");
    fails(u"ALTER TABLE t ADD", "ALTER TABLE statement near the end");
    fails(u"ALTER TABLE t ADD COLUMN a", "a type is expected near 'a'");
    fails(u"ALTER TABLE t ADD a LONG, b LONG", "ALTER TABLE statement near ', b LONG'");
    fails(u"CREATE INDEX ON t (a)", "CREATE INDEX statement near 't (a)'");
    fails(u"CREATE INDEX i t (a)", "CREATE INDEX statement near 't (a)'");
    fails(u"CREATE INDEX i ON t", "CREATE INDEX statement near the end");
    fails(u"CREATE INDEX i ON t ()", "CREATE INDEX statement near ')'");
    fails(u"CREATE INDEX i ON t (a", "CREATE INDEX statement near the end");
    fails(u"CREATE INDEX i ON t (a UP)", "CREATE INDEX statement near 'UP)'");
    fails(u"CREATE INDEX i ON t (a) WITH", "CREATE INDEX statement near the end");
    fails(u"CREATE INDEX i ON t (a) WITH NULL", "CREATE INDEX statement near 'NULL'");
    fails(u"CREATE INDEX i ON t (a) WITH PRIMARY UNIQUE", "CREATE INDEX statement near 'UNIQUE'");
    fails(u"DROP t", "DROP TABLE statement near 't'");
    fails(u"DROP TABLE", "DROP TABLE statement near the end");
    fails(u"DROP TABLE t, u", "DROP TABLE statement near ', u'");
    fails(u"DROP TABLE t CASCADE", "DROP TABLE statement near 'CASCADE'");
}

}  // namespace

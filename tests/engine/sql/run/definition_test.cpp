// CREATE, ALTER and DROP, run.
#include "tests/engine/sql/changes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace sqltest;
using jet::ColumnType;

const jet::TableDefinition definitionOf(const std::shared_ptr<jet::Database>& database,
                                        std::u16string_view table) {
    return database->table(table)->definition();
}

TEST(Definition, MakesTables) {
    const auto database = people();
    EXPECT_EQ(run(database,
                  u"CREATE TABLE [All] (A YESNO, B BYTE, C SHORT, D LONG, E CURRENCY, F SINGLE, G "
                  u"DOUBLE, H DATETIME, I TEXT(30), J MEMO, K OLEOBJECT, L BINARY(8), M GUID, N "
                  u"DECIMAL(12, 3), O COUNTER, [Date] Date)"),
              0u);
    const auto all = definitionOf(reopened(database), u"all");
    const std::vector<ColumnType> types{
        ColumnType::Boolean,  ColumnType::Byte,    ColumnType::Integer, ColumnType::Long,
        ColumnType::Currency, ColumnType::Single,  ColumnType::Double,  ColumnType::Date,
        ColumnType::Text,     ColumnType::Memo,    ColumnType::Ole,     ColumnType::Binary,
        ColumnType::Guid,     ColumnType::Numeric, ColumnType::Long,    ColumnType::Date};
    ASSERT_EQ(all.columns.size(), types.size());
    for (std::size_t i = 0; i < types.size(); ++i) EXPECT_EQ(all.columns[i].type, types[i]) << i;
    EXPECT_EQ(all.columns[8].size, 60);
    EXPECT_TRUE(all.columns[8].compressed);
    EXPECT_TRUE(all.columns[9].compressed);
    EXPECT_EQ(all.columns[11].size, 8);
    EXPECT_EQ(all.columns[13].precision, 12);
    EXPECT_EQ(all.columns[13].scale, 3);
    EXPECT_TRUE(all.columns[14].autonumber);
    EXPECT_EQ(rows(database, u"SELECT * FROM [All]"), Lines{});
    run(database, u"INSERT INTO [All] (I, N, H) VALUES ('text', 1.5, #2006-05-03#)");
    EXPECT_EQ(rows(reopened(database), u"SELECT I, N, H, O, A FROM [All]"),
              Lines{"text|1.500|2006-05-03|1|False"});
}

TEST(Definition, MakesKeysOfTables) {
    const auto database = people();
    run(database, u"CREATE TABLE Keyed (Id LONG NOT NULL PRIMARY KEY, Name TEXT)");
    const auto keyed = definitionOf(reopened(database), u"Keyed");
    ASSERT_EQ(keyed.logicalIndexes.size(), 1u);
    EXPECT_EQ(keyed.logicalIndexes[0].name, u"PrimaryKey");
    EXPECT_EQ(keyed.logicalIndexes[0].kind, jet::IndexKind::PrimaryKey);
    run(database, u"INSERT INTO Keyed VALUES (1, 'a')");
    EXPECT_EQ(jetFault(database, u"INSERT INTO Keyed VALUES (1, 'b')"), jet::Fault::DuplicateKey);
    EXPECT_EQ(jetFault(database, u"INSERT INTO Keyed (Name) VALUES ('c')"), jet::Fault::NullKey);
    EXPECT_EQ(rows(database, u"SELECT * FROM Keyed"), Lines{"1|a"});
}

TEST(Definition, AddsColumns) {
    const auto database = people();
    run(database, u"ALTER Table People ADD COLUMN Highlight YesNo");
    run(database, u"alter table people add Nick Text(10)");
    EXPECT_EQ(rows(reopened(database), u"SELECT Name, Highlight, Nick FROM People"),
              (Lines{"Ada|False|NULL", "bob|False|NULL", "Célia|False|NULL", "NULL|False|NULL",
                     "|False|NULL"}));
    run(database, u"UPDATE People SET Highlight = True, Nick = 'B' WHERE Name = 'bob'");
    EXPECT_EQ(rows(reopened(database), u"SELECT Nick FROM People WHERE Highlight"), Lines{"B"});
}

TEST(Definition, MakesIndexes) {
    const auto database = people();
    run(database, u"CREATE INDEX ByName ON People (Name DESC, Age)");
    run(database, u"CREATE UNIQUE INDEX ByDate ON People ([Date]) WITH IGNORE NULL");
    const auto table = definitionOf(reopened(database), u"People");
    ASSERT_EQ(table.logicalIndexes.size(), 2u);
    const auto physicalOf = [&](std::u16string_view name) {
        const auto found = std::find_if(table.logicalIndexes.begin(), table.logicalIndexes.end(),
                                        [&](const auto& index) { return index.name == name; });
        return table.physicalIndexes.at(found->physical);
    };
    EXPECT_EQ(physicalOf(u"ByName").columns.size(), 2u);
    EXPECT_FALSE(physicalOf(u"ByName").columns[0].ascending);
    EXPECT_FALSE(physicalOf(u"ByName").unique);
    EXPECT_TRUE(physicalOf(u"ByDate").unique);
    EXPECT_TRUE(physicalOf(u"ByDate").ignoreNulls);
    EXPECT_EQ(jetFault(database, u"UPDATE People SET [Date] = 1"), jet::Fault::DuplicateKey);
}

TEST(Definition, DropsTables) {
    const auto database = people();
    run(database, u"CREATE TABLE Other (A LONG)");
    run(database, u"DROP TABLE people");
    EXPECT_EQ(sqlFault(database, u"UPDATE People SET Age = 1"), sql::Fault::NoSuchTable);
    const auto again = reopened(database);
    EXPECT_EQ(rows(again, u"SELECT * FROM Other"), Lines{});
    EXPECT_EQ(sqlFault(again, u"DROP TABLE People"), sql::Fault::NoSuchTable);
    run(database, u"CREATE TABLE People (Name TEXT(9))");
    run(database, u"INSERT INTO People VALUES ('new')");
    EXPECT_EQ(rows(reopened(database), u"SELECT * FROM People"), Lines{"new"});
}

TEST(Definition, RefusesWhatIsThereOrIsNot) {
    const auto database = people();
    run(database, u"CREATE INDEX ByName ON People (Name)");
    database->commit();
    const fixture::ByteVector before = contentOf(*database);
    using jet::Fault;
    EXPECT_EQ(jetFault(database, u"CREATE TABLE PEOPLE (A LONG)"), Fault::TableExists);
    EXPECT_EQ(jetFault(database, u"CREATE TABLE t (A LONG, B LONG, a TEXT)"), Fault::AlreadyExists);
    EXPECT_EQ(jetFault(database, u"CREATE TABLE t (A LONG PRIMARY KEY, B LONG PRIMARY KEY)"),
              Fault::AlreadyExists);
    EXPECT_EQ(jetFault(database, u"ALTER TABLE People ADD COLUMN AGE LONG"), Fault::AlreadyExists);
    EXPECT_EQ(jetFault(database, u"ALTER TABLE People ADD COLUMN n LONG PRIMARY KEY"),
              Fault::NullKey);
    EXPECT_EQ(jetFault(database, u"CREATE INDEX byname ON People (Age)"), Fault::AlreadyExists);
    EXPECT_EQ(jetFault(database, u"CREATE INDEX i ON People (Height)"), Fault::NoSuchColumn);
    EXPECT_EQ(jetFault(database, u"CREATE UNIQUE INDEX i ON People (Member)"), Fault::DuplicateKey);
    EXPECT_EQ(jetFault(database, u"CREATE INDEX i ON People (Age) WITH DISALLOW NULL"),
              Fault::NullKey);
    EXPECT_EQ(sqlFault(database, u"ALTER TABLE Nobody ADD COLUMN a LONG"), sql::Fault::NoSuchTable);
    EXPECT_EQ(sqlFault(database, u"CREATE INDEX i ON Nobody (a)"), sql::Fault::NoSuchTable);
    EXPECT_EQ(sqlFault(database, u"DROP TABLE Nobody"), sql::Fault::NoSuchTable);
    EXPECT_EQ(jetFault(database, u"ALTER TABLE MSysObjects ADD COLUMN a LONG"), Fault::ReadOnly);
    EXPECT_EQ(jetFault(database, u"CREATE INDEX i ON MSysObjects (Name)"), Fault::ReadOnly);
    EXPECT_EQ(jetFault(database, u"DROP TABLE MSysObjects"), Fault::ReadOnly);
    EXPECT_TRUE(contentOf(*database) == before);
    EXPECT_FALSE(database->hasUncommittedChanges());
}

TEST(Definition, IsReadByAnotherReader) {
    if (!hasSecondReader()) {
        GTEST_SKIP() << "mdb-export is not installed";
    }
    const auto database = people();
    run(database, u"CREATE TABLE Made (A TEXT(30), B SHORT, C MEMO, D YESNO)");
    run(database, u"ALTER TABLE Made ADD COLUMN E DATETIME");
    run(database, u"CREATE INDEX ByA ON Made (A)");
    run(database, u"INSERT INTO Made VALUES ('x', 5, 'long', True, #2006-05-03 01:02:03#)");
    EXPECT_EQ(secondReading(database, "Made"), Lines{"x|5|long|1|2006-05-03 01:02:03"});

    const fixture::TemporaryFolder folder;
    const std::string file = folder.write("made.mdb", contentOf(*database)).string();
    const auto schema = fixture::runProgram({"mdb-schema", "-T", "Made", file});
    EXPECT_EQ(schema.exitCode, 0);
    for (const auto part : {"[A]\t\t\tText (30)", "[B]\t\t\tInteger", "[C]\t\t\tMemo",
                            "[D]\t\t\tBoolean NOT NULL", "[E]\t\t\tDateTime"}) {
        EXPECT_THAT(schema.output, testing::HasSubstr(part));
    }
}

}  // namespace

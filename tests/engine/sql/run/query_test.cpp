#include "tests/engine/sql/people.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace sqltest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class Queries : public testing::Test {
protected:
    std::vector<std::string> rows(std::u16string_view statement) const {
        return sqltest::rows(people_, statement);
    }

    std::vector<sql::OutputColumn> columns(std::u16string_view statement) const {
        return sql::Query::prepare(people_, statement)->columns();
    }

    std::shared_ptr<jet::Database> people_ = people();
};

TEST_F(Queries, SelectColumns) {
    EXPECT_THAT(rows(u"SELECT Name, age FROM people"),
                ElementsAre("Ada|36", "bob|20", "Célia|36", "NULL|NULL", "|0"));
    EXPECT_THAT(rows(u"SELECT p.Name, [PEOPLE].[Age] FROM People AS p WHERE p.Age = 20"),
                ElementsAre("bob|20"));
    EXPECT_THAT(rows(u"SELECT Name & '!' AS Loud, 1 FROM People WHERE Name LIKE 'a*'"),
                ElementsAre("Ada!|1"));
    EXPECT_THAT(rows(u"SELECT Date, Order FROM People p WHERE Order = 'a'"),
                ElementsAre("2006-05-04|a"));
}

TEST_F(Queries, NameTheirColumns) {
    const auto some = columns(u"SELECT age, Name AS n, Age + 1, Name & '' FROM People");
    ASSERT_EQ(some.size(), 4u);
    EXPECT_EQ(some[0].name, u"Age");
    EXPECT_EQ(some[0].type, jet::ColumnType::Integer);
    EXPECT_NE(some[0].stored, nullptr);
    EXPECT_EQ(some[1].name, u"n");
    EXPECT_EQ(some[1].size, 100);
    EXPECT_EQ(some[2].name, u"Expr1002");
    EXPECT_EQ(some[2].type, jet::ColumnType::Double);
    EXPECT_EQ(some[2].stored, nullptr);
    EXPECT_EQ(some[3].type, jet::ColumnType::Text);

    const auto all = columns(u"SELECT *, People.* FROM People");
    ASSERT_EQ(all.size(), 20u);
    EXPECT_EQ(all[5].name, u"Notes");
    EXPECT_EQ(all[15].stored, all[5].stored);
}

TEST_F(Queries, Order) {
    EXPECT_THAT(rows(u"SELECT Name FROM People ORDER BY Name"),
                ElementsAre("NULL", "", "Ada", "bob", "Célia"));
    EXPECT_THAT(rows(u"SELECT Name FROM People ORDER BY Name DESC"),
                ElementsAre("Célia", "bob", "Ada", "", "NULL"));
    EXPECT_THAT(rows(u"SELECT Name FROM People ORDER BY Age DESC, Order"),
                ElementsAre("Ada", "Célia", "bob", "", "NULL"));
    EXPECT_THAT(rows(u"SELECT Name FROM People ORDER BY Order"),
                ElementsAre("NULL", "bob", "Ada", "", "Célia"));
    EXPECT_THAT(rows(u"SELECT Name FROM People ORDER BY Ratio"),
                ElementsAre("NULL", "Célia", "", "Ada", "bob"));
    EXPECT_THAT(rows(u"SELECT Name FROM People ORDER BY Pay DESC, Date"),
                ElementsAre("Célia", "Ada", "", "bob", "NULL"));
    EXPECT_THAT(rows(u"SELECT Name FROM People ORDER BY Price, Member, Name"),
                ElementsAre("NULL", "", "bob", "Ada", "Célia"));
    EXPECT_THAT(rows(u"SELECT Name, Age AS Years FROM People WHERE Age > 0 ORDER BY Years, 1 DESC"),
                ElementsAre("bob|20", "Célia|36", "Ada|36"));
    EXPECT_THAT(rows(u"SELECT Notes FROM People ORDER BY -Ratio DESC"),
                ElementsAre("coach", "", "first programmer", "builder", "NULL"));
}

TEST_F(Queries, Group) {
    EXPECT_THAT(rows(u"SELECT Age, COUNT(*), COUNT(Name), MIN(Name), MAX(Date) FROM People "
                     u"GROUP BY Age"),
                ElementsAre("NULL|1|0|NULL|NULL", "0|1|1||1899-12-30", "20|1|1|bob|2006-05-04",
                            "36|2|2|Ada|2006-05-03 12:00:00"));
    EXPECT_THAT(rows(u"SELECT COUNT(*) AS n, SUM(Age), AVG(Age), SUM(Pay), AVG(Pay) FROM People"),
                ElementsAre("5|92|23|24.5|6.125"));
    EXPECT_THAT(rows(u"SELECT COUNT(*), SUM(Age), MIN(Age) FROM People WHERE Age > 100"),
                ElementsAre("0|NULL|NULL"));
    EXPECT_THAT(rows(u"SELECT COUNT(*) FROM People WHERE -1 = 1"), ElementsAre("0"));
    EXPECT_THAT(rows(u"SELECT Age FROM People WHERE -1 = 1 GROUP BY Age"), IsEmpty());
    EXPECT_THAT(rows(u"SELECT Age + 1, COUNT(*) * 10 FROM People WHERE Age > 0 GROUP BY Age "
                     u"ORDER BY COUNT(*) DESC"),
                ElementsAre("37|20", "21|10"));
    EXPECT_THAT(rows(u"SELECT Age & '' , MAX(Name) FROM People GROUP BY Age & '' ORDER BY 1 DESC"),
                ElementsAre("36|Célia", "20|bob", "0|", "|NULL"));
}

TEST_F(Queries, GroupByTheCollation) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"t",
         .columns = {fixture::textColumn(u"a", 50), fixture::column(u"n", jet::ColumnType::Long)}});
    table.insert({u"One", 1});
    table.insert({u"", 2});
    table.insert({u"ONE ", 3});
    table.insert({fixture::kNull, 4});
    table.insert({u"öne", 5});
    table.insert({u"one", 6});
    table.insert({u"o-ne", 7});
    table.insert({fixture::kNull, 8});
    const auto database = open(builder);
    EXPECT_THAT(sqltest::rows(database, u"SELECT a, COUNT(*), SUM(n) FROM t GROUP BY a"),
                ElementsAre("NULL|2|12", "|1|2", "One|3|10", "o-ne|1|7", "öne|1|5"));
    EXPECT_THAT(sqltest::rows(database, u"SELECT DISTINCT a FROM t"),
                ElementsAre("One", "", "NULL", "öne", "o-ne"));
}

TEST_F(Queries, LimitRows) {
    EXPECT_THAT(rows(u"SELECT TOP 2 Name FROM People"), ElementsAre("Ada", "bob"));
    EXPECT_THAT(rows(u"SELECT TOP 0 Name FROM People"), IsEmpty());
    EXPECT_THAT(rows(u"SELECT TOP 1 Name FROM People ORDER BY Age DESC"),
                ElementsAre("Ada", "Célia"));
    EXPECT_THAT(rows(u"SELECT DISTINCT TOP 2 Age FROM People ORDER BY Age DESC"),
                ElementsAre("36", "20"));
    EXPECT_THAT(rows(u"SELECT TOP 1 Age, COUNT(*) FROM People GROUP BY Age ORDER BY 2 DESC"),
                ElementsAre("36|2"));
}

TEST_F(Queries, SayWhatCanBeScanned) {
    const auto scanned = [&](std::u16string_view statement) {
        return sql::Query::prepare(people_, statement)->scannedTable() != nullptr;
    };
    EXPECT_TRUE(scanned(u"SELECT * FROM People"));
    EXPECT_TRUE(scanned(u"SELECT Name AS x, Age FROM People WHERE Age > 1"));
    EXPECT_FALSE(scanned(u"SELECT Age + 1 FROM People"));
    EXPECT_FALSE(scanned(u"SELECT Name FROM People ORDER BY Name"));
    EXPECT_FALSE(scanned(u"SELECT Name FROM People GROUP BY Name"));
    EXPECT_FALSE(scanned(u"SELECT DISTINCT Name FROM People"));
    EXPECT_FALSE(scanned(u"SELECT TOP 1 Name FROM People"));
}

TEST_F(Queries, DecideConstantConditionsBeforehand) {
    const auto prepared = [&](const std::u16string& condition) {
        return sql::Query::prepare(people_, u"SELECT * FROM People WHERE " + condition);
    };
    for (const auto always : {u"-1", u"1 = 1", u"True", u"NOT 0", u"Age = 1 OR -1", u"'a' = 'A'",
                              u"#1/1/2000# > #1/1/1999#"}) {
        const auto query = prepared(always);
        EXPECT_FALSE(query->alwaysEmpty()) << jet::toUtf8(always);
        EXPECT_EQ(query->rowFilter(), nullptr) << jet::toUtf8(always);
    }
    for (const auto never :
         {u"-1 = 1", u"0", u"False", u"Null", u"Age = 1 AND False", u"5 IN (1, 2)"}) {
        const auto query = prepared(never);
        EXPECT_TRUE(query->alwaysEmpty()) << jet::toUtf8(never);
        EXPECT_FALSE(query->execute()->next()) << jet::toUtf8(never);
    }
    const auto some = prepared(u"Age = 20");
    EXPECT_FALSE(some->alwaysEmpty());
    EXPECT_NE(some->rowFilter(), nullptr);
}

TEST_F(Queries, CutOffGroupsOnlyBehindDistinct) {
    EXPECT_THAT(rows(u"SELECT DISTINCT TOP 3 Age FROM People GROUP BY Age, Name ORDER BY Age DESC"),
                ElementsAre("36", "20", "0"));
    EXPECT_THAT(rows(u"SELECT TOP 2 Age FROM People GROUP BY Age, Name ORDER BY Age DESC"),
                ElementsAre("36", "36"));
    EXPECT_THAT(rows(u"SELECT DISTINCT TOP 3 Age FROM People ORDER BY Age DESC"),
                ElementsAre("36", "20", "0"));
}

TEST_F(Queries, FailForUnknownNames) {
    EXPECT_EQ(faultOf(people_, u"SELECT * FROM Nobody"), sql::Fault::NoSuchTable);
    for (const auto statement :
         {u"SELECT Nothing FROM People", u"SELECT * FROM People WHERE Nothing = 1",
          u"SELECT * FROM People ORDER BY Nothing", u"SELECT Other.Name FROM People",
          u"SELECT COUNT(Nothing) FROM People", u"SELECT 1 FROM People GROUP BY Nothing"}) {
        const sql::Error error = failure(people_, statement);
        EXPECT_EQ(error.fault(), sql::Fault::UnknownColumn);
        EXPECT_THAT(error.what(), StartsWith("No value given for one or more required parameters"));
    }
}

TEST_F(Queries, FailForWrongUse) {
    for (const auto statement :
         {u"SELECT Name, COUNT(*) FROM People", u"SELECT * FROM People GROUP BY Name",
          u"SELECT Age FROM People GROUP BY Name", u"SELECT Name FROM People WHERE COUNT(*) > 1",
          u"SELECT COUNT(COUNT(*)) FROM People", u"SELECT COUNT(Name, Age) FROM People",
          u"SELECT SUM(*) FROM People", u"SELECT Left(Name, 1) FROM People",
          u"SELECT Name FROM People ORDER BY 2", u"SELECT Name FROM People ORDER BY 0",
          u"SELECT Nobody.* FROM People"}) {
        EXPECT_EQ(faultOf(people_, statement), sql::Fault::Syntax) << jet::toUtf8(statement);
    }
}

TEST_F(Queries, QueriesOutliveTheirDatabaseHandle) {
    auto query = sql::Query::prepare(people_, u"SELECT Name FROM People WHERE Age = 20");
    auto cursor = query->execute();
    people_.reset();
    query.reset();
    ASSERT_TRUE(cursor->next());
    EXPECT_EQ(show(cursor->row()[0]), "bob");
}

}  // namespace

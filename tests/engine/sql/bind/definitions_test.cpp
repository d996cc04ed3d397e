// Computed columns and stored queries, used like what is in the file.
#include "engine/sql/bind/definitions.h"

#include "engine/sql/bind/binder.h"
#include "engine/sql/run/execute.h"
#include "tests/engine/sql/people.h"
#include "tests/support/damage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace sqltest;
using testing::ElementsAre;

class DefinitionsTest : public testing::Test {
protected:
    DefinitionsTest() {
        added_.addColumn(u"People", u"Tag", u"[Name] & '/' & Age");
        added_.addQuery(u"Ages",
                        u"SELECT Age, COUNT(*) AS Heads, Member, MIN(Name) AS First FROM "
                        u"People GROUP BY Age, Member");
    }

    std::vector<std::string> rows(std::u16string_view statement) const {
        return sqltest::rows(people_, statement, added_);
    }

    sql::Fault fault(std::u16string_view statement) const {
        try {
            rows(statement);
        } catch (const sql::Error& error) {
            return error.fault();
        }
        throw std::logic_error{"no failure"};
    }

    std::shared_ptr<jet::Database> people_ = people();
    sql::Definitions added_;
};

TEST_F(DefinitionsTest, AColumnIsComputedForEachRow) {
    EXPECT_THAT(rows(u"SELECT Tag FROM People"),
                ElementsAre("Ada/36", "bob/20", "Célia/36", "/", "/0"));
    EXPECT_THAT(rows(u"SELECT p.[tag] & '!' FROM People AS p WHERE p.Tag LIKE '*36'"),
                ElementsAre("Ada/36!", "Célia/36!"));
    EXPECT_EQ(fault(u"SELECT Tags FROM People"), sql::Fault::UnknownColumn);
    EXPECT_EQ(fault(u"SELECT Other.Tag FROM People"), sql::Fault::UnknownColumn);
}

TEST_F(DefinitionsTest, AColumnCanBeFilteredSortedAndGroupedBy) {
    EXPECT_THAT(
        rows(u"SELECT Name FROM People WHERE Tag = 'ADA/36' OR Tag = 'bob/20' OR 'x' = Tag"),
        ElementsAre("Ada", "bob"));
    EXPECT_THAT(rows(u"SELECT Name FROM People WHERE Tag IN ('/', 'bob/20')"),
                ElementsAre("bob", "NULL"));
    EXPECT_THAT(rows(u"SELECT Name FROM People WHERE Tag IS NULL"), ElementsAre());
    EXPECT_THAT(rows(u"SELECT Name FROM People WHERE Member AND NOT Tag = 'ada/36'"),
                ElementsAre("Célia"));
    EXPECT_THAT(rows(u"SELECT Tag FROM People ORDER BY Tag DESC"),
                ElementsAre("Célia/36", "bob/20", "Ada/36", "/0", "/"));
    EXPECT_THAT(rows(u"SELECT TOP 1 Tag FROM People ORDER BY Tag"), ElementsAre("/"));
    EXPECT_THAT(rows(u"SELECT Tag, COUNT(*) FROM People GROUP BY Tag ORDER BY Tag DESC"),
                ElementsAre("Célia/36|1", "bob/20|1", "Ada/36|1", "/0|1", "/|1"));
    EXPECT_THAT(rows(u"SELECT MAX(Tag), COUNT(Tag) FROM People"), ElementsAre("Célia/36|5"));
    EXPECT_THAT(rows(u"SELECT DISTINCT Tag FROM People WHERE Age = 36"),
                ElementsAre("Ada/36", "Célia/36"));
}

// A filter of ten thousand keys takes one look-up for each kind of row.
TEST_F(DefinitionsTest, AlternativesOfAComputedColumnAreOneSet) {
    const sql::Relation relation = sql::openRelation(*people_, u"People", added_);
    sql::Binder binder{relation, u""};
    const auto condition =
        binder.bind(*sql::parseExpression(u" ( Tag = 'a' )  OR  ( Tag = 'b' )  OR  ( People.tag IN "
                                          u"('c', 'd') )  OR  ( 'e' = Tag ) "));
    ASSERT_EQ(condition->operands().size(), 1u);
    const sql::Expression& set = *condition->operands().front();
    ASSERT_EQ(set.operands().size(), 1u);
    EXPECT_EQ(set.operands().front(), relation.find(u"Tag")->value);
}

TEST_F(DefinitionsTest, AColumnOfTheResultHasItsNameAndIsNotStored) {
    const auto query = sql::Query::prepare(people_, u"SELECT tag, Age FROM People", added_);
    EXPECT_EQ(query->columns()[0].name, u"Tag");
    EXPECT_EQ(query->columns()[0].type, jet::ColumnType::Text);
    EXPECT_EQ(query->columns()[0].stored, nullptr);
    EXPECT_NE(query->columns()[1].stored, nullptr);
    EXPECT_EQ(query->scannedTable(), nullptr);
    // What only filters by it is a scan, so that its rows arrive one by one.
    const auto scan =
        sql::Query::prepare(people_, u"SELECT Age FROM People WHERE Tag = '/'", added_);
    EXPECT_NE(scan->scannedTable(), nullptr);
    EXPECT_NE(scan->rowFilter(), nullptr);
}

TEST_F(DefinitionsTest, AllColumnsIncludeTheComputedOneLast) {
    const auto query = sql::Query::prepare(people_, u"SELECT * FROM People", added_);
    const auto plain = sql::Query::prepare(people_, u"SELECT * FROM People");
    ASSERT_EQ(query->columns().size(), plain->columns().size() + 1);
    EXPECT_EQ(query->columns().back().name, u"Tag");
}

TEST_F(DefinitionsTest, AComputedColumnReplacesAStoredOneOfWhichItIsMade) {
    added_.addColumn(u"PEOPLE", u"name", u"'<' & Name & '>'");
    EXPECT_THAT(rows(u"SELECT Name FROM People WHERE Name = '<bob>'"), ElementsAre("<bob>"));
    EXPECT_THAT(rows(u"SELECT Tag FROM People WHERE Age = 20"), ElementsAre("bob/20"))
        << "formulas are of stored columns";
    const auto query = sql::Query::prepare(people_, u"SELECT * FROM People", added_);
    EXPECT_EQ(query->columns()[0].name, u"name");
    EXPECT_EQ(query->columns().size(), 11u);
}

TEST_F(DefinitionsTest, AQueryIsReadLikeATable) {
    EXPECT_THAT(rows(u"SELECT * FROM Ages"),
                ElementsAre("NULL|1|False|NULL", "0|1|False|", "20|1|False|bob", "36|2|True|Ada"));
    EXPECT_THAT(rows(u"SELECT a.First, Heads + 1 FROM ages a WHERE a.Age >= 20"),
                ElementsAre("bob|2", "Ada|3"));
    EXPECT_THAT(rows(u"SELECT Age FROM Ages WHERE First IS NULL OR First = 'ADA' OR Heads > 1"),
                ElementsAre("NULL", "36"));
    EXPECT_THAT(rows(u"SELECT Age FROM Ages WHERE -1 = 1"), ElementsAre());
    EXPECT_THAT(rows(u"SELECT Age FROM Ages WHERE -1"), ElementsAre("NULL", "0", "20", "36"));
    EXPECT_EQ(fault(u"SELECT Name FROM Ages"), sql::Fault::UnknownColumn);
}

TEST_F(DefinitionsTest, AQueryCanBeSortedGroupedAndCutOff) {
    EXPECT_THAT(rows(u"SELECT Age FROM Ages ORDER BY Member, Age DESC"),
                ElementsAre("36", "20", "0", "NULL"));
    EXPECT_THAT(rows(u"SELECT TOP 2 Age FROM Ages ORDER BY Age DESC"), ElementsAre("36", "20"));
    EXPECT_THAT(rows(u"SELECT TOP 2 Age FROM Ages"), ElementsAre("NULL", "0"));
    EXPECT_THAT(rows(u"SELECT DISTINCT Member FROM Ages"), ElementsAre("False", "True"));
    EXPECT_THAT(rows(u"SELECT DISTINCT Heads FROM Ages ORDER BY Heads DESC"),
                ElementsAre("2", "1"));
    EXPECT_THAT(rows(u"SELECT Member, SUM(Heads), COUNT(Age) FROM Ages GROUP BY Member"),
                ElementsAre("True|2|1", "False|3|2"));
    EXPECT_THAT(rows(u"SELECT COUNT(*) FROM Ages"), ElementsAre("4"));
}

// Equal rows keep the order of the query.
TEST_F(DefinitionsTest, SortingAQueryIsStable) {
    added_.addQuery(u"Sorted", u"SELECT Name, Member FROM People ORDER BY Name DESC");
    EXPECT_THAT(rows(u"SELECT Name FROM Sorted ORDER BY Member"),
                ElementsAre("Célia", "Ada", "bob", "", "NULL"));
}

TEST_F(DefinitionsTest, ColumnsOfAQueryHaveNamesTypesAndSizes) {
    added_.addQuery(u"Names", u"SELECT Name AS Who, Age + 1, Tag FROM People");
    const auto query = sql::Query::prepare(people_, u"SELECT * FROM Names", added_);
    ASSERT_EQ(query->columns().size(), 3u);
    EXPECT_EQ(query->columns()[0].name, u"Who");
    EXPECT_EQ(query->columns()[0].size, 100u);
    EXPECT_EQ(query->columns()[1].name, u"Expr1001");
    EXPECT_EQ(query->columns()[1].type, jet::ColumnType::Double);
    EXPECT_EQ(query->columns()[2].name, u"Tag");
    EXPECT_EQ(query->scannedTable(), nullptr) << "its rows are not those of a table";
}

TEST_F(DefinitionsTest, AQueryReadsComputedColumnsButNoQueries) {
    added_.addQuery(u"Tags", u"SELECT Tag FROM People WHERE Tag LIKE '*36'");
    EXPECT_THAT(rows(u"SELECT * FROM Tags"), ElementsAre("Ada/36", "Célia/36"));
    added_.addQuery(u"Loop", u"SELECT * FROM Loop");
    EXPECT_EQ(fault(u"SELECT * FROM Loop"), sql::Fault::NoSuchTable);
    // One that has a table's name can be made of that table.
    added_.addQuery(u"People", u"SELECT Name FROM People WHERE Age = 20");
    EXPECT_THAT(rows(u"SELECT * FROM People"), ElementsAre("bob"));
}

TEST_F(DefinitionsTest, WhatIsNoFormulaAndNoQueryIsRefused) {
    const auto faultOfColumn = [](std::u16string_view formula) {
        sql::Definitions added;
        EXPECT_THROW(added.addColumn(u"People", u"X", formula), sql::Error) << jet::toUtf8(formula);
        EXPECT_TRUE(added.empty());
    };
    faultOfColumn(u"");
    faultOfColumn(u"Name, Age");
    faultOfColumn(u"Name AS N");
    faultOfColumn(u"*");
    EXPECT_THROW(added_.addQuery(u"X", u"DROP TABLE People"), sql::Error);
    EXPECT_THROW(added_.addQuery(u"X", u"SELECT"), sql::Error);
    EXPECT_EQ(added_.queries().size(), 1u);
}

TEST_F(DefinitionsTest, AreCheckedAgainstTheFile) {
    EXPECT_NO_THROW(sql::requireUsable(added_, *people_));
    const auto refused = [&](const auto& add) {
        sql::Definitions added;
        add(added);
        try {
            sql::requireUsable(added, *people_);
        } catch (const sql::Error& error) {
            return error.fault();
        }
        throw std::logic_error{"accepted"};
    };
    EXPECT_EQ(refused([](auto& added) { added.addColumn(u"People", u"X", u"Nobody & 'x'"); }),
              sql::Fault::UnknownColumn);
    EXPECT_EQ(refused([](auto& added) { added.addColumn(u"Nobody", u"X", u"'x'"); }),
              sql::Fault::NoSuchTable);
    EXPECT_EQ(refused([](auto& added) { added.addQuery(u"X", u"SELECT Nobody FROM People"); }),
              sql::Fault::UnknownColumn);
    EXPECT_EQ(refused([](auto& added) { added.addColumn(u"People", u"X", u"COUNT(*)"); }),
              sql::Fault::Syntax);
}

TEST_F(DefinitionsTest, ChangesDoNotSeeThem) {
    const auto faultOfChange = [&](std::u16string_view statement) {
        try {
            sql::execute(*people_, statement);
        } catch (const sql::Error& error) {
            return error.fault();
        }
        throw std::logic_error{"changed"};
    };
    EXPECT_EQ(faultOfChange(u"UPDATE People SET Name = Tag"), sql::Fault::UnknownColumn);
    EXPECT_EQ(faultOfChange(u"UPDATE People SET Tag = Name"), sql::Fault::UnknownColumn);
    EXPECT_EQ(faultOfChange(u"INSERT INTO People (Age) SELECT Age FROM Ages"),
              sql::Fault::NoSuchTable);
}

TEST(DamagedDefinitions, AQueryCountsTheRowsThatItsTableLost) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable({.name = u"t",
                                    .columns = {fixture::textColumn(u"a", 250),
                                                fixture::column(u"b", jet::ColumnType::Long)}});
    for (int i = 0; i < 200; ++i) table.insert({std::u16string(250, u'\u7559'), i});
    fixture::ByteVector bytes = builder.bytes();
    ASSERT_GT(table.dataPages().size(), 3u);
    fixture::poke(bytes, fixture::pageOffset(table.dataPages()[1]), {0x02});
    const auto database = jet::Database::open(std::make_unique<jet::MemoryStorage>(bytes));
    sql::Definitions added;
    added.addQuery(u"q", u"SELECT b, COUNT(*) FROM t GROUP BY b");
    for (const auto statement :
         {u"SELECT b FROM q", u"SELECT b FROM q ORDER BY b DESC", u"SELECT COUNT(*) FROM q"}) {
        const auto query = sql::Query::prepare(database, statement, added);
        const auto cursor = query->execute();
        while (cursor->next()) {
        }
        EXPECT_EQ(cursor->losses().pages, 1u);
    }
}

}  // namespace

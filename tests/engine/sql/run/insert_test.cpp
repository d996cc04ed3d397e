// INSERT of values and of the rows of a SELECT.
#include "tests/engine/sql/changes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace sqltest;

std::shared_ptr<jet::Database> peopleAndGuests() {
    const auto database = people();
    run(database,
        u"CREATE TABLE Guests (Id COUNTER PRIMARY KEY, Name TEXT(20), Age BYTE, Invited YESNO, "
        u"Notes MEMO)");
    return database;
}

const std::u16string kGuests = u"SELECT * FROM Guests";

TEST(Insert, AddsValues) {
    const auto database = peopleAndGuests();
    EXPECT_EQ(run(database, u"INSERT INTO Guests (Name, Age) VALUES ('Fay', '3' & '1')"), 1u);
    EXPECT_EQ(run(database, u"INSERT INTO Guests VALUES (7, 'Gus', 1 + 1, True, 'n')"), 1u);
    EXPECT_EQ(run(database, u"INSERT INTO Guests (Notes, Guests.Name) VALUES (Null, -5)"), 1u);
    const Lines expected{"1|Fay|31|False|NULL", "7|Gus|2|True|n", "8|-5|NULL|False|NULL"};
    EXPECT_EQ(rows(database, kGuests), expected);
    EXPECT_EQ(rows(reopened(database), kGuests), expected);
}

TEST(Insert, AddsTheRowsOfASelect) {
    const auto database = peopleAndGuests();
    EXPECT_EQ(
        run(database,
            u"INSERT INTO Guests (Age, Name) SELECT Age, Name & '!' FROM People WHERE Age > 1 "
            u"ORDER BY Name DESC"),
        3u);
    EXPECT_EQ(rows(database, u"SELECT Id, Name, Age FROM Guests"),
              (Lines{"1|Célia!|36", "2|bob!|20", "3|Ada!|36"}));
    EXPECT_EQ(run(database, u"INSERT INTO Guests (Name) SELECT Name FROM People WHERE 1 = 2"), 0u);
    EXPECT_EQ(run(database, u"INSERT INTO Guests (Age) SELECT COUNT(*) FROM People"), 1u);
    EXPECT_EQ(rows(database, u"SELECT Age FROM Guests WHERE Name IS NULL"), Lines{"5"});
}

TEST(Insert, GoesByNameWithoutAList) {
    const auto database = peopleAndGuests();
    EXPECT_EQ(run(database, u"INSERT INTO Guests SELECT Notes, Age, Name FROM People WHERE Member"),
              2u);
    EXPECT_EQ(rows(database, u"SELECT Name, Age, Notes FROM Guests"),
              (Lines{"Ada|36|first programmer", "Célia|36|coach"}));
    EXPECT_EQ(run(database, u"INSERT INTO Guests SELECT Member AS Invited FROM People"), 5u);
    EXPECT_EQ(sqlFault(database, u"INSERT INTO Guests SELECT * FROM People"),
              sql::Fault::UnknownColumn);
    EXPECT_EQ(sqlFault(database, u"INSERT INTO Guests SELECT Name, Age AS name FROM People"),
              sql::Fault::Syntax);
}

TEST(Insert, DoesNotSeeItsOwnRows) {
    const auto database = people();
    EXPECT_EQ(run(database, u"INSERT INTO People SELECT * FROM People"), 5u);
    EXPECT_EQ(run(database, u"INSERT INTO People SELECT * FROM People"), 10u);
    EXPECT_EQ(rows(reopened(database), u"SELECT COUNT(*), SUM(Age) FROM People"), Lines{"20|368"});
    EXPECT_EQ(rows(database, u"SELECT Notes, COUNT(*) FROM People WHERE Member GROUP BY Notes"),
              (Lines{"coach|4", "first programmer|4"}));
}

/// New rows go to the last page, which a scan of a large table reads when the first ones are in.
TEST(Insert, DoesNotSeeItsOwnRowsInALargeTable) {
    constexpr std::int32_t kRows = 6000;
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable({.name = u"Lines",
                                    .columns = {fixture::column(u"Id", jet::ColumnType::Long),
                                                fixture::textColumn(u"Text", 255)}});
    for (std::int32_t i = 0; i < kRows; ++i) table.insert({i, std::u16string(200, u'x')});
    const auto database = open(builder);
    EXPECT_EQ(run(database, u"INSERT INTO Lines SELECT * FROM Lines"), kRows);
    EXPECT_EQ(rows(database, u"SELECT COUNT(*) FROM Lines"), Lines{std::to_string(2 * kRows)});
}

TEST(Insert, RefusesWrongStatements) {
    const auto database = peopleAndGuests();
    database->commit();
    const fixture::ByteVector before = contentOf(*database);
    using sql::Fault;
    EXPECT_EQ(sqlFault(database, u"INSERT INTO Nobody (a) VALUES (1)"), Fault::NoSuchTable);
    EXPECT_EQ(sqlFault(database, u"INSERT INTO Guests (Name) SELECT a FROM Nobody"),
              Fault::NoSuchTable);
    EXPECT_EQ(sqlFault(database, u"INSERT INTO Guests (Height) VALUES (1)"), Fault::UnknownColumn);
    EXPECT_EQ(sqlFault(database, u"INSERT INTO Guests (Age) VALUES (Name)"), Fault::UnknownColumn);
    EXPECT_EQ(sqlFault(database, u"INSERT INTO Guests (Age, AGE) VALUES (1, 2)"), Fault::Syntax);
    EXPECT_EQ(sqlFault(database, u"INSERT INTO Guests (Age) VALUES (1, 2)"), Fault::Syntax);
    EXPECT_EQ(sqlFault(database, u"INSERT INTO Guests VALUES (1, 'a')"), Fault::Syntax);
    EXPECT_EQ(sqlFault(database, u"INSERT INTO Guests (Age) SELECT Age, Name FROM People"),
              Fault::Syntax);
    EXPECT_EQ(sqlFault(database, u"INSERT INTO Guests (Age) SELECT [Key] FROM People"),
              Fault::TypeMismatch);
    EXPECT_EQ(sqlFault(database, u"INSERT INTO Guests (Age) VALUES (256)"), Fault::Conversion);
    EXPECT_EQ(sqlFault(database, u"INSERT INTO Guests (Name) VALUES ('more than twenty letters')"),
              Fault::Conversion);
    EXPECT_EQ(jetFault(database, u"INSERT INTO MSysACEs (ACM) VALUES (1)"), jet::Fault::ReadOnly);
    EXPECT_TRUE(contentOf(*database) == before);
    EXPECT_FALSE(database->hasUncommittedChanges());
}

TEST(Insert, DoesAllOrNothing) {
    const auto database = peopleAndGuests();
    run(database, u"CREATE UNIQUE INDEX ByAge ON Guests (Age)");
    run(database, u"INSERT INTO Guests (Name, Age) VALUES ('first', 1)");
    const fixture::ByteVector before = contentOf(*database);
    EXPECT_EQ(jetFault(database, u"INSERT INTO Guests (Name, Age) SELECT Name, Age FROM People"),
              jet::Fault::DuplicateKey);
    EXPECT_EQ(sqlFault(database, u"INSERT INTO Guests (Age) SELECT 13 * Age FROM People"),
              sql::Fault::Conversion);
    EXPECT_EQ(jetFault(database, u"INSERT INTO Guests (Id) VALUES (1)"), jet::Fault::DuplicateKey);
    EXPECT_TRUE(contentOf(*database) == before);
    EXPECT_EQ(rows(reopened(database), u"SELECT Name FROM Guests"), Lines{"first"});
}

TEST(Insert, AddsManyRows) {
    const auto database = people();
    run(database, u"CREATE TABLE Many (Id COUNTER PRIMARY KEY, Name TEXT(50), Notes MEMO)");
    run(database, u"INSERT INTO Many (Name, Notes) SELECT Name, Notes FROM People");
    for (int i = 0; i < 10; ++i) {
        run(database, u"INSERT INTO Many (Name, Notes) SELECT Name, Notes FROM Many");
    }
    EXPECT_EQ(rows(reopened(database), u"SELECT COUNT(*), MAX(Id), COUNT(Name) FROM Many"),
              Lines{"5120|5120|4096"});
}

TEST(Insert, IsReadByAnotherReader) {
    if (!hasSecondReader()) {
        GTEST_SKIP() << "mdb-export is not installed";
    }
    const auto database = peopleAndGuests();
    run(database, u"INSERT INTO Guests (Name, Age, Notes) SELECT Name, Age, Notes FROM People");
    // That program shows empty texts as Null.
    EXPECT_EQ(secondReading(database, "Guests"),
              (Lines{"1|Ada|36|0|first programmer", "2|bob|20|0|builder", "3|Célia|36|0|coach",
                     "4|NULL|NULL|0|NULL", "5|NULL|0|0|NULL"}));
}

}  // namespace

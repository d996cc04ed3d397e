// UPDATE: what it changes, what it refuses, and that it does all or nothing.
#include "tests/engine/sql/changes.h"
#include "tests/support/damage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace sqltest;
using jet::ColumnType;
using testing::ElementsAre;

/// A table of numbered rows over many pages, with room for the tests' changes.
std::shared_ptr<jet::Database> numbers(int count, bool unique = false) {
    fixture::FixtureBuilder builder;
    fixture::TableSpec spec{
        .name = u"Numbers",
        .columns = {fixture::column(u"Id", ColumnType::Long), fixture::textColumn(u"Label", 60),
                    fixture::column(u"Small", ColumnType::Byte), fixture::memoColumn(u"Notes")}};
    spec.indexes.push_back({.name = u"ById", .columns = {{u"Id"}}, .unique = unique});
    auto& table = builder.addTable(spec);
    for (int i = 0; i < count; ++i) {
        table.insert({i, u"row " + jet::toUtf16(std::to_string(i)), i % 100, fixture::kNull});
    }
    return sqltest::open(builder);
}

TEST(Update, ChangesAllRows) {
    const auto database = people();
    EXPECT_EQ(run(database, u"UPDATE People SET Age = Age + 1, Ratio = 2 * Ratio"), 5u);
    const Lines expected{"Ada|37|1", "bob|21|4", "Célia|37|-3", "NULL|NULL|NULL", "|1|0"};
    EXPECT_EQ(rows(database, u"SELECT Name, Age, Ratio FROM People"), expected);
    EXPECT_EQ(rows(reopened(database), u"SELECT Name, Age, Ratio FROM People"), expected);
}

TEST(Update, ChangesTheRowsOfItsCondition) {
    const auto database = people();
    EXPECT_EQ(run(database, u"UPDATE People SET Member = False WHERE Age = 36"), 2u);
    EXPECT_EQ(who(database, u"Member"), "");
    EXPECT_EQ(run(database, u"UPDATE People AS p SET p.Name = 'Robert' WHERE p.Name = 'BOB'"), 1u);
    EXPECT_EQ(who(database, u"Age = 20"), "Robert ");
    EXPECT_EQ(run(database, u"UPDATE People SET Age = 1 WHERE Notes LIKE 'first*'"), 1u);
    EXPECT_EQ(run(database, u"UPDATE People SET Age = 1 WHERE Name IS NULL AND Member"), 0u);
    EXPECT_EQ(run(database, u"UPDATE People SET Age = 1 WHERE 1 = 2"), 0u);
    EXPECT_EQ(run(database, u"UPDATE People SET Age = 99 WHERE True"), 5u);
    EXPECT_EQ(rows(database, u"SELECT DISTINCT Age FROM People"), Lines{"99"});
}

TEST(Update, ExpressionsSeeTheRowAsItWas) {
    const auto database = people();
    run(database, u"UPDATE People SET Name = [Order], [Order] = Name WHERE Name = 'bob'");
    EXPECT_EQ(rows(database, u"SELECT Name, [Order] FROM People WHERE Age = 20"), Lines{"a|bob"});
}

TEST(Update, WritesEveryType) {
    const auto database = people();
    run(database,
        u"UPDATE People SET Name = 1 + 1, Age = '41', [Date] = #2006-05-03 12:30#, Pay = 1.25, "
        u"Member = 1, Notes = Null, Ratio = '1e-3', Price = '99.995', [Order] = True, "
        u"[Key] = '{01020304-0506-0708-090A-0B0C0D0E0F10}' WHERE Name IS NULL");
    EXPECT_EQ(rows(reopened(database), u"SELECT * FROM People WHERE Age = 41"),
              Lines{"2|41|2006-05-03 12:30:00|1.25|True|NULL|0.001|100.00|-1|{01020304-0506-0708-"
                    "090A-0B0C0D0E0F10}"});
}

TEST(Update, NullIsFalseInABooleanColumn) {
    const auto database = people();
    run(database, u"UPDATE People SET Member = Null, Name = Null");
    EXPECT_EQ(rows(database, u"SELECT DISTINCT Member, Name FROM People"), Lines{"False|NULL"});
}

TEST(Update, LetsRowsGrow) {
    const auto database = numbers(2000);
    const std::u16string longLabel(50, u'x');
    EXPECT_EQ(run(database, u"UPDATE Numbers SET Label = '" + longLabel + u"' & Id"), 2000u);
    EXPECT_EQ(run(database, u"UPDATE Numbers SET Label = Label & '!' WHERE Id >= 500"), 1500u);
    const auto read = rows(reopened(database), u"SELECT Id, Label FROM Numbers ORDER BY Id");
    ASSERT_EQ(read.size(), 2000u);
    for (int i = 0; i < 2000; ++i) {
        const std::string number = std::to_string(i);
        const std::string label =
            number + "|" + std::string(50, 'x') + number + (i < 500 ? "" : "!");
        ASSERT_EQ(read[static_cast<std::size_t>(i)], label);
    }
}

TEST(Update, WritesLongTexts) {
    const auto database = numbers(300);
    const std::u16string text(3000, u'm');
    run(database, u"UPDATE Numbers SET Notes = '" + text + u"' & Label WHERE Id < 150");
    run(database, u"UPDATE Numbers SET Notes = Notes & '" + text + u"' WHERE Id < 75");
    run(database, u"UPDATE Numbers SET Notes = 'short' WHERE Id < 25");
    const auto read = rows(reopened(database), u"SELECT Notes FROM Numbers");
    EXPECT_EQ(read[0], "short");
    EXPECT_EQ(read[74], std::string(3000, 'm') + "row 74" + std::string(3000, 'm'));
    EXPECT_EQ(read[149], std::string(3000, 'm') + "row 149");
    EXPECT_EQ(read[150], "NULL");
}

TEST(Update, KeepsIndexesOfLongTextsRight) {
    const auto database = numbers(60);
    run(database, u"CREATE INDEX ByNotes ON Numbers (Notes)");
    const std::u16string text(400, u'\u0436');
    for (const auto start : {u"a", u"b"}) {
        EXPECT_EQ(run(database, u"UPDATE Numbers SET Notes = '" + std::u16string{start} +
                                    u"' & Label & '" + text + u"'"),
                  60u);
    }
    EXPECT_EQ(run(database, u"INSERT INTO Numbers (Id, Notes) SELECT Id + 100, Notes FROM Numbers"),
              60u);
    const auto read =
        rows(reopened(database), u"SELECT Id FROM Numbers WHERE Notes LIKE 'brow 7*'");
    EXPECT_THAT(read, ElementsAre("7", "107"));
}

TEST(Update, SeesWhatTheBatchWroteBefore) {
    const auto database = people();
    run(database, u"ALTER TABLE People ADD COLUMN Doubled LONG");
    run(database, u"UPDATE People SET Doubled = 2 * Age");
    run(database, u"UPDATE People SET Doubled = Doubled + 1 WHERE Doubled = 72");
    EXPECT_EQ(rows(database, u"SELECT Doubled FROM People"),
              (Lines{"73", "40", "73", "NULL", "0"}));
}

TEST(Update, RemembersValuesByWhatIsStored) {
    // Null and empty text are stored differently and joined alike; rows alike get one value.
    const auto database = people();
    run(database, u"UPDATE People SET [Order] = Age & Name WHERE Age IS NULL OR Age = 0");
    EXPECT_EQ(rows(database, u"SELECT [Order] FROM People"), (Lines{"b", "a", "c", "", "0"}));
    const auto many = numbers(70000);  // more than are remembered
    run(many, u"UPDATE Numbers SET Label = Id & '/' & Small, Small = 5");
    const auto read = rows(many, u"SELECT Label, Small FROM Numbers");
    for (std::size_t i = 0; i < read.size(); ++i) {
        ASSERT_EQ(read[i], std::to_string(i) + "/" + std::to_string(i % 100) + "|5");
    }
}

TEST(Update, RefusesWrongStatements) {
    const auto database = people();
    using sql::Fault;
    EXPECT_EQ(sqlFault(database, u"UPDATE Nobody SET Age = 1"), Fault::NoSuchTable);
    EXPECT_EQ(sqlFault(database, u"UPDATE People SET Height = 1"), Fault::UnknownColumn);
    EXPECT_EQ(sqlFault(database, u"UPDATE People SET Age = Height"), Fault::UnknownColumn);
    EXPECT_EQ(sqlFault(database, u"UPDATE People SET Age = 1 WHERE Height = 1"),
              Fault::UnknownColumn);
    EXPECT_EQ(sqlFault(database, u"UPDATE People SET Age = 1, age = 2"), Fault::Syntax);
    EXPECT_EQ(sqlFault(database, u"UPDATE People SET Age = COUNT(*)"), Fault::Syntax);
    EXPECT_EQ(sqlFault(database, u"UPDATE People SET Age = 1 WHERE Name"), Fault::TypeMismatch);
    EXPECT_EQ(sqlFault(database, u"UPDATE People SET Age = 1 WHERE Name = 1"), Fault::TypeMismatch);
    EXPECT_EQ(sqlFault(database, u"UPDATE People SET Age = [Key]"), Fault::TypeMismatch);
    EXPECT_EQ(sqlFault(database, u"UPDATE People SET Age = Name"), Fault::Conversion);
    EXPECT_EQ(sqlFault(database, u"UPDATE People SET Age = 1000 * Age"), Fault::Conversion);
    EXPECT_EQ(sqlFault(database, u"UPDATE People SET [Order] = Notes"), Fault::Conversion);
    EXPECT_EQ(jetFault(database, u"UPDATE MSysObjects SET Flags = 0"), jet::Fault::ReadOnly);
    EXPECT_FALSE(database->hasUncommittedChanges());
    EXPECT_THROW(run(database, u"SELECT * FROM People"), sql::Error);
}

TEST(Update, DoesNotConvertWhereNoRowAsksForIt) {
    const auto database = people();
    EXPECT_EQ(run(database, u"UPDATE People SET Age = 'many' WHERE Age = 1000"), 0u);
}

/// Overflow in row 500, a duplicate key in row 500: the rows before are as they were.
TEST(Update, DoesAllOrNothing) {
    const auto database = numbers(1000, true);
    run(database, u"UPDATE Numbers SET Small = 0");
    const fixture::ByteVector before = contentOf(*database);
    EXPECT_EQ(sqlFault(database, u"UPDATE Numbers SET Small = Id / 2"), sql::Fault::Conversion);
    EXPECT_EQ(jetFault(database, u"UPDATE Numbers SET Id = Id - 500 WHERE Id = 500 OR Id > 600"),
              jet::Fault::DuplicateKey);
    EXPECT_EQ(jetFault(database, u"UPDATE Numbers SET Label = 'x', Id = 7 WHERE Id >= 500"),
              jet::Fault::DuplicateKey);
    EXPECT_TRUE(contentOf(*database) == before);
    EXPECT_TRUE(database->hasUncommittedChanges());
    EXPECT_EQ(rows(reopened(database), u"SELECT DISTINCT Small FROM Numbers"), Lines{"0"});
}

TEST(Update, MayPassDuplicatesOnTheWay) {
    const auto database = numbers(1500, true);
    EXPECT_EQ(run(database, u"UPDATE Numbers SET Id = Id + 1"), 1500u);
    EXPECT_EQ(run(database, u"UPDATE Numbers SET Id = 2 - Id WHERE Id <= 2"), 2u);
    EXPECT_EQ(rows(reopened(database), u"SELECT MIN(Id), MAX(Id), COUNT(Id) FROM Numbers"),
              Lines{"0|1500|1500"});
}

TEST(Update, ChangesNothingInADamagedTable) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"Numbers",
         .columns = {fixture::column(u"Id", ColumnType::Long), fixture::textColumn(u"Label", 50)}});
    jet::RowId last;
    for (int i = 0; i < 900; ++i) last = table.insert({i, u"label"});
    fixture::ByteVector file = builder.bytes();
    fixture::poke16(file, fixture::rowOffset(file, last), 0xFFFF);
    const auto database = jet::Database::open(std::make_unique<jet::MemoryStorage>(file));
    EXPECT_EQ(jetFault(database, u"UPDATE Numbers SET Id = 0"), jet::Fault::DamagedFile);
    EXPECT_EQ(rows(database, u"SELECT MAX(Id) FROM Numbers"), Lines{"898"});
    EXPECT_TRUE(contentOf(*database) == file);
}

TEST(Update, IsReadByAnotherReader) {
    if (!hasSecondReader()) {
        GTEST_SKIP() << "mdb-export is not installed";
    }
    const auto database = people();
    run(database, u"UPDATE People SET Name = Name & ' ' & Age, Age = Null, Notes = 'n' & Notes");
    const auto read = secondReading(database, "People");
    ASSERT_EQ(read.size(), 5u);
    EXPECT_THAT(read[0], testing::StartsWith("Ada 36|NULL|2006-05-03 12:00:00|12.5"));
    EXPECT_THAT(read[0], testing::HasSubstr("|nfirst programmer|"));
    EXPECT_THAT(read[1], testing::StartsWith("bob 20|NULL|"));
}

}  // namespace

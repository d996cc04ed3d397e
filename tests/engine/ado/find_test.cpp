// Search for the next record that satisfies a criterion.
#include "engine/ado/row_store.h"
#include "tests/engine/ado/recordset_fixture.h"

namespace {

using namespace ado;

fixture::ByteVector linesDatabase() {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"Lines",
         .columns = {fixture::column(u"Id", jet::ColumnType::Long), fixture::memoColumn(u"Trace"),
                     fixture::textColumn(u"Process", 50),
                     fixture::column(u"Date", jet::ColumnType::Date),
                     fixture::column(u"Trace Level", jet::ColumnType::Integer)}});
    table.insert({1, u"Connection opened", u"MsgSvc", jet::Date{36'526.0}, 3});
    table.insert({2, u"an ERROR occurred", u"notifier", jet::Date{36'526.5}, 1});
    table.insert({3, fixture::kNull, fixture::kNull, fixture::kNull, fixture::kNull});
    table.insert(
        {4, std::u16string(6000, u'-') + u"error at the end", u"MsgSvc", jet::Date{36'527.0}, 5});
    table.insert({5, u"\u00C4nderung it's [x] 100%", u"msgsvc", jet::Date{36'528.0}, 5});
    return builder.bytes();
}

class Find : public testing::Test {
protected:
    Find() { rows.open(u"SELECT * FROM Lines", database.connection); }

    /// The Id of the row that is found from `start` on; 0 for the end, -1 for the beginning.
    int find(std::u16string_view criterion, int start = 1, int direction = adSearchForward,
             int skip = 0) {
        rows.setAbsolutePosition(start);
        rows.find(criterion, skip, direction);
        if (rows.eof()) return 0;
        return rows.bof() ? -1 : std::get<std::int32_t>(rows.fields()[u"Id"].value());
    }

    std::int32_t failure(std::u16string_view criterion) {
        return errorNumber([&] { find(criterion, 2); });
    }

    TestConnection database{linesDatabase()};
    Recordset rows;
};

TEST_F(Find, TextInEitherDirectionFromTheCurrentRecordOn) {
    EXPECT_EQ(find(u"Trace Like '*error*'"), 2);
    EXPECT_EQ(find(u"Trace Like '*error*'", 2), 2) << "the current record counts";
    EXPECT_EQ(find(u"Trace Like '*error*'", 3), 4);
    EXPECT_EQ(find(u"Trace Like '*error*'", 5), 0);
    EXPECT_EQ(rows.absolutePosition(), adPosEOF);
    EXPECT_EQ(find(u"Trace Like '*error*'", 5, adSearchBackward), 4);
    EXPECT_EQ(find(u"Trace Like '*error*'", 3, adSearchBackward), 2);
    EXPECT_EQ(find(u"Trace Like '*error*'", 1, adSearchBackward), -1);
    EXPECT_EQ(rows.absolutePosition(), adPosBOF);
}

// Texts stand as codes in memory, in groups of rows whose codes count from the least of them.
TEST(FindInGroups, NullIsNoneOfTheTextsOfOtherGroups) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable({.name = u"T", .columns = {fixture::textColumn(u"Text", 20)}});
    constexpr std::uint32_t kGroup = RowStore::kGroupRows;
    table.insert({u"first"});
    for (std::uint32_t row = 1; row < kGroup; ++row) table.insert({u"second"});
    table.insert({fixture::kNull});
    for (std::uint32_t row = 1; row < kGroup; ++row) table.insert({u"second"});
    table.insert({u"first"});
    TestConnection database{builder.bytes()};
    Recordset rows;
    rows.open(u"SELECT * FROM T", database.connection);
    rows.find(u"Text = 'first'", 1);
    EXPECT_EQ(rows.absolutePosition(), static_cast<int>(2 * kGroup + 1));
}

TEST_F(Find, SkipsRecords) {
    EXPECT_EQ(find(u"Trace Like '*error*'", 2, adSearchForward, 1), 4);
    EXPECT_EQ(find(u"Trace Like '*error*'", 4, adSearchBackward, 1), 2);
    EXPECT_EQ(find(u"Trace Like '*error*'", 4, adSearchForward, 9), 0);
    EXPECT_EQ(find(u"Trace Like '*error*'", 4, adSearchBackward, 9), -1);
}

TEST_F(Find, PatternsIgnoreCaseAndKnowWildcards) {
    EXPECT_EQ(find(u"Trace Like '*\u00E4NDERUNG*'"), 5);
    EXPECT_EQ(find(u"Trace Like 'connection*'"), 1);
    EXPECT_EQ(find(u"Trace Like 'connection'"), 0);
    EXPECT_EQ(find(u"Trace Like '*###%'"), 5);
    EXPECT_EQ(find(u"Trace Like 'a? error*'"), 2);
    EXPECT_EQ(find(u"Trace Like '[a-b]n*'"), 2);
    EXPECT_EQ(find(u"Trace Like '*it''s*'"), 5);
    EXPECT_EQ(find(u"Trace Like '*'", 3), 4) << "Null is like nothing";
}

TEST_F(Find, Comparisons) {
    EXPECT_EQ(find(u"Process = 'NOTIFIER'"), 2);
    EXPECT_EQ(find(u"Process = 'msgsvc'", 2), 4);
    EXPECT_EQ(find(u"Process <> 'MsgSvc'"), 2);
    EXPECT_EQ(find(u"[Trace Level] >= 4"), 4);
    EXPECT_EQ(find(u"[trace level]<3"), 2);
    EXPECT_EQ(find(u"Id > 4.5"), 5);
    EXPECT_EQ(find(u"Id = '3'"), 3);
    EXPECT_EQ(find(u"Date >= #2000-01-02#"), 4);
    EXPECT_EQ(find(u"Date = #1/1/2000 12:00 PM#"), 2);
    EXPECT_EQ(find(u"Date > '2000-01-02'"), 5);
    EXPECT_EQ(find(u"Process = Null"), 3);
    EXPECT_EQ(find(u"Process <> Null", 3), 4);
    EXPECT_EQ(find(u"Process = 'nobody'"), 0);
}

/// Rows in memory are looked at one by one, by other code than those of a table.
TEST_F(Find, InRowsOfAnyOtherQuery) {
    rows.close();
    rows.open(u"SELECT * FROM Lines ORDER BY Id", database.connection);
    EXPECT_EQ(find(u"Trace Like '*error*'"), 2);
    EXPECT_EQ(find(u"Trace Like '*error*'", 5, adSearchBackward), 4);
    EXPECT_EQ(find(u"Trace Like '*'", 3), 4) << "Null is like nothing";
    EXPECT_EQ(find(u"Process Like '?SGSVC'", 2), 4);
    EXPECT_EQ(find(u"Process = Null"), 3);
    EXPECT_EQ(find(u"Id = 5"), 5);
    EXPECT_EQ(find(u"Id = 6"), 0);
}

TEST_F(Find, NumbersAndDatesAreLikeTheirTexts) {
    EXPECT_EQ(find(u"Id Like '[4-5]'"), 4);
    EXPECT_EQ(find(u"Date Like '2000-01-0[23]*'"), 4);
    EXPECT_EQ(find(u"[Trace Level] Like '*'", 3), 4) << "Null is like nothing";
}

TEST_F(Find, WrongCriteriaLeaveTheCurrentRecordWhereItIs) {
    EXPECT_EQ(failure(u"Trace Like '*it's*'"), 3001);
    EXPECT_EQ(failure(u"Trace Like '*open"), 3001);
    EXPECT_EQ(failure(u"Trace Like '[a*'"), 3001);
    EXPECT_EQ(failure(u"Trace Like 5"), 3001);
    EXPECT_EQ(failure(u"Trace"), 3001);
    EXPECT_EQ(failure(u""), 3001);
    EXPECT_EQ(failure(u"Trace ="), 3001);
    EXPECT_EQ(failure(u"Trace ! 'x'"), 3001);
    EXPECT_EQ(failure(u"Trace = 5"), 3001);
    EXPECT_EQ(failure(u"Id = 'five'"), 3001);
    EXPECT_EQ(failure(u"Date = #someday#"), 3001);
    EXPECT_EQ(failure(u"Date = #2000-01-01"), 3001);
    EXPECT_EQ(failure(u"Id < Null"), 3001);
    EXPECT_EQ(failure(u"Shoes = 5"), 3265);
    EXPECT_EQ(errorNumber([&] { rows.find(u"Id = 5", 0, 2); }), 3001);
    EXPECT_EQ(rows.absolutePosition(), 2);
}

TEST_F(Find, FollowsTheOrder) {
    rows.setSort(u"Id DESC");
    rows.find(u"Trace Like '*error*'");
    EXPECT_EQ(rows.fields()[u"Id"].value(), jet::Value{std::int32_t{4}});
    EXPECT_EQ(rows.absolutePosition(), 2);
}

TEST_F(Find, NeedsACurrentRecord) {
    rows.moveLast();
    rows.moveNext();
    EXPECT_EQ(errorNumber([&] { rows.find(u"Id = 1"); }), 3021);
}

}  // namespace

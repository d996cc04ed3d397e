// What a search for a text remembers, and what it may not take for known. Whether it finds the right
// rows is tested in text_find_test.cpp.
#include "engine/ado/text_matches.h"

#include "tests/engine/ado/recordset_fixture.h"

namespace {

using namespace ado;

constexpr std::int64_t kRows = 3000;

fixture::ByteVector linesDatabase() {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"Lines",
         .columns = {fixture::memoColumn(u"Trace"), fixture::textColumn(u"Level", 20)}});
    for (std::int64_t i = 0; i < kRows; ++i) {
        table.insert({i % 100 == 50 ? u"a hit" : u"nothing", i % 1000 == 7 ? u"rare" : u"often"});
    }
    return builder.bytes();
}

/// Rows of a table of which a test publishes as many as it likes.
class TextMatchesTest : public testing::Test {
protected:
    void addUpTo(std::uint32_t count) {
        while (rows->store().appended() < count) {
            ASSERT_TRUE(scan.next());
            rows->store().append(scan.rowId(), scan.record(), lost);
        }
        rows->store().publish();
    }

    std::int64_t find(TextMatches& matches, std::int64_t position,
                      int direction = adSearchForward) {
        return matches.find({}, position, rows->count(), direction, stop);
    }

    std::vector<jet::LostField> lost;
    TestConnection database{linesDatabase()};
    std::shared_ptr<ScannedRows> rows = std::make_shared<ScannedRows>(
        sql::Query::prepare(database.connection.database(), u"SELECT * FROM Lines"));
    jet::TableScan scan{rows->table()};
    std::atomic<bool> stop{false};
};

TEST_F(TextMatchesTest, RowsThatAreAddedToAGroupAfterASearchAreSearchedToo) {
    TextMatches matches{rows, 0, u"*hit*"};
    addUpTo(40);
    EXPECT_EQ(find(matches, 0), 40) << "no row";
    addUpTo(90);
    EXPECT_EQ(find(matches, 0), 50);
    EXPECT_EQ(find(matches, 51), 90);
    addUpTo(200);
    EXPECT_EQ(find(matches, 51), 150);
    addUpTo(kRows);
    EXPECT_EQ(find(matches, 2951), kRows);
    EXPECT_EQ(find(matches, 2949), 2950);
}

TEST_F(TextMatchesTest, RowsThatAreAddedAreSearchedOnTheWayBackToo) {
    TextMatches matches{rows, 0, u"*hit*"};
    addUpTo(40);
    EXPECT_EQ(find(matches, 39, adSearchBackward), -1);
    addUpTo(90);
    EXPECT_EQ(find(matches, 89, adSearchBackward), 50);
}

TEST_F(TextMatchesTest, WhatIsKnownIsNotReadAgain) {
    addUpTo(kRows);
    TextMatches matches{rows, 0, u"*no such text*"};
    EXPECT_EQ(find(matches, 0), kRows);
    database.connection.database()->cache().clear();
    database.gate->failAlways();
    EXPECT_EQ(find(matches, 0), kRows);
    EXPECT_EQ(find(matches, kRows - 1, adSearchBackward), -1);
    TextMatches other{rows, 0, u"*another text*"};
    EXPECT_THROW(find(other, 0), jet::Error);
}

TEST_F(TextMatchesTest, TextsOfADictionaryNeedNoFile) {
    addUpTo(kRows);
    TextMatches matches{rows, 1, u"*are*"};
    database.connection.database()->cache().clear();
    database.gate->failAlways();
    EXPECT_EQ(find(matches, 0), 7);
    EXPECT_EQ(find(matches, 8), 1007);
    EXPECT_EQ(find(matches, 2006, adSearchBackward), 1007);
    EXPECT_EQ(find(matches, 2008), kRows);
}

TEST_F(TextMatchesTest, IsForOneColumnAndPattern) {
    const TextMatches matches{rows, 1, u"*are*"};
    EXPECT_TRUE(matches.isFor(1, u"*are*"));
    EXPECT_FALSE(matches.isFor(0, u"*are*"));
    EXPECT_FALSE(matches.isFor(1, u"*ARE*"));
}

TEST_F(TextMatchesTest, AStoppedSearchKnowsNothingMore) {
    addUpTo(kRows);
    TextMatches matches{rows, 0, u"*hit*"};
    stop = true;
    find(matches, 0);
    stop = false;
    EXPECT_EQ(find(matches, 0), 50);
    EXPECT_EQ(find(matches, 2951), kRows);
}

}  // namespace

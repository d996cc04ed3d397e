// One opening of a recordset by itself: rows at once or in the background, its events, and what it
// leaves behind. How recordsets use it is in fetch_test.cpp.
#include "engine/ado/opening.h"

#include "tests/engine/ado/recordset_fixture.h"

#include <thread>

namespace {

using namespace ado;

class OpeningTest : public testing::Test {
protected:
    void prepare(std::u16string_view statement) {
        set = std::make_shared<RowSet>(
            sql::Query::prepare(database.connection.database(), statement));
        opening = std::make_shared<Opening>(
            set, pump,
            OpeningEvents{[this](std::uint32_t rows) { progresses.push_back(rows); },
                          [this](const std::exception_ptr& error) {
                              ++ends;
                              failure = error;
                          }});
    }

    TestConnection database{fixture::traceDatabase({.rows = 5000, .textLength = 20})};
    std::shared_ptr<HandPump> pump = std::make_shared<HandPump>();
    std::shared_ptr<RowSet> set;
    std::shared_ptr<Opening> opening;
    std::vector<std::uint32_t> progresses;
    int ends = 0;
    std::exception_ptr failure;
};

TEST_F(OpeningTest, FetchesAllRowsWithoutAnEvent) {
    prepare(u"SELECT * FROM tblTraces");
    EXPECT_EQ(set->rows().count(), 0u);
    EXPECT_EQ(set->expectedRows(), 5000u);
    opening->fetchAll();
    EXPECT_EQ(set->rows().count(), 5000u);
    EXPECT_FALSE(opening->isFetching());
    EXPECT_EQ(pump->run(), 0u);
}

TEST_F(OpeningTest, FetchesInTheBackgroundWithEvents) {
    prepare(u"SELECT * FROM tblTraces");
    opening->fetchInBackground(100);
    EXPECT_GE(set->rows().count(), 100u);
    EXPECT_TRUE(opening->isFetching());
    ASSERT_TRUE(pump->runUntil([this] { return ends > 0; }, kPatience));
    EXPECT_FALSE(opening->isFetching());
    EXPECT_EQ(set->rows().count(), 5000u);
    EXPECT_EQ(progresses.back(), 5000u);
    EXPECT_EQ(failure, nullptr);
    pump->run();
    EXPECT_EQ(ends, 1);
}

TEST_F(OpeningTest, RowsOfOtherQueriesAreThereBeforeAnyFetch) {
    prepare(u"SELECT TOP 7 * FROM tblTraces ORDER BY TraceNumber");
    EXPECT_EQ(set->scanned(), nullptr);
    EXPECT_EQ(set->expectedRows(), 0u);
    EXPECT_EQ(set->rows().count(), 7u);
    opening->fetchAll();
    EXPECT_EQ(set->rows().count(), 7u);
    EXPECT_FALSE(opening->isFetching());
    opening->completeLater();
    EXPECT_TRUE(opening->isFetching());
    EXPECT_EQ(ends, 0);
    EXPECT_EQ(pump->run(), 1u);
    EXPECT_FALSE(opening->isFetching());
    EXPECT_EQ(ends, 1);
}

TEST_F(OpeningTest, NoEventComesAfterItIsGone) {
    prepare(u"SELECT * FROM tblTraces");
    opening->fetchInBackground(100);
    while (set->rows().count() < 5000) std::this_thread::yield();
    opening.reset();
    pump->run();
    EXPECT_EQ(ends, 0);
    EXPECT_TRUE(progresses.empty());

    prepare(u"SELECT TOP 7 * FROM tblTraces");
    opening->completeLater();
    opening.reset();
    pump->run();
    EXPECT_EQ(ends, 0);
}

TEST_F(OpeningTest, AHandlerMayLetGoOfIt) {
    prepare(u"SELECT * FROM tblTraces");
    opening = std::make_shared<Opening>(set, pump,
                                        OpeningEvents{[](std::uint32_t) {},
                                                      [this](const std::exception_ptr&) {
                                                          opening.reset();
                                                          ++ends;
                                                      }});
    opening->fetchInBackground(100);
    ASSERT_TRUE(pump->runUntil([this] { return ends > 0; }, kPatience));
    EXPECT_EQ(opening, nullptr);
}

TEST_F(OpeningTest, AFailureIsThrownOrTold) {
    prepare(u"SELECT * FROM tblTraces");
    database.gate->failAt(database.placeAt(0.5));
    EXPECT_THROW(opening->fetchAll(), jet::Error);

    prepare(u"SELECT * FROM tblTraces");
    opening->fetchInBackground(10);
    ASSERT_TRUE(pump->runUntil([this] { return ends > 0; }, kPatience));
    EXPECT_THROW(std::rethrow_exception(failure), jet::Error);
    EXPECT_GE(set->rows().count(), 10u);

    prepare(u"SELECT * FROM tblTraces");
    database.gate->failAlways();
    EXPECT_THROW(opening->fetchInBackground(10), jet::Error);
    EXPECT_FALSE(opening->isFetching());
}

TEST_F(OpeningTest, WhatWasSkippedIsLeftWithTheRows) {
    fixture::FixtureBuilder builder;
    auto& table = fixture::addTraceTables(builder, {.rows = 3000}, fixture::TraceFormat::Older);
    fixture::ByteVector content = builder.bytes();
    content[std::size_t{jet::raw(table.dataPages()[3])} * jet::kPageSize] = 0x02;
    TestConnection damaged{std::move(content)};
    const auto query =
        sql::Query::prepare(damaged.connection.database(), u"SELECT * FROM tblTraces");
    for (const bool background : {false, true}) {
        const auto rows = std::make_shared<RowSet>(query);
        auto one = std::make_shared<Opening>(rows, pump, OpeningEvents{});
        background ? one->fetchInBackground(2000) : one->fetchAll();
        EXPECT_EQ(one->losses().pages, 1u);
        one.reset();
        EXPECT_EQ(rows->losses().pages, 1u);
    }
}

}  // namespace

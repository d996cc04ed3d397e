// Fetching in the background: what is there when, which events come, and what ends it.
#include "tests/engine/ado/recordset_fixture.h"
#include "tests/support/damage.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using namespace ado;
using namespace std::chrono_literals;

class FetchTest : public testing::Test {
protected:
    bool runUntilComplete(const EventLog& log) {
        return pump->runUntil([&] { return log.complete; }, kPatience);
    }

    std::shared_ptr<HandPump> pump = std::make_shared<HandPump>();
};

TEST_F(FetchTest, FirstRowsAreThereWhenOpenReturnsAndTheRestFollows) {
    TestConnection database{fixture::traceDatabase({.rows = 20'000})};
    Recordset rows{pump};
    EventLog log{rows};
    openTraces(rows, database.connection);
    EXPECT_GE(rows.rowCount(), 100u);
    EXPECT_EQ(rows.state(), adStateOpen | adStateFetching);
    EXPECT_FALSE(log.complete);
    EXPECT_EQ(rows.absolutePosition(), 1);
    ASSERT_TRUE(runUntilComplete(log));
    EXPECT_EQ(rows.recordCount(), 20'000);
    EXPECT_EQ(rows.state(), adStateOpen);
    EXPECT_FALSE(log.error);
    EXPECT_EQ(rows.losses().rows, 0u);
}

TEST_F(FetchTest, RowsAreWhatTheGeneratorMade) {
    const fixture::TraceOptions options{.rows = 5000, .seed = 3};
    TestConnection database{fixture::traceDatabase(options)};
    Recordset rows{pump};
    EventLog log{rows};
    openTraces(rows, database.connection);
    ASSERT_TRUE(runUntilComplete(log));

    fixture::TraceGenerator generator{options};
    fixture::Trace trace;
    ASSERT_EQ(rows.rowCount(), 5000u);
    for (std::uint32_t i = 0; generator.next(trace); ++i) {
        const fixture::TraceOrigin& origin = generator.origins()[trace.origin];
        ASSERT_EQ(rows.valueAt(i, 0), jet::Value{trace.date}) << i;
        ASSERT_EQ(rows.valueAt(i, 1), jet::Value{origin.process}) << i;
        ASSERT_EQ(rows.valueAt(i, 2), jet::Value{origin.source}) << i;
        ASSERT_EQ(rows.valueAt(i, 3), jet::Value{trace.number}) << i;
        ASSERT_EQ(rows.valueAt(i, 4), jet::Value{origin.component}) << i;
        ASSERT_EQ(rows.valueAt(i, 5), jet::Value{origin.level}) << i;
        ASSERT_EQ(jet::isNull(rows.valueAt(i, 6)), !trace.port.has_value()) << i;
        if (trace.callId) {
            ASSERT_EQ(rows.valueAt(i, 7), jet::Value{*trace.callId}) << i;
        } else {
            ASSERT_TRUE(jet::isNull(rows.valueAt(i, 7))) << i;
        }
        ASSERT_EQ(rows.valueAt(i, 8), jet::Value{trace.text}) << i;
    }
}

TEST_F(FetchTest, ProgressComesInThousandsAndEndsBeforeComplete) {
    TestConnection database{fixture::traceDatabase({.rows = 9500, .textLength = 20})};
    Recordset rows{pump};
    EventLog log{rows};
    openTraces(rows, database.connection);
    ASSERT_TRUE(runUntilComplete(log));
    ASSERT_FALSE(log.progresses.empty());
    EXPECT_EQ(log.progresses.back(), 9000u);
}

TEST_F(FetchTest, OwnerThatIsBehindHearsTheLatestProgressOnce) {
    TestConnection database{fixture::traceDatabase({.rows = 30'000, .textLength = 20})};
    Recordset rows{pump};
    EventLog log{rows};
    openTraces(rows, database.connection);
    while (rows.rowCount() < 30'000) std::this_thread::yield();
    while (pump->pending() < 2) std::this_thread::yield();
    EXPECT_EQ(pump->pending(), 2u) << "one progress, one end";
    ASSERT_TRUE(runUntilComplete(log));
    EXPECT_EQ(log.progresses, std::vector<std::uint32_t>{30'000});
}

TEST_F(FetchTest, SmallTableReportsProgressZero) {
    TestConnection database{fixture::traceDatabase({.rows = 40})};
    Recordset rows{pump};
    EventLog log{rows};
    openTraces(rows, database.connection);
    EXPECT_EQ(rows.recordCount(), 40);
    ASSERT_TRUE(runUntilComplete(log));
    EXPECT_EQ(log.progresses, std::vector<std::uint32_t>{0});
}

TEST_F(FetchTest, NoRowsAndOneRow) {
    for (const unsigned count : {0u, 1u}) {
        TestConnection database{fixture::traceDatabase({.rows = count})};
        Recordset rows{pump};
        EventLog log{rows};
        openTraces(rows, database.connection);
        ASSERT_TRUE(runUntilComplete(log));
        EXPECT_EQ(rows.rowCount(), count);
        EXPECT_EQ(rows.bof(), count == 0);
        EXPECT_EQ(rows.eof(), count == 0);
        EXPECT_EQ(rows.absolutePosition(), count == 0 ? adPosUnknown : 1);
    }
}

TEST_F(FetchTest, NoEventComesAfterClose) {
    TestConnection database{fixture::traceDatabase({.rows = 20'000, .textLength = 20})};
    Recordset rows{pump};
    openTraces(rows, database.connection);
    rows.fetchProgress = [](std::uint32_t, std::uint32_t, int) { ADD_FAILURE() << "progress"; };
    rows.fetchComplete = [](const Error*, int) { ADD_FAILURE() << "complete"; };
    while (rows.rowCount() < 20'000) std::this_thread::yield();
    rows.close();
    pump->run();
    EXPECT_EQ(rows.state(), adStateClosed);
}

TEST_F(FetchTest, NoEventComesAfterDestruction) {
    TestConnection database{fixture::traceDatabase({.rows = 3000})};
    {
        Recordset rows{pump};
        rows.fetchComplete = [](const Error*, int) { ADD_FAILURE() << "complete"; };
        openTraces(rows, database.connection);
    }
    pump->run();
}

TEST_F(FetchTest, ReopeningGivesTheEventsOfTheNewFetchOnly) {
    TestConnection database{fixture::traceDatabase({.rows = 20'000, .textLength = 20})};
    Recordset rows{pump};
    EventLog log{rows};
    openTraces(rows, database.connection);
    while (rows.rowCount() < 20'000) std::this_thread::yield();
    rows.close();
    openTraces(rows, database.connection, u"WHERE TraceNumber < 0");
    ASSERT_TRUE(runUntilComplete(log));
    pump->run();
    EXPECT_EQ(log.progresses, std::vector<std::uint32_t>{0});
    EXPECT_EQ(rows.recordCount(), 0);
}

TEST_F(FetchTest, CloseDoesNotWaitForAStorageThatDoesNotAnswer) {
    TestConnection database{fixture::traceDatabase({.rows = 20'000})};
    const auto gate = database.gate;
    Recordset rows{pump};
    rows.fetchComplete = [](const Error*, int) { ADD_FAILURE() << "complete"; };
    database.gate->holdAt(database.placeAt(0.5));
    openTraces(rows, database.connection);
    gate->waitUntilHeld();
    // Nobody else lets the read go on, so a close() that waits for it would never return; with this
    // it returns too late instead.
    std::atomic<bool> closed{false};
    std::atomic<bool> tooLate{false};
    std::thread rescue{[&] {
        for (int i = 0; i < 1000 && !closed; ++i) std::this_thread::sleep_for(10ms);
        tooLate = !closed;
        if (tooLate) gate->release();
    }};
    rows.close();
    closed = true;
    rescue.join();
    EXPECT_FALSE(tooLate);
    gate->release();
    gate->waitUntilPassed();
    pump->run();
}

TEST_F(FetchTest, RowsAreReadableWhileTheFetchIsHeldUp) {
    TestConnection database{fixture::traceDatabase({.rows = 20'000})};
    Recordset rows{pump};
    EventLog log{rows};
    database.gate->holdAt(database.placeAt(0.5));
    openTraces(rows, database.connection);
    database.gate->waitUntilHeld();
    const std::uint32_t count = rows.rowCount();
    EXPECT_GE(count, 100u);
    EXPECT_LT(count, 20'000u);
    EXPECT_EQ(rows.state(), adStateOpen | adStateFetching);
    EXPECT_EQ(columnTexts(rows, 1).size(), count);
    database.gate->release();
    ASSERT_TRUE(runUntilComplete(log));
    EXPECT_EQ(rows.rowCount(), 20'000u);
}

TEST_F(FetchTest, StorageThatFailsEndsTheFetchWithItsErrorAndKeepsTheRows) {
    TestConnection database{fixture::traceDatabase({.rows = 20'000})};
    Recordset rows{pump};
    EventLog log{rows};
    database.gate->failAt(database.placeAt(0.5));
    openTraces(rows, database.connection);
    ASSERT_TRUE(runUntilComplete(log));
    ASSERT_TRUE(log.error);
    EXPECT_EQ(log.error->number(), kErrorFile);
    EXPECT_NE(std::string{log.error->what()}.find("the disk is gone"), std::string::npos);
    EXPECT_EQ(rows.state(), adStateOpen);
    EXPECT_GT(rows.rowCount(), 1000u);
    EXPECT_LT(rows.rowCount(), 20'000u);
    EXPECT_FALSE(jet::isNull(rows.valueAt(rows.rowCount() - 1, 1)));
}

TEST_F(FetchTest, StorageThatFailsBeforeTheFirstRowFailsTheOpen) {
    TestConnection database{fixture::traceDatabase({.rows = 2000})};
    database.gate->failAt(database.placeAt(0));
    Recordset rows{pump};
    EXPECT_EQ(errorNumber([&] { openTraces(rows, database.connection); }), kErrorFile);
    EXPECT_EQ(rows.state(), adStateClosed);
    pump->run();  // whatever was posted has no recordset to go to
}

TEST_F(FetchTest, DamagedRowsAreLeftOutAndCounted) {
    fixture::FixtureBuilder builder;
    auto& table = fixture::addTraceTables(builder, {.rows = 3000}, fixture::TraceFormat::Older);
    fixture::ByteVector content = builder.bytes();
    const std::size_t page = std::size_t{jet::raw(table.dataPages()[3])} * jet::kPageSize;
    content[page] = 0x02;
    TestConnection database{std::move(content)};
    Recordset rows{pump};
    EventLog log{rows};
    openTraces(rows, database.connection);
    ASSERT_TRUE(runUntilComplete(log));
    EXPECT_FALSE(log.error);
    EXPECT_EQ(rows.losses().pages, 1u);
    EXPECT_LT(rows.rowCount(), 3000u);
    EXPECT_GT(rows.rowCount(), 2800u);
}

/// Single rows whose fields run over their record, on pages that are sound otherwise.
TEST_F(FetchTest, RowsThatAreDamagedInAFieldStayWithTheirOthers) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"T",
         .columns = {fixture::column(u"Id", jet::ColumnType::Long), fixture::memoColumn(u"Notes"),
                     fixture::textColumn(u"Name", 50)}});
    std::vector<jet::RowId> ids;
    for (std::int32_t i = 0; i < 500; ++i) ids.push_back(table.insert({i, u"note", u"name"}));
    fixture::ByteVector content = builder.bytes();
    for (const std::size_t damaged : {3u, 77u, 499u}) {
        // The end of the record says where its variable columns begin: the name, and with it the
        // end of the notes.
        const std::size_t end =
            fixture::rowOffset(content, ids[damaged]) + fixture::rowLength(content, ids[damaged]);
        fixture::poke16(content, end - 7, 0x7FFF);
    }
    TestConnection database{std::move(content)};
    for (const bool background : {false, true}) {
        Recordset rows{pump};
        EventLog log{rows};
        rows.setCursorLocation(background ? adUseClient : adUseServer);
        rows.open(u"SELECT * FROM T", database.connection, adOpenForwardOnly, adLockReadOnly,
                  adAsyncFetch);
        ASSERT_TRUE(runUntilComplete(log));
        ASSERT_EQ(rows.recordCount(), 500);
        EXPECT_EQ(rows.losses().rows, 0u);
        EXPECT_EQ(rows.losses().values, 3u);  // the names: the notes have not been read
        EXPECT_EQ(rows.clone()->losses().values, 3u);
        EXPECT_EQ(rows.valueAt(77, 0), jet::Value{77});
        EXPECT_TRUE(jet::isUnreadable(rows.valueAt(77, 2)));
        EXPECT_TRUE(jet::isUnreadable(rows.valueAt(77, 1)));
        EXPECT_FALSE(jet::isUnreadable(rows.valueAt(78, 1)));
        for (int again = 0; again < 3; ++again) rows.valueAt(77, 1);
        EXPECT_EQ(rows.losses().values, 4u) << "a field that is painted again is no new loss";
        rows.moveFirst();
        EXPECT_EQ(rows.fields()[u"Name"].unreadable(), std::nullopt);
        for (int step = 0; step < 3; ++step) rows.moveNext();
        ASSERT_TRUE(rows.fields()[u"Name"].unreadable());
        EXPECT_THAT(*rows.fields()[u"Name"].unreadable(), testing::HasSubstr("damaged on page"));
        rows.moveFirst();
        rows.find(u"Notes LIKE '*nowhere*'");
        EXPECT_EQ(rows.losses().values, 6u) << "a search meets the notes of all";
    }
}

TEST_F(FetchTest, SparseFilterDoesNotKeepOpenWaiting) {
    TestConnection database{fixture::traceDatabase({.rows = 100'000, .textLength = 10})};
    Recordset rows{pump};
    EventLog log{rows};
    database.gate->holdAt(database.placeAt(0.9));
    openTraces(rows, database.connection, u"WHERE TraceNumber = -1");
    EXPECT_EQ(rows.recordCount(), 0);
    EXPECT_EQ(rows.state(), adStateOpen | adStateFetching);
    database.gate->release();
    ASSERT_TRUE(runUntilComplete(log));
}

TEST_F(FetchTest, FilterThatIsNeverTrueGivesNoRowsAndAnEnd) {
    TestConnection database{fixture::traceDatabase({.rows = 5000})};
    Recordset rows{pump};
    EventLog log{rows};
    openTraces(rows, database.connection, u"WHERE -1 = 1");
    EXPECT_EQ(rows.recordCount(), 0);
    ASSERT_TRUE(runUntilComplete(log));
}

TEST_F(FetchTest, QueryThatIsNoScanIsThereAtOnceAndEndsToo) {
    TestConnection database{fixture::traceDatabase({.rows = 500})};
    Recordset rows{pump};
    EventLog log{rows};
    openTraces(rows, database.connection, u"ORDER BY TraceNumber DESC");
    EXPECT_EQ(rows.recordCount(), 500);
    EXPECT_FALSE(log.complete);
    ASSERT_TRUE(runUntilComplete(log));
    EXPECT_TRUE(log.progresses.empty());
    rows.close();
    EventLog second{rows};
    openTraces(rows, database.connection, u"ORDER BY TraceNumber DESC");
    rows.close();
    pump->run();
    EXPECT_FALSE(second.complete);
}

TEST_F(FetchTest, WithoutASchedulerOpenReturnsWithAllRows) {
    TestConnection database{fixture::traceDatabase({.rows = 5000})};
    Recordset rows;
    openTraces(rows, database.connection);
    EXPECT_EQ(rows.recordCount(), 5000);
    EXPECT_EQ(rows.state(), adStateOpen);
}

TEST_F(FetchTest, FileWithoutPortAndCallIdNeedsTheShorterQuery) {
    TestConnection database{fixture::traceDatabase({.rows = 500}, fixture::TraceFormat::Oldest)};
    Recordset rows{pump};
    EventLog log{rows};
    EXPECT_EQ(errorNumber([&] { openTraces(rows, database.connection); }), kErrorParameter);
    EXPECT_EQ(rows.state(), adStateClosed);
    openTraces(rows, database.connection, u"", kOldestTraceQuery);
    ASSERT_TRUE(runUntilComplete(log));
    EXPECT_EQ(rows.fields().count(), 7u);
    EXPECT_EQ(rows.recordCount(), 500);
}

TEST_F(FetchTest, HandlerMayReopenTheRecordset) {
    TestConnection database{fixture::traceDatabase({.rows = 2500, .textLength = 20})};
    Recordset rows{pump};
    int ends = 0;
    rows.fetchComplete = [&](const Error*, int) {
        if (++ends > 3) return;
        rows.close();
        openTraces(rows, database.connection, u"WHERE TraceNumber >= 0");
    };
    openTraces(rows, database.connection);
    ASSERT_TRUE(pump->runUntil([&] { return ends == 4; }, kPatience));
}

TEST_F(FetchTest, ReaderSeesWholeRowsWhileTheyAreAdded) {
    const fixture::TraceOptions options{.rows = 60'000, .seed = 5, .textLength = 12};
    TestConnection database{fixture::traceDatabase(options)};
    Recordset rows{pump};
    EventLog log{rows};
    openTraces(rows, database.connection);
    // Reads behind the writer's back, as a grid that is painted all the time would.
    fixture::TraceGenerator generator{options};
    fixture::Trace trace;
    std::uint32_t checked = 0;
    while (generator.next(trace)) {
        while (rows.rowCount() <= checked) std::this_thread::yield();
        const fixture::TraceOrigin& origin = generator.origins()[trace.origin];
        ASSERT_EQ(rows.valueAt(checked, 0), jet::Value{trace.date}) << checked;
        ASSERT_EQ(rows.valueAt(checked, 2), jet::Value{origin.source}) << checked;
        ASSERT_EQ(rows.valueAt(checked, 5), jet::Value{origin.level}) << checked;
        if (checked % 64 == 0) {
            ASSERT_EQ(rows.valueAt(checked, 8), jet::Value{trace.text});
        }
        ++checked;
    }
    ASSERT_TRUE(runUntilComplete(log));
    EXPECT_EQ(rows.rowCount(), checked);
}

TEST_F(FetchTest, RowsTakeFewBytesWithTheirOrder) {
    TestConnection database{fixture::traceDatabase({.rows = 100'000, .textLength = 60})};
    Recordset rows{pump};
    EventLog log{rows};
    openTraces(rows, database.connection);
    ASSERT_TRUE(runUntilComplete(log));
    rows.setSort(u"Process DESC");
    EXPECT_LE(rows.byteCount() / rows.rowCount(), 24u);
}

}  // namespace

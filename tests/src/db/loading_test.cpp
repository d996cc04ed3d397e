// Opening databases as the program does, with a hand pump in place of the window's messages.
#include "src/db/mod_database.h"
#include "src/log/class_log.h"
#include "src/log/procedure.h"
#include "src/text/text.h"
#include "tests/engine/jet/write/crashed.h"
#include "tests/src/db/recorded_events.h"
#include "tests/src/log/fake_log_system.h"
#include "tests/src/log/reporting_log.h"
#include "tests/support/damage.h"
#include "tests/support/expected.h"
#include "tests/support/trace_database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

namespace {

constexpr std::chrono::seconds kPatience{60};

class LoadingTest : public testing::Test {
protected:
    void SetUp() override { diags() = std::make_unique<classDiags>(pump_, events_); }

    void TearDown() override { diags().reset(); }

    std::filesystem::path makeFile(const char* name, std::uint32_t rows,
                                   fixture::TraceFormat format = fixture::TraceFormat::Newer) {
        const std::filesystem::path path = folder_.path() / name;
        fixture::writeTraceDatabase(path, {.rows = rows}, format);
        return path;
    }

    void open(const std::filesystem::path& path) {
        modDatabase::connectToDB(path.u16string());
        modDatabase::openRecordsets();
    }

    bool loadToEnd() {
        return pump_->runUntil([this] { return events_.count(u"load ended") != 0; }, kPatience);
    }

    bool reported(std::u16string_view text) const {
        return std::any_of(reports_.begin(), reports_.end(), [&](const std::u16string& report) {
            return report.find(text) != std::u16string::npos;
        });
    }

    ado::Recordset& rows() { return diags()->rsDiags(); }

    std::shared_ptr<ado::HandPump> pump_ = std::make_shared<ado::HandPump>();
    RecordedEvents events_;
    std::vector<std::u16string> reports_;
    fixture::TemporaryFolder folder_;
    ReportsTo reporting_{[this](std::u16string_view label, const std::u16string& message) {
        reports_.push_back(std::u16string{label} + u": " + message);
    }};
    ServicesInUse inUse_{servicesWith(&Services::events, &events_)};
};

TEST_F(LoadingTest, FirstRowsAreThereWhenTheOpenReturns) {
    open(makeFile("a.mdb", 5000));
    EXPECT_GE(rows().recordCount(), 100);
    EXPECT_TRUE(events_.loading);
    EXPECT_EQ(rows().absolutePosition(), 1);
    EXPECT_TRUE(reports_.empty());
}

TEST_F(LoadingTest, OpeningEndsAsSoonAsTheFetchHasStarted) {
    open(makeFile("a.mdb", 5000));
    const std::vector<std::u16string> expected{u"opening begins", u"load begins", u"opening ends"};
    EXPECT_EQ(events_.lines, expected);
}

TEST_F(LoadingTest, TheCombinationsAreReadAnewEachTime) {
    open(makeFile("a.mdb", 300));
    const std::size_t count = modDatabase::uniqueTraces().size();
    ASSERT_GT(count, 0u);
    modDatabase::openUniqueFilters();
    EXPECT_EQ(modDatabase::uniqueTraces().size(), count);
}

TEST_F(LoadingTest, ItsEndIsTheLastThatIsTold) {
    open(makeFile("a.mdb", 2500));
    ASSERT_TRUE(loadToEnd());
    EXPECT_EQ(rows().recordCount(), 2500);
    EXPECT_FALSE(events_.loading);
    EXPECT_EQ(events_.lines.back(), u"load ended");
    EXPECT_EQ(events_.count(u"load ended"), 1u);
    EXPECT_EQ(events_.lost.rows, 0u);
    EXPECT_EQ(events_.lost.pages, 0u);
}

TEST_F(LoadingTest, RowsAreInDateOrderAfterwards) {
    open(makeFile("a.mdb", 2500));
    ASSERT_TRUE(loadToEnd());
    double before = -1e9;
    for (std::uint32_t row = 0; row < rows().rowCount(); ++row) {
        const double days = std::get<jet::Date>(rows().valueAt(row, 0)).days;
        ASSERT_LE(before, days) << row;
        before = days;
    }
}

TEST_F(LoadingTest, ProgressIsToldInThousands) {
    open(makeFile("a.mdb", 60000));
    ASSERT_TRUE(loadToEnd());
    EXPECT_GE(events_.count(u"rows "), 1u);
    // At most once in a thousand rows.
    EXPECT_LE(events_.count(u"rows "), 61u);
    for (const std::u16string& line : events_.lines) {
        if (line.starts_with(u"rows ") && line != u"rows 0") {
            EXPECT_TRUE(line.ends_with(u"000"));
        }
    }
}

TEST_F(LoadingTest, AFailedFetchEndsWithItsError) {
    open(makeFile("a.mdb", 300));
    ASSERT_TRUE(loadToEnd());
    events_.lines.clear();
    const ado::Error error{ado::kErrorFile, "the drive is gone"};
    rows().fetchComplete(&error, ado::adStatusErrorsOccurred);
    ASSERT_EQ(events_.lines.size(), 1u);
    EXPECT_TRUE(events_.lines[0].starts_with(u"load ended: ")) << events_.lines[0].size();
}

TEST_F(LoadingTest, AFileThatIsCutOffIsLoadedAsFarAsItGoes) {
    fixture::FixtureBuilder builder;
    const fixture::TableBuilder& traces =
        fixture::addTraceTables(builder, {.rows = 3000}, fixture::TraceFormat::Newer);
    fixture::ByteVector bytes = builder.bytes();
    const auto pages = traces.dataPages();
    fixture::truncate(bytes, fixture::pageOffset(pages.at(pages.size() / 2)) + 100);
    open(folder_.write("cut.mdb", bytes));
    ASSERT_TRUE(loadToEnd());
    EXPECT_GT(rows().rowCount(), 1000u);
    EXPECT_LT(rows().rowCount(), 2000u);
    EXPECT_TRUE(events_.lost.any());
}

TEST_F(LoadingTest, WhatWasLostIsToldAtTheEnd) {
    fixture::FixtureBuilder builder;
    const fixture::TableBuilder& traces =
        fixture::addTraceTables(builder, {.rows = 3000}, fixture::TraceFormat::Newer);
    fixture::ByteVector bytes = builder.bytes();
    fixture::poke(bytes, fixture::pageOffset(traces.dataPages().at(3)), {0x02});
    open(folder_.write("damaged.mdb", bytes));
    ASSERT_TRUE(loadToEnd());
    EXPECT_EQ(events_.lost.pages, 1u);
    EXPECT_LT(rows().recordCount(), 3000);
    EXPECT_GT(rows().recordCount(), 2800);
}

TEST_F(LoadingTest, EmptyTableLoadsWithoutRows) {
    open(makeFile("a.mdb", 0, fixture::TraceFormat::Older));
    ASSERT_TRUE(loadToEnd());
    EXPECT_EQ(rows().recordCount(), 0);
    EXPECT_FALSE(events_.loading);
}

TEST_F(LoadingTest, FileWithoutPortAndCallIdLoadsWithSevenColumns) {
    open(makeFile("oldest.mdb", 300, fixture::TraceFormat::Oldest));
    ASSERT_TRUE(loadToEnd());
    EXPECT_EQ(rows().recordCount(), 300);
    ASSERT_EQ(rows().fields().count(), 7u);
    EXPECT_EQ(rows().fields()[6].name(), u"Trace");
    EXPECT_FALSE(reported(u"openDiagRecordset"));
}

TEST_F(LoadingTest, AFilterClauseHoldsInTheOldestFilesToo) {
    open(makeFile("oldest.mdb", 3000, fixture::TraceFormat::Oldest));
    ASSERT_TRUE(loadToEnd());
    const UniqueTrace wanted = modDatabase::uniqueTraces().front();
    events_.lines.clear();
    modDatabase::openDiagRecordset(u"WHERE  ( qrxIndex = '" +
                                   std::get<std::u16string>(wanted.qrxIndex) + u"' ) ");
    ASSERT_TRUE(loadToEnd());
    ASSERT_EQ(rows().fields().count(), 7u);
    EXPECT_GT(rows().recordCount(), 0);
    EXPECT_LT(rows().recordCount(), 3000);
    for (std::uint32_t row = 0; row < rows().rowCount(); ++row) {
        ASSERT_EQ(rows().valueAt(row, 4), wanted.component) << row;
        ASSERT_EQ(rows().valueAt(row, 1), wanted.process) << row;
    }
    EXPECT_FALSE(reported(u"openDiagRecordset"));
}

TEST_F(LoadingTest, UniqueTracesAreReadInOrderAndTicked) {
    open(makeFile("a.mdb", 2000));
    const UniqueTraces& traces = modDatabase::uniqueTraces();
    ASSERT_GT(traces.size(), 10u);
    for (const UniqueTrace& trace : traces) {
        EXPECT_TRUE(trace.selected);
        const std::u16string key = std::get<std::u16string>(trace.component) + u"_" +
                                   std::get<std::u16string>(trace.process) + u"_" +
                                   toText(std::get<std::int16_t>(trace.traceLevel)) + u"_" +
                                   std::get<std::u16string>(trace.source);
        EXPECT_EQ(std::get<std::u16string>(trace.qrxIndex), key);
    }
    for (std::size_t i = 1; i < traces.size(); ++i) {
        if (traces[i - 1].component != traces[i].component) continue;
        EXPECT_LE(std::get<std::int16_t>(traces[i - 1].traceLevel),
                  std::get<std::int16_t>(traces[i].traceLevel));
    }
}

TEST_F(LoadingTest, ASecondFileTakesThePlaceOfTheFirst) {
    open(makeFile("a.mdb", 20000));
    open(makeFile("b.mdb", 300));
    ASSERT_TRUE(loadToEnd());
    EXPECT_EQ(rows().recordCount(), 300);
    EXPECT_EQ(events_.count(u"load ended"), 1u) << "an event of the first file's fetch arrived";
    EXPECT_TRUE(reports_.empty());
}

TEST_F(LoadingTest, AFilterClauseReopensTheTraces) {
    open(makeFile("a.mdb", 3000));
    ASSERT_TRUE(loadToEnd());
    const auto key = std::get<std::u16string>(modDatabase::uniqueTraces().front().qrxIndex);
    events_.lines.clear();
    modDatabase::openDiagRecordset(u"WHERE  ( qrxIndex = '" + key + u"' ) ");
    ASSERT_TRUE(loadToEnd());
    EXPECT_GT(rows().recordCount(), 0);
    EXPECT_LT(rows().recordCount(), 3000);

    events_.lines.clear();
    modDatabase::openDiagRecordset(u"WHERE -1 = 1");
    ASSERT_TRUE(loadToEnd());
    EXPECT_EQ(rows().recordCount(), 0);

    events_.lines.clear();
    modDatabase::openDiagRecordset(u"WHERE -1");
    ASSERT_TRUE(loadToEnd());
    EXPECT_EQ(rows().recordCount(), 3000);
}

TEST_F(LoadingTest, AClauseThatIsNoSqlIsReportedAndLeavesNoNotice) {
    open(makeFile("a.mdb", 300));
    ASSERT_TRUE(loadToEnd());
    modDatabase::openDiagRecordset(u"WHERE  ( qrxIndex = 'it's' ) ");
    EXPECT_TRUE(reported(u"[modDatabase]openDiagRecordset: Err.Number = -2147217900"));
    EXPECT_EQ(rows().state(), ado::adStateClosed);
    EXPECT_FALSE(events_.loading);
}

TEST_F(LoadingTest, AnEmptyTableOfUniqueTracesIsASubscriptError) {
    open(makeFile("a.mdb", 0));
    EXPECT_TRUE(modDatabase::uniqueTraces().empty());
    EXPECT_TRUE(reported(u"[modDatabase]createUniqueTracesArray: Err.Number = 9"));
}

TEST_F(LoadingTest, FilesThatAreNoDatabaseDoNoHarm) {
    const std::vector<std::uint8_t> text(5000, 'x');
    std::vector<std::filesystem::path> files{
        folder_.write("empty.mdb", {}),
        folder_.write("text.mdb", text),
        folder_.path() / "missing.mdb",
        folder_.path(),
    };
    auto whole = fixture::traceDatabase({.rows = 300});
    whole.resize(2 * jet::kPageSize);
    files.push_back(folder_.write("beginning.mdb", whole));
    for (const std::filesystem::path& file : files) {
        reports_.clear();
        events_.lines.clear();
        open(file);
        EXPECT_TRUE(reported(u"[modDatabase]connectToDB: Err.Number = -2147467259")) << file;
        EXPECT_EQ(rows().state(), ado::adStateClosed) << file;
        EXPECT_TRUE(modDatabase::uniqueTraces().empty()) << file;
        EXPECT_FALSE(events_.loading) << file;
        EXPECT_EQ(events_.lines.back(), u"opening ends") << file;
    }
    // The program is as usable as before.
    reports_.clear();
    open(makeFile("good.mdb", 300));
    ASSERT_TRUE(loadToEnd());
    EXPECT_EQ(rows().recordCount(), 300);
}

// ---- Changes that were interrupted -------------------------------------------------------------

/// The lines of the log that tell of the change while `file` is opened.
class InterruptedTest : public LoadingTest {
protected:
    std::string logOfOpening(const std::filesystem::path& path) {
        FakeLogSystem system;
        classLog log{system.system()};
        const ServicesInUse inUse{servicesWith(&Services::log, &log)};
        events_.lines.clear();
        open(path);
        EXPECT_TRUE(loadToEnd());
        EXPECT_EQ(rows().recordCount(), 2500);
        modDatabase::connectToDB(u"");
        log.flush();
        return system.text(log.strLogFile());
    }

    jet::Crashed crashed_{fixture::traceDatabase({.rows = 2500}, fixture::TraceFormat::Newer)};
};

TEST_F(InterruptedTest, ThePagesThatWerePutBackAreLogged) {
    folder_.write("traces.mdb-journal", crashed_.journal());
    const auto path = folder_.write("traces.mdb", crashed_.crashed);
    const std::string log = logOfOpening(path);
    EXPECT_THAT(log, testing::HasSubstr("has been taken back, pages: 4"));
    EXPECT_THAT(log, testing::HasSubstr("Warning:("));
    EXPECT_THAT(logOfOpening(path), testing::Not(testing::HasSubstr("interrupted")));
}

TEST_F(InterruptedTest, AFileInTheWayOfTheJournalIsLogged) {
    folder_.write("traces.mdb-journal", {'D', 'i', 'a', 'r', 'y'});
    const auto path = folder_.write("traces.mdb", crashed_.original);
    const std::string log = logOfOpening(path);
    EXPECT_THAT(log, testing::HasSubstr("traces.mdb-journal is not the journal of this database"));
    EXPECT_THAT(log, testing::HasSubstr("Warning:("));
}

#ifndef _WIN32
TEST_F(InterruptedTest, WhatCannotBeTakenBackIsShownAsItWas) {
    folder_.write("traces.mdb-journal", crashed_.journal());
    const auto path = folder_.write("traces.mdb", crashed_.crashed);
    std::filesystem::permissions(path, std::filesystem::perms::owner_read);
    const std::string log = logOfOpening(path);
    EXPECT_THAT(log, testing::HasSubstr("shown as it was before a change that was interrupted"));
    EXPECT_THAT(log, testing::HasSubstr("traces.mdb cannot be written"));
}
#endif

TEST_F(LoadingTest, SampleFilesLoadWhole) {
    const auto folder = fixture::testDataFolder();
    if (!folder) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator{*folder}) {
        if (entry.path().extension() != ".mdb") continue;
        events_.lines.clear();
        open(folder_.copy(entry.path()));
        ASSERT_TRUE(loadToEnd()) << entry.path();
        auto dump = entry.path();
        dump.replace_extension(".traces.tsv");
        EXPECT_EQ(static_cast<std::size_t>(rows().recordCount()),
                  fixture::readPlainTable(dump).rows.size())
            << entry.path();
        ++files;
    }
    EXPECT_GT(files, 10);
}

}  // namespace

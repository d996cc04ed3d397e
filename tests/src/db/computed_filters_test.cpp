// Files that cannot be upgraded: their unique traces and keys are computed, and nothing is written.
#include "engine/jet/database.h"
#include "src/db/mod_database.h"
#include "src/db/trace_filter.h"
#include "tests/src/db/recorded_events.h"
#include "tests/src/log/fake_log_system.h"
#include "tests/support/damage.h"
#include "tests/support/expected.h"
#include "tests/support/trace_database.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

namespace {

constexpr std::chrono::seconds kPatience{60};

std::vector<char> contentOf(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

using Lines = std::vector<std::u16string>;

/// What the viewer shows of a file: the unique traces in their order, and the rows that each of
/// them filters.
struct Shown {
    Lines tree;
    std::map<std::u16string, Lines> rows;  ///< by key

    bool operator==(const Shown&) const = default;
};

/// A file on which the upgrade fails as if it were evidence.
class ReadOnly {
public:
    explicit ReadOnly(std::filesystem::path path) : path_{std::move(path)} {
        std::filesystem::permissions(path_, std::filesystem::perms::owner_read);
    }
    ~ReadOnly() { std::filesystem::permissions(path_, std::filesystem::perms::owner_all); }
    ReadOnly(const ReadOnly&) = delete;
    ReadOnly& operator=(const ReadOnly&) = delete;

private:
    std::filesystem::path path_;
};

class ComputedFiltersTest : public testing::Test {
protected:
    void SetUp() override { diags() = std::make_unique<classDiags>(pump_, events_); }

    void TearDown() override {
        diags().reset();
        modDatabase::connectToDB(u"");
    }

    Services compose() {
        Services composed = services();
        composed.events = &events_;
        composed.log = &log_;
        composed.runWhilePainting = [this](const std::function<void()>& work) {
            ++works_;
            work();
        };
        return composed;
    }

    void open(const std::filesystem::path& path) {
        modDatabase::connectToDB(path.u16string());
        modDatabase::openRecordsets();
    }

    bool loadToEnd() {
        return pump_->runUntil([this] { return events_.count(u"load ended") != 0; }, kPatience);
    }

    /// Opens the file and waits for its rows and its tree.
    void openLoaded(const std::filesystem::path& path) {
        events_.lines.clear();
        open(path);
        ASSERT_TRUE(loadToEnd()) << path;
    }

    static Lines tree() {
        Lines lines;
        for (const UniqueTrace& trace : modDatabase::uniqueTraces()) {
            lines.push_back(plainText(trace.component) + u"|" + plainText(trace.traceLevel) + u"|" +
                            plainText(trace.process) + u"|" + plainText(trace.source) + u"|" +
                            plainText(trace.qrxIndex));
            for (const auto* part : {&trace.component, &trace.process, &trace.source}) {
                lines.back() += jet::isNull(*part) ? u"|Null" : u"|";
            }
        }
        return lines;
    }

    static Lines rows() {
        ado::Recordset& recordset = diags()->rsDiags();
        Lines lines(recordset.rowCount());
        std::u16string text;
        for (std::uint32_t row = 0; row < lines.size(); ++row) {
            for (std::size_t field = 0; field < recordset.fields().count(); ++field) {
                recordset.textAt(row, field, text);
                lines[row] += text + u"|";
            }
        }
        return lines;
    }

    /// The rows of the unique traces that are ticked.
    Lines filteredRows() {
        events_.lines.clear();
        modDatabase::openDiagRecordset(
            whereClause(constructFilterExpression(modDatabase::uniqueTraces())));
        EXPECT_TRUE(loadToEnd());
        return rows();
    }

    void tickOnly(std::size_t place) {
        for (UniqueTrace& trace : modDatabase::uniqueTraces()) trace.selected = false;
        modDatabase::uniqueTraces()[place].selected = true;
    }

    Shown shown(const std::filesystem::path& path) {
        openLoaded(path);
        Shown all{tree(), {}};
        all.rows[u"all"] = rows();
        UniqueTraces& traces = modDatabase::uniqueTraces();
        for (std::size_t i = 0; i < traces.size(); ++i) {
            tickOnly(i);
            const std::u16string key = plainText(traces[i].qrxIndex);
            // A quote in a key makes no valid clause, upgraded or not.
            if (key.find(u'\'') == std::u16string::npos) all.rows[key] = filteredRows();
        }
        for (std::size_t i = 0; i < traces.size(); ++i) {
            traces[i].selected =
                i % 2 == 0 && plainText(traces[i].qrxIndex).find(u'\'') == std::u16string::npos;
        }
        all.rows[u"every other one"] = filteredRows();
        modDatabase::connectToDB(u"");
        return all;
    }

    /// The file as it is, and a copy that has been upgraded, show the same.
    void expectLikeUpgradedCopy(const std::filesystem::path& path) {
        const auto copy = folder_.path() / "upgraded.mdb";
        std::filesystem::remove(copy);  // MinGW's copy_file() does not overwrite
        std::filesystem::copy_file(path, copy);
        const Shown upgraded = shown(copy);
        const auto content = contentOf(path);
        EXPECT_FALSE(contentOf(copy) == content) << "the copy has not been upgraded";
        const ReadOnly evidence{path};
        const Shown computed = shown(path);
        EXPECT_TRUE(contentOf(path) == content);
        EXPECT_EQ(computed.tree, upgraded.tree);
        EXPECT_TRUE(computed == upgraded) << "rows differ";
    }

    std::filesystem::path makeFile(std::uint32_t rows, fixture::TraceFormat format) {
        const std::filesystem::path path = folder_.path() / "made.mdb";
        fixture::writeTraceDatabase(path, {.rows = rows}, format);
        return path;
    }

    /// The log's lines that contain `text`, without what changes from run to run.
    std::vector<std::string> logged(const std::string& text) {
        theLog().flush();
        std::vector<std::string> lines;
        std::istringstream log{system_.text(theLog().strLogFile())};
        for (std::string line; std::getline(log, line);) {
            if (line.find(text) != std::string::npos) lines.push_back(line);
        }
        return lines;
    }

    std::shared_ptr<ado::HandPump> pump_ = std::make_shared<ado::HandPump>();
    RecordedEvents events_;
    int works_ = 0;  ///< that the window would have been painted during
    FakeLogSystem system_;
    classLog log_{system_.system()};
    fixture::TemporaryFolder folder_;
    ServicesInUse inUse_{compose()};
};

TEST_F(ComputedFiltersTest, ShowTheSameAsAnUpgradedCopy) {
    for (const auto format : {fixture::TraceFormat::Older, fixture::TraceFormat::Oldest}) {
        expectLikeUpgradedCopy(makeFile(3000, format));
    }
}

TEST_F(ComputedFiltersTest, SampleFilesShowTheSameAsUpgradedCopies) {
    const auto samples = fixture::testDataFolder();
    if (!samples) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator{*samples}) {
        const std::string name = entry.path().stem().string();
        if (entry.path().extension() != ".mdb" || name.starts_with("newer")) continue;
        SCOPED_TRACE(name);
        expectLikeUpgradedCopy(folder_.copy(entry.path()));
        ++files;
    }
    EXPECT_GT(files, 10);
}

TEST_F(ComputedFiltersTest, AreThereAfterTheRows) {
    const auto path = makeFile(3000, fixture::TraceFormat::Older);
    const ReadOnly evidence{path};
    open(path);
    EXPECT_GE(diags()->rsDiags().recordCount(), 100) << "the first rows do not wait for them";
    EXPECT_TRUE(modDatabase::uniqueTraces().empty());
    const int before = works_;
    ASSERT_TRUE(loadToEnd());
    EXPECT_GT(modDatabase::uniqueTraces().size(), 20u);
    EXPECT_EQ(works_, before + 1) << "the window is not painted meanwhile";
    const Lines& lines = events_.lines;
    const auto ended = std::ranges::find(lines, u"load ended");
    EXPECT_EQ(Lines(ended, lines.end()),
              (Lines{u"load ended", u"computing begins", u"computing ends"}));

    // Once a file: a filter reopens the rows alone, and leaves the ticks.
    tickOnly(0);
    const int once = works_;
    EXPECT_LT(filteredRows().size(), 3000u);
    EXPECT_EQ(works_, once);
    EXPECT_EQ(events_.count(u"computing"), 0u);
    EXPECT_FALSE(modDatabase::uniqueTraces()[1].selected);
}

TEST_F(ComputedFiltersTest, AFileInUseHasThemToo) {
    const auto path = makeFile(500, fixture::TraceFormat::Older);
    const auto content = contentOf(path);
    const auto other = jet::Database::open(path);
    openLoaded(path);
    EXPECT_GT(modDatabase::uniqueTraces().size(), 20u);
    tickOnly(2);
    const Lines filtered = filteredRows();
    EXPECT_GT(filtered.size(), 0u);
    EXPECT_LT(filtered.size(), 500u);
    modDatabase::connectToDB(u"");
    EXPECT_TRUE(contentOf(path) == content);
}

// What can be read of a damaged file decides which unique traces it has.
TEST_F(ComputedFiltersTest, ADamagedFileHasThoseOfTheRowsThatAreLeft) {
    fixture::FixtureBuilder builder;
    const fixture::TableBuilder& traces =
        fixture::addTraceTables(builder, {.rows = 3000}, fixture::TraceFormat::Older);
    fixture::ByteVector bytes = builder.bytes();
    fixture::poke(bytes, fixture::pageOffset(traces.dataPages().at(3)), {0x02});
    openLoaded(folder_.write("damaged.mdb", bytes));
    EXPECT_EQ(events_.lost.pages, 1u);
    const std::size_t left = diags()->rsDiags().rowCount();
    ASSERT_GT(modDatabase::uniqueTraces().size(), 20u);
    std::size_t filtered = 0;
    for (std::size_t i = 0; i < modDatabase::uniqueTraces().size(); ++i) {
        tickOnly(i);
        const std::size_t found = filteredRows().size();
        EXPECT_GT(found, 0u) << i;
        filtered += found;
    }
    EXPECT_EQ(filtered, left);
}

// The log is what it was, and has one line more: that they are computed, and why.
TEST_F(ComputedFiltersTest, TheLogSaysOnceThatTheyAreComputedAndWhy) {
    const auto path = makeFile(100, fixture::TraceFormat::Older);
    {
        const ReadOnly evidence{path};
        openLoaded(path);
    }
    EXPECT_EQ(logged("Using older database format").size(), 10u);
    EXPECT_EQ(logged("forcing exit from [modDatabase]updateDatabaseFormat").size(), 10u);
    const auto lines = logged("[modDatabase]defineFilters");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_THAT(lines[0], testing::HasSubstr("Warning:("));
    EXPECT_THAT(lines[0],
                testing::HasSubstr("The filters are computed because the file could not be "
                                   "upgraded: Cannot update. Database or object is read-only."));
    // It comes behind the attempts to upgrade, and before the rows.
    const std::string log = system_.text(theLog().strLogFile());
    const auto at = log.find(lines[0]);
    EXPECT_GT(at, log.rfind("Exiting [modDatabase]openUniqueFilters"));
    EXPECT_LT(at, log.find("Entering [modDatabase]openDiagRecordset"));
    EXPECT_EQ(logged("Number of Unique Traces Found: ").size(), 1u);
}

TEST_F(ComputedFiltersTest, AnUpgradedFileComputesNothing) {
    const auto path = makeFile(100, fixture::TraceFormat::Older);
    openLoaded(path);
    EXPECT_TRUE(logged("computed").empty());
    EXPECT_EQ(events_.count(u"computing"), 0u);
}

// The upgrade of a file that can be written to may fail as well: here the key does not fit.
TEST_F(ComputedFiltersTest, KeysMayBeLongerThanTheColumnThatWouldStoreThem) {
    fixture::FixtureBuilder builder;
    auto columns = fixture::traceColumns(fixture::TraceFormat::Older);
    for (auto& column : columns) {
        if (column.name == u"Source") column = fixture::textColumn(u"Source", 255);
    }
    auto& table = builder.addTable({.name = u"tblTraces", .columns = columns});
    for (int i = 0; i < 3; ++i) {
        const std::u16string source = std::u16string(200, u's') + (i == 2 ? u"t" : u"");
        table.insert({jet::Date{40000}, std::u16string{u"p"}, source, std::int32_t{1},
                      std::u16string{u"c"}, std::int16_t{1}, fixture::kNull, fixture::kNull,
                      std::u16string{u"trace"}});
    }
    openLoaded(folder_.write("long.mdb", builder.bytes()));
    ASSERT_EQ(modDatabase::uniqueTraces().size(), 2u);
    EXPECT_EQ(plainText(modDatabase::uniqueTraces()[0].qrxIndex).size(), 206u);
    tickOnly(0);
    EXPECT_EQ(filteredRows().size(), 2u);
    tickOnly(1);
    EXPECT_EQ(filteredRows().size(), 1u);
}

// Its own table of combinations, which lacks a column, is not asked any more.
TEST_F(ComputedFiltersTest, ReplaceATableOfCombinationsThatLacksAColumn) {
    const auto path = makeFile(500, fixture::TraceFormat::Older);
    {
        ado::Connection connection;
        connection.open(jet::Database::open(path));
        connection.execute(u"CREATE TABLE tblUniqueFilters (Component TEXT(50))");
    }
    openLoaded(path);
    EXPECT_GT(modDatabase::uniqueTraces().size(), 20u);
}

TEST_F(ComputedFiltersTest, ADatabaseWithoutTracesGetsNone) {
    fixture::FixtureBuilder builder;
    builder.addTable({.name = u"People", .columns = {fixture::textColumn(u"Name", 50)}});
    open(folder_.write("other.mdb", builder.bytes()));
    EXPECT_TRUE(logged("computed").empty());
    EXPECT_EQ(events_.count(u"computing"), 0u);
    EXPECT_TRUE(modDatabase::uniqueTraces().empty());
}

// A file that is opened while the rows of another are arriving has its own.
TEST_F(ComputedFiltersTest, BelongToTheFileThatIsOpen) {
    const auto first = folder_.path() / "first.mdb";
    fixture::writeTraceDatabase(first, {.rows = 20000}, fixture::TraceFormat::Older);
    const auto second = makeFile(300, fixture::TraceFormat::Newer);
    const ReadOnly evidence{first};
    open(first);
    openLoaded(second);
    EXPECT_EQ(events_.count(u"computing"), 0u);
    EXPECT_EQ(diags()->rsDiags().recordCount(), 300);
    modDatabase::openDiagRecordset(u"WHERE  ( qrxIndex = '" +
                                   plainText(modDatabase::uniqueTraces()[0].qrxIndex) + u"' ) ");
    EXPECT_GT(diags()->rsDiags().recordCount(), 0);
}

}  // namespace

// The statements with which the viewer brings an older database up to date, word for word.
#include "tests/engine/sql/changes.h"
#include "tests/support/trace_database.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>

namespace {

using namespace sqltest;

constexpr std::u16string_view kStatements[] = {
    u"ALTER Table tblTraces ADD COLUMN Highlight YesNo",
    u"ALTER Table tblTraces ADD COLUMN qrxIndex TEXT(160)",
    u"ALTER Table tblTraces ADD COLUMN NotePresent YesNo",
    u"ALTER Table tblTraces ADD COLUMN Notes Text(255)",
    u"UPDATE tblTraces SET qrxIndex = [Component] & '_' & [Process] & '_' & [TraceLevel] & '_' & "
    u"[Source]",
    u"CREATE INDEX qrxIndex ON tblTraces (qrxIndex)",
    u"CREATE Table tblUniqueFilters ( Component Text(50), Process Text(50), TraceLevel Integer, "
    u"Source Text(50), qrxIndex Text(160) )",
    u"INSERT INTO tblUniqueFilters ( Component, Process, TraceLevel, Source, qrxIndex) SELECT "
    u"tblTraces.Component, tblTraces.Process, tblTraces.TraceLevel, tblTraces.Source, "
    u"tblTraces.qrxIndex From tblTraces GROUP BY tblTraces.Component, tblTraces.Process, "
    u"tblTraces.TraceLevel, tblTraces.Source, tblTraces.qrxIndex"};

const std::u16string kUnique =
    u"SELECT Component, Process, TraceLevel, Source, qrxIndex FROM tblUniqueFilters";

/// All eight; statements that find their column there already are left out, as the viewer does.
void upgrade(const std::shared_ptr<jet::Database>& database) {
    for (const auto statement : kStatements) {
        try {
            run(database, statement);
        } catch (const jet::Error& error) {
            if (error.fault() != jet::Fault::AlreadyExists) throw;
        }
    }
}

TEST(UpgradeStatements, BringOlderDatabasesUpToDate) {
    constexpr std::uint64_t kRows = 3000;
    for (const auto format : {fixture::TraceFormat::Oldest, fixture::TraceFormat::Older}) {
        const auto database = jet::Database::open(std::make_unique<jet::MemoryStorage>(
            fixture::traceDatabase({.rows = kRows, .seed = 12}, format)));
        const std::u16string old =
            u"SELECT Date, Process, Source, Component, TraceNumber, Trace, "
            u"TraceLevel FROM tblTraces";
        const Lines before = rows(database, old);
        upgrade(database);
        const auto again = reopened(database);
        EXPECT_EQ(rows(again, old), before);
        std::set<std::string> expected;
        for (const auto& row : rows(again,
                                    u"SELECT Component, Process, TraceLevel, Source, Component & "
                                    u"'_' & Process & '_' & TraceLevel & '_' & Source FROM "
                                    u"tblTraces")) {
            expected.insert(row);
        }
        const Lines unique = rows(again, kUnique);
        EXPECT_GT(unique.size(), 20u);
        EXPECT_EQ((std::set<std::string>{unique.begin(), unique.end()}), expected);
        EXPECT_EQ(unique.size(), expected.size());
        EXPECT_EQ(
            rows(again,
                 u"SELECT COUNT(*) FROM tblTraces WHERE qrxIndex = Component & '_' & Process & "
                 u"'_' & TraceLevel & '_' & Source AND NOT Highlight AND NOT NotePresent AND "
                 u"Notes IS NULL"),
            Lines{std::to_string(kRows)});
    }
}

TEST(UpgradeStatements, GiveWhatFilesMadeNewerHave) {
    const fixture::TraceOptions options{.rows = 900, .seed = 5};
    const auto older = jet::Database::open(std::make_unique<jet::MemoryStorage>(
        fixture::traceDatabase(options, fixture::TraceFormat::Older)));
    const auto newer = jet::Database::open(std::make_unique<jet::MemoryStorage>(
        fixture::traceDatabase(options, fixture::TraceFormat::Newer)));
    upgrade(older);
    const auto types = [](const std::shared_ptr<jet::Database>& database,
                          std::u16string_view name) {
        std::map<std::u16string, std::pair<jet::ColumnType, unsigned>> found;
        const auto table = database->table(name);
        for (const jet::Column& column : table->definition().columns) {
            const bool sized = column.type == jet::ColumnType::Text;
            found[column.name] = {column.type, sized ? column.size : 0u};
        }
        return found;
    };
    EXPECT_EQ(types(older, u"tblTraces"), types(newer, u"tblTraces"));
    EXPECT_EQ(types(older, u"tblUniqueFilters"), types(newer, u"tblUniqueFilters"));
    const auto sorted = [](Lines lines) {
        std::sort(lines.begin(), lines.end());
        return lines;
    };
    EXPECT_EQ(sorted(rows(older, kUnique)), sorted(rows(newer, kUnique)));
    EXPECT_EQ(rows(older, u"SELECT qrxIndex FROM tblTraces"),
              rows(newer, u"SELECT qrxIndex FROM tblTraces"));
}

TEST(UpgradeStatements, AreReadByAnotherReader) {
    if (!hasSecondReader()) {
        GTEST_SKIP() << "mdb-export is not installed";
    }
    const auto database = jet::Database::open(std::make_unique<jet::MemoryStorage>(
        fixture::traceDatabase({.rows = 1200, .seed = 6}, fixture::TraceFormat::Older)));
    upgrade(database);
    EXPECT_EQ(secondReading(database, "tblUniqueFilters"), rows(database, kUnique));
    const fixture::TemporaryFolder folder;
    const std::string file = folder.write("upgraded.mdb", contentOf(*database)).string();
    EXPECT_EQ(fixture::runProgram({"mdb-count", file, "tblTraces"}).output, "1200\n");
}

fixture::ByteVector readFile(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

/// A row of the table of combinations as the plain form has it.
std::string shown(const fixture::PlainRow& row) {
    std::string line;
    for (const auto& field : row) {
        line += (&field == row.data() ? "" : "|") + field.value_or("NULL");
    }
    return line;
}

TEST(UpgradeStatements, BringTheSampleFilesUpToDate) {
    const auto folder = fixture::testDataFolder();
    if (!folder) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator{*folder}) {
        const std::string name = entry.path().stem().string();
        if (entry.path().extension() != ".mdb" || name.rfind("old", 0) != 0) continue;
        SCOPED_TRACE(name);
        const auto database =
            jet::Database::open(std::make_unique<jet::MemoryStorage>(readFile(entry.path())));
        const Lines traces = rows(database, u"SELECT Date, Trace FROM tblTraces");
        upgrade(database);
        const auto again = reopened(database);
        EXPECT_EQ(rows(again, u"SELECT Date, Trace FROM tblTraces"), traces);
        const auto expected = fixture::readPlainTable(*folder / (name + ".unique.tsv"));
        Lines wanted;
        for (const auto& row : expected.rows) wanted.push_back(shown(row));
        EXPECT_EQ(rows(again, kUnique + u" ORDER BY Component, TraceLevel, Process, Source"),
                  wanted);
        ++files;
    }
    EXPECT_GE(files, 14);
}

}  // namespace

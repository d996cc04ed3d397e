// The program jetsql, started as a person would start it.
#include "tests/engine/jet/write/crashed.h"
#include "tests/support/damage.h"
#include "tests/support/expected.h"
#include "tests/support/external_program.h"
#include "tests/support/fixture_builder.h"
#include "tests/support/trace_database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

fixture::ProgramResult jetsql(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), VORELLE_JETSQL);
    return fixture::runProgram(arguments);
}

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

class Jetsql : public testing::Test {
protected:
    void SetUp() override {
        file_ =
            folder_.write("traces.mdb", fixture::traceDatabase({.rows = 900, .seed = 8})).string();
    }

    fixture::TemporaryFolder folder_;
    std::string file_;
};

TEST_F(Jetsql, ListsTables) {
    const auto result = jetsql({file_});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, HasSubstr("tblTraces\t900\n"));
    EXPECT_EQ(result.errors, "");
}

TEST_F(Jetsql, SaysWhatBecameOfAnInterruptedChange) {
    jet::Crashed crashed{fixture::traceDatabase({.rows = 900, .seed = 8})};
    const std::string file = folder_.write("crashed.mdb", crashed.crashed).string();
    auto journal = crashed.journal();
    auto cutOff = journal;
    cutOff.resize(10000);
    folder_.write("crashed.mdb-journal", cutOff);
    const std::string count = "SELECT COUNT(*) FROM tblTraces";
    auto result = jetsql({file, count});
    EXPECT_NE(result.exitCode, 0);
    EXPECT_THAT(result.errors, HasSubstr("journal: "));
    EXPECT_THAT(result.errors, HasSubstr("crashed.mdb-journal"));

    folder_.write("crashed.mdb-journal", journal);
    result = jetsql({file, count});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.output, "Expr1000\n900\n");
    EXPECT_EQ(result.errors, "journal: an interrupted change has been taken back, pages: 4\n");
    EXPECT_EQ(jetsql({file, count}).errors, "");
}

TEST_F(Jetsql, PrintsTheSchema) {
    for (const auto& result : {jetsql({"--schema", file_}), jetsql({file_, "--schema"})}) {
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_THAT(result.output, HasSubstr("table tblTraces\n  column Date DateTime\n"));
        EXPECT_THAT(result.output, HasSubstr("  column Trace Memo compressed\n"));
    }
}

TEST_F(Jetsql, RunsStatements) {
    const auto result =
        jetsql({file_, "SELECT COUNT(*) AS n, 'a' & 1, Null FROM tblTraces WHERE TraceLevel >= 0"});
    EXPECT_EQ(result.output, "n\tExpr1001\tExpr1002\n900\ta1\t\\N\n");
    EXPECT_EQ(result.exitCode, 0);
}

/// A scan writes stored bytes, every other statement values; both must give the same text.
TEST_F(Jetsql, WritesScansAsItWritesValues) {
    const auto scanned = jetsql({"--threads", "1", file_, "SELECT * FROM tblTraces"});
    const auto parallel = jetsql({"--threads", "4", file_, "SELECT * FROM tblTraces"});
    const auto limited = jetsql({file_, "SELECT TOP 1000 * FROM tblTraces"});
    EXPECT_GT(scanned.output.size(), 50000u);
    EXPECT_EQ(parallel.output, scanned.output);
    EXPECT_EQ(limited.output, scanned.output);
    EXPECT_EQ(fixture::parsePlainTable(scanned.output).rows.size(), 900u);
}

TEST_F(Jetsql, ReportsFailuresByNumber) {
    const auto failure = [](const std::vector<std::string>& arguments) {
        const auto result = jetsql(arguments);
        EXPECT_EQ(result.exitCode, 1);
        return result.errors;
    };
    EXPECT_THAT(failure({file_, "SELECT * FROM tblUniqueFilters"}),
                StartsWith("error -2147217865 (0x80040E37): "));
    EXPECT_THAT(failure({file_, "SELECT qrxIndex FROM tblTraces"}),
                StartsWith("error -2147217904 (0x80040E10): "));
    EXPECT_THAT(failure({file_, "SELECT"}), StartsWith("error -2147217900 (0x80040E14): "));
    EXPECT_THAT(failure({file_ + ".none"}), StartsWith("error -2147467259 (0x80004005): "));
}

TEST_F(Jetsql, RunsChanges) {
    const auto result = jetsql({file_, "ALTER TABLE tblTraces ADD COLUMN Mark YESNO",
                                "UPDATE tblTraces SET Mark = True, TraceLevel = 7",
                                "CREATE TABLE Marks (Mark YESNO, n LONG)",
                                "INSERT INTO Marks SELECT Mark, COUNT(*) AS n FROM tblTraces GROUP "
                                "BY Mark",
                                "SELECT * FROM Marks"});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.output,
              "0 rows affected\n900 rows affected\n0 rows affected\n1 rows affected\nMark\tn\n"
              "1\t900\n");
    EXPECT_EQ(jetsql({file_, "SELECT COUNT(*) FROM tblTraces WHERE TraceLevel = 7"}).output,
              "Expr1000\n900\n");
}

TEST_F(Jetsql, KeepsWhatWasDoneBeforeAFailure) {
    const auto result =
        jetsql({file_, "UPDATE tblTraces SET TraceLevel = 7",
                "UPDATE tblTraces SET TraceLevel = 'seven'", "DROP TABLE tblTraces"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "900 rows affected\n");
    EXPECT_THAT(result.errors, StartsWith("error -2147217900 (0x80040E14): Type conversion"));
    EXPECT_EQ(jetsql({file_, "SELECT COUNT(*) FROM tblTraces WHERE TraceLevel = 7"}).output,
              "Expr1000\n900\n");
    EXPECT_THAT(jetsql({file_, "ALTER TABLE tblTraces ADD COLUMN Date LONG"}).errors,
                StartsWith("error -2147217887 (0x80040E21): "));
}

/// A database with a damaged memo and a table without a definition.
fixture::ByteVector damagedDatabase() {
    fixture::FixtureBuilder builder;
    auto& notes = builder.addTable(
        {.name = u"Notes",
         .columns = {fixture::column(u"N", jet::ColumnType::Long), fixture::memoColumn(u"M")}});
    fixture::ByteVector nowhere(12, 0xEE);
    nowhere[3] = 0x40;
    notes.insert({1, u"good"});
    notes.insert({2, fixture::longValue(fixture::stored(nowhere), fixture::LongForm::HandMade)});
    auto& other = builder.addTable(
        {.name = u"Other", .columns = {fixture::column(u"N", jet::ColumnType::Long)}});
    fixture::ByteVector file = builder.bytes();
    file[fixture::pageOffset(other.definitionPage())] = 0;
    return file;
}

TEST_F(Jetsql, TellsWhatIsLost) {
    const std::string file = folder_.write("damaged.mdb", damagedDatabase()).string();
    for (const auto* const threads : {"1", "4"}) {
        const auto scanned = jetsql({"--threads", threads, file, "SELECT * FROM Notes"});
        EXPECT_EQ(scanned.exitCode, 3);
        EXPECT_EQ(scanned.output, "N\tM\n1\tgood\n2\t\\?\n");
        EXPECT_EQ(scanned.errors, "damage: 1 value could not be read\n");
    }
    const auto sorted = jetsql({file, "SELECT * FROM Notes ORDER BY N"});
    EXPECT_EQ(sorted.exitCode, 3);
    EXPECT_EQ(sorted.output, "N\tM\n1\tgood\n2\t\\?\n");
    const auto verbose = jetsql({"--verbose", file, "SELECT M FROM Notes"});
    EXPECT_THAT(verbose.errors, HasSubstr("value of row 1 of page "));
    EXPECT_THAT(verbose.errors, HasSubstr("damage: 1 value could not be read\n"));
    EXPECT_EQ(jetsql({file, "SELECT N FROM Notes"}).exitCode, 0) << "the notes are not read";
}

TEST_F(Jetsql, ListsTablesThatCannotBeRead) {
    const std::string file = folder_.write("damaged.mdb", damagedDatabase()).string();
    const auto list = jetsql({file});
    EXPECT_EQ(list.exitCode, 3);
    EXPECT_THAT(list.output,
                StartsWith("Notes\t2\nOther\tcannot be read: The database is damaged"));
    EXPECT_EQ(list.errors, "damage: 1 table could not be read\n");
    const auto schema = jetsql({"--schema", file});
    EXPECT_EQ(schema.exitCode, 3);
    EXPECT_THAT(schema.output, HasSubstr("table Notes\n  column N Long\n"));
    EXPECT_THAT(schema.output, HasSubstr("table Other\n  cannot be read: "));
}

TEST_F(Jetsql, ReadsAFileThatIsCutOff) {
    fixture::ByteVector content = fixture::traceDatabase({.rows = 900, .seed = 8});
    fixture::truncate(content, content.size() - 3 * jet::kPageSize - 100);
    const std::string file = folder_.write("cut.mdb", content).string();
    const auto result = jetsql({file, "SELECT COUNT(*) FROM tblTraces"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.errors, HasSubstr("4 pages behind the end could not be read\n"));
}

TEST_F(Jetsql, ExplainsItsUsage) {
    for (const auto& result :
         {jetsql({}), jetsql({"--threads", "0", file_, "SELECT"}), jetsql({"--unknown", file_}),
          jetsql({"--schema", file_, "SELECT"})}) {
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(result.errors, StartsWith("usage: "));
        EXPECT_EQ(result.output, "");
    }
}

/// Every table of the sample files, byte by byte.
TEST(JetsqlSamples, PrintsTheSampleFiles) {
    const auto folder = fixture::testDataFolder();
    if (!folder) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    int tables = 0;
    const auto check = [&](const std::filesystem::path& database, const std::string& table,
                           const std::filesystem::path& expected) {
        const auto result = jetsql({database.string(), "SELECT * FROM [" + table + "]"});
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        EXPECT_TRUE(result.output == contentOf(expected)) << expected;
        ++tables;
    };
    for (const auto& entry : std::filesystem::directory_iterator{*folder}) {
        if (entry.path().extension() != ".mdb") continue;
        auto expected = entry.path();
        check(entry.path(), "tblTraces", expected.replace_extension(".traces.tsv"));
        check(entry.path(), "tblMacroTraces",
              expected.replace_extension("").replace_extension(".macros.txt"));
    }
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator{*folder / "access-made"}) {
        if (entry.path().extension() != ".tsv") continue;
        auto database = entry.path().parent_path();
        database += ".mdb";
        check(database, entry.path().stem().string(), entry.path());
    }
    EXPECT_GT(tables, 10);
}

}  // namespace

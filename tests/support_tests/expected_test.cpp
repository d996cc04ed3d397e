#include "tests/support/expected.h"

#include "tests/support/external_program.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace fixture {
namespace {

TEST(PlainTable, TellsNullFromEmptyAndResolvesEscapes) {
    const PlainTable table = parsePlainTable("a\tb\n\\N\t\nx\\ty\\\\N\tline1\\r\\nline2\n");
    EXPECT_EQ(table.columns, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(table.rows,
              (std::vector<PlainRow>{{std::nullopt, ""}, {"x\ty\\N", "line1\r\nline2"}}));
}

TEST(PlainTable, FieldsGoBackToWhatTheyWere) {
    const std::optional<std::string> text = "a\tb\r\nc\\d";
    EXPECT_EQ(toPlainField(text), "a\\tb\\r\\nc\\\\d");
    EXPECT_EQ(toPlainField(std::nullopt), "\\N");
}

TEST(PlainTable, RefusesRowsOfAnotherWidthAndUnknownEscapes) {
    EXPECT_THROW(parsePlainTable("a\tb\n1\n"), std::runtime_error);
    EXPECT_THROW(parsePlainTable("a\n\\x\n"), std::runtime_error);
    EXPECT_THROW(readPlainTable("no such file"), std::runtime_error);
}

TEST(PlainTable, ReadsTheTestDatabasesResults) {
    const auto folder = testDataFolder();
    if (!folder) {
        GTEST_SKIP() << kNoTestData;
    }
    const PlainTable table = readPlainTable(*folder / "old-basic.traces.tsv");
    EXPECT_EQ(table.columns.front(), "Date");
    EXPECT_EQ(table.rows.size(), 418u);
}

TEST(TemporaryFolder, GoesWithItsContent) {
    std::filesystem::path kept;
    {
        const TemporaryFolder folder;
        kept = folder.path();
        EXPECT_EQ(std::filesystem::file_size(folder.write("three", {1, 2, 3})), 3u);
    }
    EXPECT_FALSE(std::filesystem::exists(kept));
}

TEST(ExternalProgram, GivesOutputErrorsAndExitCode) {
    if (!hasProgram("sh")) {
        GTEST_SKIP() << "no shell to run";
    }
    const ProgramResult result = runProgram({"sh", "-c", "echo out; echo err >&2; exit 3"});
    EXPECT_EQ(result.output, "out\n");
    EXPECT_EQ(result.errors, "err\n");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_FALSE(result.timedOut);
}

TEST(ExternalProgram, IsKilledAtItsLimit) {
    if (!hasProgram("sleep")) {
        GTEST_SKIP() << "no program to wait for";
    }
    const ProgramResult result = runProgram({"sleep", "600"}, std::chrono::seconds{1});
    EXPECT_TRUE(result.timedOut);
    EXPECT_EQ(result.exitCode, -1);
}

TEST(ExternalProgram, IsNotFoundByAWrongName) { EXPECT_FALSE(hasProgram("no-such-program-here")); }

}  // namespace
}  // namespace fixture

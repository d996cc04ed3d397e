// Recordsets over files of independent makers, beside what their makers say they hold.
#include "engine/jet/text.h"
#include "tests/engine/ado/recordset_fixture.h"
#include "tests/support/expected.h"

#include <algorithm>
#include <cmath>
#include <fstream>

namespace {

using namespace ado;

/// Values as the expectations have them: numbers by value, dates to the second, truth as 1 and 0.
std::optional<std::string> plainForm(const jet::Value& value) {
    if (jet::isNull(value)) return std::nullopt;
    if (const auto* truth = std::get_if<bool>(&value)) return *truth ? "1" : "0";
    std::u16string text;
    ValueFormatter{}.append(value, text);
    return jet::toUtf8(text);
}

bool sameField(const std::optional<std::string>& found,
               const std::optional<std::string>& expected) {
    if (found == expected || !found || !expected) return found == expected;
    char* end = nullptr;
    const double number = std::strtod(found->c_str(), &end);
    if (*end != '\0' || found->empty()) return false;
    const double other = std::strtod(expected->c_str(), &end);
    return *end == '\0' && !expected->empty() && number == other;
}

std::vector<std::filesystem::path> sampleFiles() {
    std::vector<std::filesystem::path> files;
    if (const auto folder = fixture::testDataFolder()) {
        for (const auto& entry : std::filesystem::directory_iterator{*folder}) {
            if (entry.path().extension() == ".mdb") files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

TEST(SampleFiles, TracesAreWhatTheirMakerWrote) {
    const auto files = sampleFiles();
    if (files.empty()) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    const auto pump = std::make_shared<HandPump>();
    for (const auto& file : files) {
        SCOPED_TRACE(file.string());
        const fixture::PlainTable expected =
            fixture::readPlainTable(std::filesystem::path{file}.replace_extension(".traces.tsv"));
        Connection connection;
        connection.open(u"Data Source=" + file.u16string());
        Recordset rows{pump};
        EventLog log{rows};
        openTraces(rows, connection, u"", u"SELECT * FROM tblTraces ");
        ASSERT_TRUE(pump->runUntil([&] { return log.complete; }, kPatience));
        ASSERT_EQ(rows.rowCount(), expected.rows.size());
        ASSERT_EQ(rows.fields().count(), expected.columns.size());
        std::size_t wrong = 0;
        for (std::uint32_t row = 0; row < rows.rowCount(); ++row) {
            for (std::size_t column = 0; column < expected.columns.size(); ++column) {
                const auto found = plainForm(rows.valueAt(row, column));
                const auto& wanted = expected.rows[row][column];
                if (sameField(found, wanted) || ++wrong > 5) continue;
                ADD_FAILURE() << "row " << row << " " << expected.columns[column] << ": "
                              << fixture::toPlainField(found) << " for "
                              << fixture::toPlainField(wanted);
            }
        }
        EXPECT_EQ(wrong, 0u);
        EXPECT_EQ(rows.losses().rows, 0u);
    }
}

TEST(SampleFiles, UniqueTracesComeInOrder) {
    const auto folder = fixture::testDataFolder();
    if (!folder) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    Connection connection;
    connection.open(u"Data Source=" + (*folder / "newer-basic.mdb").u16string());
    Recordset rows;
    rows.open(
        u"SELECT Process, Source, Component, TraceLevel, qrxIndex From tblUniqueFilters "
        u"ORDER BY Component, TraceLevel",
        connection, adOpenStatic);
    EXPECT_EQ(static_cast<std::size_t>(rows.recordCount()),
              fixture::readPlainTable(*folder / "newer-basic.unique.tsv").rows.size());
    const std::u16string before = rows.getString();
    rows.setSort(u"Component, TraceLevel");
    EXPECT_EQ(rows.getString(), before);
}

TEST(SampleFiles, OlderFilesGiveTheNumbersThatStartTheirUpgrade) {
    const auto folder = fixture::testDataFolder();
    if (!folder) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    const auto unique =
        u"SELECT Process, Source, Component, TraceLevel, qrxIndex "
        u"From tblUniqueFilters ORDER BY Component, TraceLevel";
    Connection connection;
    connection.open(u"Data Source=" + (*folder / "old-basic.mdb").u16string());
    Recordset rows;
    EXPECT_EQ(errorNumber([&] { rows.open(unique, connection); }), kErrorNoSuchTable);
    connection.close();
    connection.open(u"Data Source=" + (*folder / "oldest-basic.mdb").u16string());
    EXPECT_EQ(errorNumber([&] { openTraces(rows, connection); }), kErrorParameter);
    EXPECT_EQ(errorNumber([&] { openTraces(rows, connection, u"", kOldestTraceQuery); }), 0);
}

}  // namespace

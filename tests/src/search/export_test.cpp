#include "src/search/export.h"

#include "engine/ado/error.h"
#include "tests/support/expected.h"
#include "tests/support/trace_database.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

class TextTarget : public ExportTarget {
public:
    void write(std::u16string_view piece) override { text.append(piece); }
    void restart() override {
        text.clear();
        ++restarts;
    }

    std::u16string text;
    int restarts = 0;
};

class TraceExportTest : public testing::Test {
protected:
    void open(std::uint32_t count, int options = ado::adOptionUnspecified) {
        fixture::writeTraceDatabase(folder.path() / "a.mdb", {.rows = count, .textLength = 20});
        connection.open(jet::Database::open(folder.path() / "a.mdb"));
        rows.setCursorLocation(ado::adUseClient);
        rows.open(u"SELECT TraceNumber, Port, CallId, Process FROM tblTraces", connection,
                  ado::adOpenForwardOnly, ado::adLockReadOnly, options);
    }

    void writeAll() {
        TraceExport output{rows, target};
        while (output.writeBlock()) continue;
    }

    /// Without the CR LF; the empty piece behind the last one is left out.
    std::vector<std::u16string> lines() const {
        std::vector<std::u16string> result;
        std::size_t start = 0;
        for (std::size_t end; (end = target.text.find(u"\r\n", start)) != std::u16string::npos;
             start = end + 2) {
            result.push_back(target.text.substr(start, end - start));
        }
        EXPECT_EQ(start, target.text.size()) << "the last line is ended too";
        return result;
    }

    fixture::TemporaryFolder folder;
    ado::Connection connection;
    std::shared_ptr<ado::HandPump> pump = std::make_shared<ado::HandPump>();
    ado::Recordset rows{pump};
    TextTarget target;
};

TEST_F(TraceExportTest, NoRowsGiveTheHeadingOnly) {
    open(0);
    writeAll();
    EXPECT_EQ(target.text, u"TraceNumber\tPort\tCallId\tProcess\r\n");
}

TEST_F(TraceExportTest, AnEmptyLineFollowsEveryHundredRowsAndTheLast) {
    open(250);
    writeAll();
    const auto all = lines();
    ASSERT_EQ(all.size(), 1u + 250 + 3);
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(all[i].empty(), i == 101 || i == 202 || i == 253) << i;
    }
    EXPECT_TRUE(all[1].starts_with(u"1000\t"));
    EXPECT_TRUE(all[102].starts_with(u"1100\t"));
    EXPECT_TRUE(all[252].starts_with(u"1249\t"));
}

TEST_F(TraceExportTest, AFullLastBlockIsNotFollowedByAnother) {
    open(100);
    writeAll();
    EXPECT_EQ(lines().size(), 1u + 100 + 1);
}

TEST_F(TraceExportTest, RowsStandInTheOrderOfTheSort) {
    open(120);
    rows.setSort(u"TraceNumber DESC");
    rows.setAbsolutePosition(50);
    writeAll();
    EXPECT_TRUE(lines()[1].starts_with(u"1119\t")) << "from the first row, wherever the view stood";
    EXPECT_TRUE(lines()[121].starts_with(u"1000\t"));
}

TEST_F(TraceExportTest, NullIsAnEmptyField) {
    open(200);
    writeAll();
    int withoutPort = 0;
    for (const std::u16string& line : lines()) {
        if (line.empty()) continue;
        ASSERT_EQ(std::count(line.begin(), line.end(), u'\t'), 3);
        withoutPort += line.find(u"\t\t") == line.find(u'\t') ? 1 : 0;
    }
    EXPECT_GT(withoutPort, 5);
}

TEST_F(TraceExportTest, ThePositionRunsAheadAndEndsBelowOne) {
    open(150);
    TraceExport output{rows, target};
    ASSERT_TRUE(output.writeBlock());
    EXPECT_EQ(output.position(), 101);
    ASSERT_TRUE(output.writeBlock());
    EXPECT_LT(output.position(), 1);
    EXPECT_FALSE(output.writeBlock());
}

TEST_F(TraceExportTest, RowsSortedInMeanwhileAreNotMissed) {
    open(3000, ado::adAsyncFetch);
    rows.setSort(u"TraceNumber DESC");  // of the rows there are; the fetch's end is not yet noticed
    TraceExport output{rows, target};
    ASSERT_TRUE(output.writeBlock());
    ASSERT_TRUE(pump->runUntil([this] { return rows.state() == ado::adStateOpen; },
                               std::chrono::seconds{60}));
    while (output.writeBlock()) continue;
    const auto all = lines();
    ASSERT_EQ(all.size(), 1u + 3000 + 30);
    EXPECT_TRUE(all[1].starts_with(u"3999\t"));
    EXPECT_LE(target.restarts, 1);
}

TEST_F(TraceExportTest, RowsAreSortedAfterItsEnd) {
    open(50);
    writeAll();
    EXPECT_FALSE(rows.orderChanged) << "there is no export to tell of it";
    EXPECT_NO_THROW(rows.setSort(u"TraceNumber DESC"));
}

TEST_F(TraceExportTest, ADatabaseThatIsClosedMeanwhileEndsIt) {
    open(300);
    TraceExport output{rows, target};
    ASSERT_TRUE(output.writeBlock());
    connection.close();
    EXPECT_THROW(output.writeBlock(), ado::Error);
}

}  // namespace

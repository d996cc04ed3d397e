// The statements that the viewer sends, on made-up databases and on the sample files.
#include "engine/sql/values/comparison.h"
#include "tests/engine/sql/people.h"
#include "tests/support/expected.h"
#include "tests/support/trace_database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

using namespace sqltest;

const std::u16string kNineColumns =
    u"SELECT tblTraces.Date, tblTraces.Process, tblTraces.Source, tblTraces.TraceNumber, "
    u"tblTraces.Component, tblTraces.TraceLevel, tblTraces.Port, tblTraces.CallId, tblTraces.Trace"
    u"  FROM tblTraces ";
const std::u16string kSevenColumns =
    u"SELECT tblTraces.Date, tblTraces.Process, tblTraces.Source, tblTraces.TraceNumber, "
    u"tblTraces.Component, tblTraces.TraceLevel, tblTraces.Trace  FROM tblTraces ";
const std::u16string kUniqueFilters =
    u"SELECT Process, Source, Component, TraceLevel, qrxIndex From tblUniqueFilters ORDER BY "
    u"Component, TraceLevel";
const std::u16string kCombinations =
    u"SELECT tblTraces.Component, tblTraces.Process, tblTraces.TraceLevel, tblTraces.Source, "
    u"tblTraces.qrxIndex From tblTraces GROUP BY tblTraces.Component, tblTraces.Process, "
    u"tblTraces.TraceLevel, tblTraces.Source, tblTraces.qrxIndex";

constexpr std::uint64_t kRows = 700;

std::shared_ptr<jet::Database> traces(fixture::TraceFormat format) {
    return jet::Database::open(std::make_unique<jet::MemoryStorage>(
        fixture::traceDatabase({.rows = kRows, .seed = 3}, format)));
}

TEST(TraceStatements, ReadAllTraces) {
    const auto database = traces(fixture::TraceFormat::Newer);
    const auto query = sql::Query::prepare(database, kNineColumns);
    ASSERT_EQ(query->columns().size(), 9u);
    EXPECT_EQ(query->columns()[0].name, u"Date");
    EXPECT_NE(query->scannedTable(), nullptr);
    EXPECT_EQ(query->rowFilter(), nullptr);

    fixture::TraceGenerator generator{{.rows = kRows, .seed = 3}};
    fixture::Trace trace;
    const auto cursor = query->execute();
    while (generator.next(trace)) {
        ASSERT_TRUE(cursor->next());
        const auto& row = cursor->row();
        EXPECT_EQ(row[0], jet::Value{trace.date});
        EXPECT_EQ(row[1], jet::Value{generator.origins()[trace.origin].process});
        EXPECT_EQ(row[4], jet::Value{generator.origins()[trace.origin].component});
        EXPECT_EQ(row[8], jet::Value{trace.text});
    }
    EXPECT_FALSE(cursor->next());
}

TEST(TraceStatements, AreNarrowedByTheirKeys) {
    const auto database = traces(fixture::TraceFormat::Newer);
    const auto unique = rows(database, kUniqueFilters);
    ASSERT_GT(unique.size(), 20u);
    std::u16string clause;
    std::set<std::string> wanted;
    for (std::size_t i = 0; i < unique.size(); i += 2) {
        const std::string key = unique[i].substr(unique[i].rfind('|') + 1);
        wanted.insert(key);
        if (!clause.empty()) clause += u" OR ";
        clause += u" ( qrxIndex = '" + jet::toUtf16(key) + u"' ) ";
    }
    const auto keys = rows(database, u"SELECT qrxIndex FROM tblTraces");
    const auto expected = static_cast<std::size_t>(std::count_if(
        keys.begin(), keys.end(), [&](const auto& key) { return wanted.contains(key); }));
    EXPECT_GT(expected, 0u);
    EXPECT_LT(expected, kRows);
    EXPECT_EQ(rows(database, kNineColumns + u"WHERE " + clause).size(), expected);
}

TEST(TraceStatements, KnowAllAndNone) {
    const auto database = traces(fixture::TraceFormat::Newer);
    const auto all = sql::Query::prepare(database, kNineColumns + u"WHERE -1");
    EXPECT_FALSE(all->alwaysEmpty());
    EXPECT_EQ(all->rowFilter(), nullptr);
    EXPECT_NE(all->scannedTable(), nullptr);
    const auto none = sql::Query::prepare(database, kNineColumns + u"WHERE -1 = 1");
    EXPECT_TRUE(none->alwaysEmpty());
    EXPECT_NE(none->scannedTable(), nullptr);
}

TEST(TraceStatements, KeysWithAnApostropheBreakTheClause) {
    const auto database = traces(fixture::TraceFormat::Newer);
    EXPECT_EQ(faultOf(database, kNineColumns + u"WHERE  ( qrxIndex = 'It's' ) "),
              sql::Fault::Syntax);
}

TEST(TraceStatements, TellOlderFormatsByTheirFailures) {
    const auto older = traces(fixture::TraceFormat::Older);
    EXPECT_EQ(faultOf(older, kUniqueFilters), sql::Fault::NoSuchTable);
    EXPECT_EQ(faultOf(older, kCombinations), sql::Fault::UnknownColumn);
    EXPECT_EQ(rows(older, kNineColumns).size(), kRows);
    const auto oldest = traces(fixture::TraceFormat::Oldest);
    EXPECT_EQ(faultOf(oldest, kNineColumns), sql::Fault::UnknownColumn);
    EXPECT_EQ(rows(oldest, kSevenColumns).size(), kRows);
}

TEST(TraceStatements, ReadMacroTraces) {
    const auto database = traces(fixture::TraceFormat::Newer);
    EXPECT_EQ(rows(database, u"SELECT * FROM tblMacroTraces").size(),
              fixture::macroTraces().size());
}

TEST(TraceStatements, FindTheCombinations) {
    const auto database = traces(fixture::TraceFormat::Newer);
    auto combinations = rows(database, kCombinations);
    auto listed = rows(database,
                       u"SELECT Component, Process, TraceLevel, Source, qrxIndex FROM "
                       u"tblUniqueFilters");
    std::sort(combinations.begin(), combinations.end());
    std::sort(listed.begin(), listed.end());
    EXPECT_EQ(combinations, listed);
}

TEST(TraceStatements, OrderUniqueFilters) {
    const auto database = traces(fixture::TraceFormat::Newer);
    const auto query = sql::Query::prepare(database, kUniqueFilters);
    std::optional<std::vector<jet::Value>> before;
    for (const auto cursor = query->execute(); cursor->next();) {
        const auto& row = cursor->row();
        if (before) {
            const auto component = sql::compareValues((*before)[2], row[2]);
            EXPECT_TRUE(component <= 0);
            if (component == 0) {
                EXPECT_TRUE(sql::compareValues((*before)[3], row[3]) <= 0);
            }
        }
        before = row;
    }
    EXPECT_TRUE(before);
}

/// The combinations of the sample files: grouping by four columns in the collation's order, with
/// the spelling that comes first in storage order.
TEST(TraceStatements, GroupTheSampleFiles) {
    const auto folder = fixture::testDataFolder();
    if (!folder) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator{*folder}) {
        if (entry.path().extension() != ".mdb") continue;
        ++files;
        auto expectedPath = entry.path();
        expectedPath.replace_extension(".unique.tsv");
        const auto expected = fixture::readPlainTable(expectedPath);
        const auto found =
            rows(jet::Database::open(entry.path()),
                 u"SELECT Component, Process, TraceLevel, Source, "
                 u"[Component] & '_' & [Process] & '_' & [TraceLevel] & '_' & [Source] AS qrxIndex "
                 u"FROM tblTraces GROUP BY Component, Process, TraceLevel, Source "
                 u"ORDER BY Component, TraceLevel, Process, Source");
        std::vector<std::string> plain;
        for (const auto& row : expected.rows) {
            std::string line;
            for (std::size_t i = 0; i < row.size(); ++i) {
                line += (i == 0 ? "" : "|") + row[i].value_or("NULL");
            }
            plain.push_back(line);
        }
        EXPECT_EQ(found, plain) << entry.path();
    }
    EXPECT_GT(files, 0);
}

TEST(TraceStatements, ReadTheSampleFiles) {
    const auto folder = fixture::testDataFolder();
    if (!folder) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    for (const auto& entry : std::filesystem::directory_iterator{*folder}) {
        if (entry.path().extension() != ".mdb") continue;
        auto expectedPath = entry.path();
        expectedPath.replace_extension(".traces.tsv");
        const auto expected = fixture::readPlainTable(expectedPath);
        const auto query =
            sql::Query::prepare(jet::Database::open(entry.path()), u"SELECT * FROM tblTraces");
        std::vector<std::string> names;
        for (const auto& column : query->columns()) names.push_back(jet::toUtf8(column.name));
        EXPECT_EQ(names, expected.columns);
        const auto cursor = query->execute();
        for (const auto& row : expected.rows) {
            ASSERT_TRUE(cursor->next()) << entry.path();
            for (std::size_t i = 0; i < row.size(); ++i) {
                const jet::Value& value = cursor->row()[i];
                ASSERT_EQ(jet::isNull(value), !row[i].has_value());
                if (const auto* text = std::get_if<std::u16string>(&value)) {
                    ASSERT_EQ(jet::toUtf8(*text), *row[i]) << entry.path();
                }
            }
        }
        EXPECT_FALSE(cursor->next());
        EXPECT_EQ(cursor->losses().rows, 0u);
    }
}

}  // namespace

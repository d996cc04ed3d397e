#include "src/search/trace_search.h"

#include "src/log/procedure.h"
#include "tests/src/log/reporting_log.h"
#include "tests/support/expected.h"
#include "tests/support/fixture_builder.h"

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::u16string>;

class TraceSearchTest : public testing::Test {
protected:
    void open(const Texts& texts) {
        fixture::FixtureBuilder builder;
        auto& table = builder.addTable({.name = u"Lines",
                                        .columns = {fixture::column(u"Id", jet::ColumnType::Long),
                                                    fixture::memoColumn(u"Trace")}});
        std::int32_t id = 0;
        for (const std::u16string& text : texts) table.insert({++id, text});
        connection.open(jet::Database::open(folder.write("lines.mdb", builder.bytes())));
        traces.open(u"SELECT * FROM Lines", connection);
    }

    /// The record that is current afterwards.
    int search(const TraceSearch& wanted) {
        notices.clear();
        searchTraces(u"[here]search", traces, wanted,
                     [this](const std::u16string& text) { notices.push_back(text); });
        return traces.absolutePosition();
    }

    fixture::TemporaryFolder folder;
    ado::Connection connection;
    ado::Recordset traces;
    Texts notices;
    Texts reports;
    ReportsTo reporting{[this](std::u16string_view label, const std::u16string& message) {
        EXPECT_EQ(label, u"[here]search");
        reports.push_back(message);
    }};
};

TEST_F(TraceSearchTest, TellsThatItSearchesAndThenNothing) {
    open({u"start", u"an error", u"end"});
    EXPECT_EQ(search({.text = u"error"}), 2);
    EXPECT_EQ(notices, (Texts{u"Searching for error...", u""}));
}

TEST_F(TraceSearchTest, IgnoresTheCaseOfLetters) {
    open({u"start", u"an error"});
    EXPECT_EQ(search({.text = u"ERROR"}), 2);
}

TEST_F(TraceSearchTest, TheCurrentRecordCountsUnlessSteppedOver) {
    open({u"abc", u"x", u"abc"});
    EXPECT_EQ(search({.text = u"abc"}), 1);
    EXPECT_EQ(search({.text = u"abc", .stepFirst = true}), 3);
    EXPECT_EQ(search({.text = u"abc", .backward = true}), 3);
    EXPECT_EQ(search({.text = u"abc", .backward = true, .stepFirst = true}), 1);
}

TEST_F(TraceSearchTest, ThereIsNoWrapAround) {
    open({u"abc", u"x", u"y"});
    traces.setAbsolutePosition(2);
    EXPECT_EQ(search({.text = u"abc"}), 2);
    EXPECT_EQ(notices.back(), u"abc not found.");
    EXPECT_EQ(search({.text = u"y", .stepFirst = true}), 3);
    EXPECT_EQ(search({.text = u"y", .stepFirst = true}), 3);
    EXPECT_EQ(notices.back(), u"y not found.");
    EXPECT_TRUE(reports.empty()) << "the end of the records is no error";
}

TEST_F(TraceSearchTest, UpFromTheFirstRecordFindsNothing) {
    open({u"abc", u"abc"});
    EXPECT_EQ(search({.text = u"abc", .backward = true, .stepFirst = true}), 1);
    EXPECT_EQ(notices.back(), u"abc not found.");
    EXPECT_TRUE(reports.empty());
}

TEST_F(TraceSearchTest, FollowsTheSortOfTheRecords) {
    open({u"first hit", u"x", u"y", u"second hit", u"z"});
    traces.setSort(u"Id DESC");
    EXPECT_EQ(search({.text = u"hit", .stepFirst = true}), 2);
    EXPECT_EQ(traces.fields()[u"Trace"].text(), u"second hit");
    EXPECT_EQ(search({.text = u"hit", .stepFirst = true}), 5);
    EXPECT_EQ(traces.fields()[u"Trace"].text(), u"first hit");
    EXPECT_EQ(search({.text = u"hit", .backward = true, .stepFirst = true}), 2);
    EXPECT_EQ(traces.sort(), u"Id DESC");
}

// As after every failed step the next one follows: the record where the search began becomes current.
TEST_F(TraceSearchTest, AnApostropheIsReportedAndFindsNothing) {
    open({u"it's", u"x", u"it's"});
    EXPECT_EQ(search({.text = u"it's"}), 1);
    EXPECT_EQ(notices.back(), u"");
    ASSERT_EQ(reports.size(), 1u);
    reports.clear();
    EXPECT_EQ(search({.text = u"it's", .stepFirst = true}), 2);
    EXPECT_EQ(notices.back(), u"");
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_TRUE(reports[0].starts_with(u"Err.Number = 3001 Err.Description = "));
    EXPECT_EQ(search({.text = u"it?s", .stepFirst = true}), 3) << "and the next search works";
    EXPECT_EQ(search({.text = u"it''s", .backward = true, .stepFirst = true}), 1) << "two are one";
    EXPECT_EQ(reports.size(), 1u);
}

TEST_F(TraceSearchTest, NothingCanBeAddedToTheCriterion) {
    open({u"x", u"secret", u"y"});
    for (const char16_t* text :
         {u"none*' Or Trace Like '*secret", u"none*' Or Id > 0 Or Trace Like '"}) {
        EXPECT_EQ(search({.text = text}), 1);
        EXPECT_EQ(notices.back(), u"");
    }
    EXPECT_EQ(reports.size(), 2u);
}

TEST_F(TraceSearchTest, OnlyTheSignsOfPatternsStandForOthers) {
    open({u"x", u"100% a_b {1} (2) \\.+ [z]", u"n 5 *?#"});
    for (const char16_t* text : {u"%", u"a_b", u"{1}", u"(2)", u"\\.+", u"]", u"[[]z]"}) {
        EXPECT_EQ(search({.text = text}), 2);
        EXPECT_EQ(notices.back(), u"");
        traces.moveFirst();
    }
    for (const char16_t* text : {u"a%b", u"a_b_", u"0_", u"+."}) {
        EXPECT_EQ(search({.text = text}), 1);
        EXPECT_EQ(notices.back(), std::u16string{text} + u" not found.");
    }
    for (const char16_t* text : {u"n #", u"n ? [*]", u"[*][?][#]", u"n*#", u"[!a-z ] [*]"}) {
        EXPECT_EQ(search({.text = text}), 3);
        traces.moveFirst();
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(TraceSearchTest, APatternThatIsNoneIsReportedAndFindsNothing) {
    open({u"[a", u"x", u"[a"});
    for (const char16_t* text : {u"[", u"[a", u"[z-a]"}) {
        reports.clear();
        traces.moveFirst();
        EXPECT_EQ(search({.text = text}), 1);
        EXPECT_EQ(search({.text = text, .stepFirst = true}), 2);
        EXPECT_EQ(notices.back(), u"");
        ASSERT_EQ(reports.size(), 2u);
        EXPECT_TRUE(reports[0].starts_with(u"Err.Number = 3001 "));
    }
}

TEST_F(TraceSearchTest, NothingIsFoundAmongNoRecords) {
    open({});
    for (const bool backward : {false, true}) {
        search({.text = u"abc", .backward = backward, .stepFirst = true});
        EXPECT_EQ(notices.back(), u"abc not found.");
    }
    EXPECT_TRUE(reports.empty()) << "there is no record to step over";
}

TEST_F(TraceSearchTest, AClosedRecordsetIsReported) {
    notices.clear();
    searchTraces(u"[here]search", traces, {.text = u"abc"},
                 [this](const std::u16string& text) { notices.push_back(text); });
    EXPECT_TRUE(notices.empty());
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_TRUE(reports[0].starts_with(u"Err.Number = 3704 "));
}

}  // namespace

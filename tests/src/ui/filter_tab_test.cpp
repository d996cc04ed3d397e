#include "src/db/trace_filter.h"
#include "src/text/text.h"
#include "tests/src/log/fake_log_system.h"
#include "tests/src/ui/main_window.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <iostream>

namespace {

class FilterTabTest : public MainWindowTest {
protected:
    void SetUp() override {
        open(makeFile("a.mdb", 3000));
        ASSERT_TRUE(waitLoaded());
        form.sstabMain.setTab(1);
    }

    UniqueTraces& traces() { return modDatabase::uniqueTraces(); }

    /// As the user's tick does.
    void tick(forms::TreeNode& node, bool checked) {
        node.setChecked(checked);
        form.tvUniqueTraces.onNodeCheck(node);
    }

    forms::TreeNode& item(std::size_t row) {
        return form.tvUniqueTraces.node(toWide(itemKey(row)));
    }

    /// A component with several unique traces.
    forms::TreeNode& largeComponent() {
        forms::TreeNode* node = form.tvUniqueTraces.firstRoot();
        while (node != nullptr && node->childCount() < 2) node = node->next();
        EXPECT_NE(node, nullptr);
        return *node;
    }

    std::ptrdiff_t tickedTraces() {
        return std::count_if(traces().begin(), traces().end(),
                             [](const UniqueTrace& trace) { return trace.selected; });
    }

    bool apply() {
        form.cmdApplyFilter.onClick();
        return waitLoaded();
    }
};

TEST_F(FilterTabTest, ShowsEveryUniqueTraceUnderItsComponent) {
    int components = 0;
    int items = 0;
    for (auto* node = form.tvUniqueTraces.firstRoot(); node != nullptr; node = node->next()) {
        ++components;
        EXPECT_TRUE(node->checked());
        EXPECT_TRUE(node->text().ends_with(L" Component"));
        EXPECT_EQ(L"c-" + node->text(), node->key() + L" Component");
        items += node->childCount();
    }
    EXPECT_GT(components, 5);
    EXPECT_EQ(static_cast<std::size_t>(items), traces().size());
    for (std::size_t row = 0; row < traces().size(); ++row) {
        EXPECT_EQ(item(row).text(), toWide(itemText(traces()[row])));
        EXPECT_EQ(item(row).tag(), toWide(plainText(traces()[row].qrxIndex)));
        EXPECT_EQ(item(row).parent()->key(), toWide(componentKey(traces()[row])));
    }
}

TEST_F(FilterTabTest, ClearAllThenApplyEmptiesTheGrid) {
    form.cmdClearAllUniqueTraces.onClick();
    EXPECT_EQ(tickedTraces(), 0);
    EXPECT_FALSE(item(0).checked());
    EXPECT_EQ(form.tdbgridData.approxCount(), 3000) << "the grid waits for Apply Filter";
    ASSERT_TRUE(apply());
    EXPECT_EQ(rows().recordCount(), 0);
    EXPECT_EQ(form.tdbgridData.approxCount(), 0);
    EXPECT_FALSE(item(0).checked()) << "ticks outlive the filter";
}

TEST_F(FilterTabTest, SelectAllThenApplyShowsAllRecords) {
    form.cmdClearAllUniqueTraces.onClick();
    form.cmdSelectAllUniqueTraces.onClick();
    ASSERT_TRUE(apply());
    EXPECT_EQ(rows().recordCount(), 3000);
    EXPECT_TRUE(rows().source().ends_with(u"FROM tblTraces WHERE -1"));
}

TEST_F(FilterTabTest, OneTickedTraceShowsItsRecordsOnly) {
    form.cmdClearAllUniqueTraces.onClick();
    tick(item(3), true);
    ASSERT_TRUE(apply());
    ASSERT_GT(rows().recordCount(), 0);
    const std::u16string clause =
        u"WHERE  ( qrxIndex = '" + plainText(traces()[3].qrxIndex) + u"' ) ";
    EXPECT_TRUE(rows().source().ends_with(clause));
    for (std::uint32_t row = 0; row < rows().rowCount(); ++row) {
        ASSERT_EQ(rows().valueAt(row, 4), traces()[3].component);
        ASSERT_EQ(rows().valueAt(row, 1), traces()[3].process);
    }
    EXPECT_EQ(rows().sort(), u"Date ASC");
}

TEST_F(FilterTabTest, UntickingAChildUnticksItsComponent) {
    forms::TreeNode& component = largeComponent();
    tick(*component.child(), false);
    EXPECT_FALSE(component.checked());
    tick(*component.child()->next(), false);
    tick(*component.child(), true);
    EXPECT_FALSE(component.checked()) << "a sibling is still unticked";
    tick(*component.child()->next(), true);
    EXPECT_TRUE(component.checked());
    EXPECT_EQ(static_cast<std::size_t>(tickedTraces()), traces().size());
}

TEST_F(FilterTabTest, AComponentTicksAllItsTraces) {
    forms::TreeNode& component = largeComponent();
    tick(component, false);
    for (auto* child = component.child(); child != nullptr; child = child->next()) {
        EXPECT_FALSE(child->checked());
    }
    EXPECT_EQ(static_cast<std::size_t>(tickedTraces()),
              traces().size() - static_cast<std::size_t>(component.childCount()));
    tick(component, true);
    EXPECT_EQ(static_cast<std::size_t>(tickedTraces()), traces().size());
}

TEST_F(FilterTabTest, ExpandAndCollapseAll) {
    form.cmdExpandAll.onClick();
    EXPECT_TRUE(form.tvUniqueTraces.firstRoot()->expanded());
    form.cmdCollapseAll.onClick();
    EXPECT_FALSE(form.tvUniqueTraces.firstRoot()->expanded());
}

// The tree is made anew each time; for the user it stays the same.
TEST_F(FilterTabTest, TheTreeStaysAsTheUserHasIt) {
    form.cmdExpandAll.onClick();
    forms::TreeNode& second = *form.tvUniqueTraces.firstRoot()->next();
    const std::wstring folded = second.key();
    second.setExpanded(false);
    const std::wstring chosen = item(traces().size() / 2).key();
    form.tvUniqueTraces.setSelected(&form.tvUniqueTraces.node(chosen));
    const auto top = [this] { return form.tvUniqueTraces.view().top; };
    const std::wstring topBefore = top();
    ASSERT_NE(topBefore, form.tvUniqueTraces.firstRoot()->key()) << "not scrolled";
    const auto expectAsBefore = [&] {
        EXPECT_TRUE(form.tvUniqueTraces.firstRoot()->expanded());
        EXPECT_FALSE(form.tvUniqueTraces.node(folded).expanded());
        ASSERT_NE(form.tvUniqueTraces.selected(), nullptr);
        EXPECT_EQ(form.tvUniqueTraces.selected()->key(), chosen);
        EXPECT_EQ(top(), topBefore);
    };
    ASSERT_TRUE(apply());
    expectAsBefore();
    form.cmdClearAllUniqueTraces.onClick();
    expectAsBefore();
    form.sstabMain.setTab(0);
    ASSERT_TRUE(apply());
    form.sstabMain.setTab(1);
    expectAsBefore();

    dialogs.answer = makeFile("b.mdb", 3000).wstring();
    form.mnuOpenTraceDatabase.onClick();
    ASSERT_TRUE(waitLoaded());
    EXPECT_FALSE(form.tvUniqueTraces.firstRoot()->expanded()) << "another database";
}

TEST_F(FilterTabTest, AKeyWithAnApostropheDoesNoHarm) {
    traces()[0].qrxIndex = std::u16string{u"it's"};
    form.cmdClearAllUniqueTraces.onClick();
    tick(item(0), true);
    form.cmdApplyFilter.onClick();
    forms::doEvents();
    EXPECT_FALSE(reports.empty());
    EXPECT_EQ(panel(1), L"");
    EXPECT_EQ(form.tdbgridData.approxCount(), 0);
    form.cmdSelectAllUniqueTraces.onClick();
    ASSERT_TRUE(apply());
    EXPECT_EQ(form.tdbgridData.approxCount(), 3000);
}

TEST_F(FilterTabTest, TheClauseStandsInTheLog) {
    SharedFakeLog log;
    const std::string label = "[frmMain]constructFilters";
    form.cmdApplyFilter.onClick();
    EXPECT_THAT(log.messages(label), testing::ElementsAre("WHERE -1"));
    form.cmdClearAllUniqueTraces.onClick();
    form.cmdApplyFilter.onClick();
    EXPECT_THAT(log.messages(label), testing::ElementsAre("WHERE -1", "WHERE "));
    traces()[1].qrxIndex = std::u16string{u"A"};
    traces()[4].qrxIndex = std::u16string{u"B"};
    tick(item(1), true);
    tick(item(4), true);
    form.cmdApplyFilter.onClick();
    const std::string all = log.fake.text(theLog().strLogFile());
    const std::string clause = "WHERE  ( qrxIndex = 'A' )  OR  ( qrxIndex = 'B' ) \r\n";
    EXPECT_THAT(all, testing::HasSubstr("VerInfo:(" + std::string(45 - label.size(), ' ') + label +
                                        ") " + clause));
    ASSERT_TRUE(waitLoaded());
}

/// Prints how long it takes; what it must be is measured elsewhere.
template <typename Action>
void timed(const char* what, Action action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    forms::doEvents();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    std::cout << "[ measured ] " << what << ": " << time.count() << " ms\n";
}

TEST_F(FilterTabTest, TenThousandTracesUnderFiveHundredComponents) {
    constexpr int kComponents = 500;
    constexpr int kEach = 20;
    traces().clear();
    for (int i = 0; i < kComponents * kEach; ++i) {
        const std::u16string component = u"Component " + toText(std::int64_t{i / kEach});
        const auto level = static_cast<std::int16_t>(i % kEach);
        const std::u16string key = component + u"_process_" + toText(std::int64_t{level});
        traces().push_back({true, component, level, std::u16string{u"process"},
                            std::u16string{u"CSource::Method"}, key});
    }
    timed("grid and tree made anew", [&] { form.reloadDBGrid(rows()); });
    EXPECT_EQ(form.tvUniqueTraces.nodeCount(), kComponents * (kEach + 1));
    timed("tree made anew without ticks", [&] { form.cmdClearAllUniqueTraces.onClick(); });
    EXPECT_EQ(tickedTraces(), 0);
    timed("tree made anew with ticks", [&] { form.cmdSelectAllUniqueTraces.onClick(); });
    EXPECT_EQ(tickedTraces(), kComponents * kEach);
    EXPECT_TRUE(form.tvUniqueTraces.firstRoot()->checked());
    timed("expand all", [&] { form.cmdExpandAll.onClick(); });
    EXPECT_TRUE(form.tvUniqueTraces.firstRoot()->expanded());
    timed("open tree made anew", [&] { form.cmdSelectAllUniqueTraces.onClick(); });
    EXPECT_EQ(form.tvUniqueTraces.view().open.size(), static_cast<std::size_t>(kComponents));
    timed("collapse all", [&] { form.cmdCollapseAll.onClick(); });
    EXPECT_FALSE(form.tvUniqueTraces.firstRoot()->expanded());
    form.cmdClearAllUniqueTraces.onClick();
    timed("tick a component", [&] { tick(*form.tvUniqueTraces.firstRoot(), true); });
    EXPECT_EQ(tickedTraces(), kEach);
}

TEST_F(FilterTabTest, AnotherDatabaseStartsWithEverythingTicked) {
    form.cmdClearAllUniqueTraces.onClick();
    open(makeFile("b.mdb", 200));
    ASSERT_TRUE(waitLoaded());
    EXPECT_EQ(static_cast<std::size_t>(tickedTraces()), traces().size());
    EXPECT_TRUE(form.tvUniqueTraces.firstRoot()->checked());
}

TEST_F(FilterTabTest, ButtonsStandUnderTheTree) {
    EXPECT_NEAR(form.cmdExpandAll.left().value, 180, 1);
    EXPECT_NEAR(form.cmdCollapseAll.left().value, 540, 1);
    EXPECT_NEAR(form.cmdExpandAll.width().value, 315, 1);
    const double below = form.tvUniqueTraces.top().value + form.tvUniqueTraces.height().value + 60;
    EXPECT_NEAR(form.cmdExpandAll.top().value, below, 1);
    EXPECT_NEAR(form.cmdClearAllUniqueTraces.top().value, below, 1);
    EXPECT_NEAR(form.tvUniqueTraces.width().value, form.sstabMain.width().value - 240, 15);
}

}  // namespace

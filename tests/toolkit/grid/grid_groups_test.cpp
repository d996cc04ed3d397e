// Grouping by dragging headings, folding, and what else knows of groups.
#include "tests/toolkit/grid/grid_window.h"
#include "tests/toolkit/grid/held_key.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <stdexcept>
#include <utility>

namespace grid {
namespace {

class GridGroups : public testing::Test {
protected:
    explicit GridGroups(std::int64_t rows = 1000) : window(rows) {
        window.grid.setGroupByCaption(L"Drag a heading here");
        window.pump();
        window.grid.onRowColChange = [this] { ++moves; };
    }

    void dragHeading(int column, Point to) { dragFrom(window.middleOfHeading(column), to); }

    void dragFrom(Point from, Point to) {
        window.press(from);
        for (int part = 1; part <= 4; ++part) {
            window.move({from.x + (to.x - from.x) * part / 4, from.y + (to.y - from.y) * part / 4},
                        true);
        }
        window.release(to);
    }

    Point middleOfChip(int level) const {
        const Rect chip = window.grid.geometry().groupArea().chip(level);
        return {(chip.left + chip.right) / 2, (chip.top + chip.bottom) / 2};
    }

    Point middleOfView(RowIndex view) const {
        const Rect row = window.grid.geometry().rowRect(view);
        return {row.left + 200, (row.top + row.bottom) / 2};
    }

    void groupByComponent() { window.grid.setGroupColumns({{TraceSource::kComponent, false}}); }

    RowIndex focusedView() const { return window.grid.selection().current().row; }

    static constexpr Point kGroupArea{400, 12};

    GridWindow window;
    int moves = 0;
};

TEST_F(GridGroups, AHeadingDraggedToTheStripGroupsTheRows) {
    int clicks = 0;
    window.grid.onHeadClick = [&](int) { ++clicks; };
    dragHeading(TraceSource::kComponent, kGroupArea);
    ASSERT_EQ(window.grid.groupColumns(),
              (std::vector<GroupColumn>{{TraceSource::kComponent, false}}));
    EXPECT_EQ(window.grid.grouping().viewCount(), 4) << "Dialer, Queue, Session, Store";
    EXPECT_EQ(window.grid.groupText(0), L"Component: Dialer  (250)");
    EXPECT_EQ(window.grid.groupText(3), L"Component: Store  (250)");
    EXPECT_FALSE(window.grid.geometry().columns().visible(TraceSource::kComponent));
    EXPECT_EQ(clicks, 0);
    EXPECT_EQ(window.grid.row(), 0) << "the source is where it was";
    EXPECT_EQ(GetCapture(), nullptr);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridGroups, SeveralColumnsNestInTheOrderOfTheirChips) {
    dragHeading(TraceSource::kComponent, kGroupArea);
    dragHeading(TraceSource::kLevel, kGroupArea);
    EXPECT_EQ(window.grid.grouping().levelCount(), 2);
    EXPECT_EQ(window.grid.grouping().groupCount(), 4 + 4 * 5);
    dragHeading(TraceSource::kProcess, {1, 12});
    ASSERT_EQ(window.grid.groupColumns().size(), 3u);
    EXPECT_EQ(window.grid.groupColumns()[0].column, TraceSource::kProcess);
    EXPECT_EQ(window.grid.groupText(0), L"Process: CallServer  (334)");
    // A chip dragged along the strip changes its level.
    dragFrom(middleOfChip(0), {790, 12});
    EXPECT_EQ(window.grid.groupColumns()[0].column, TraceSource::kComponent);
    EXPECT_EQ(window.grid.groupColumns()[2].column, TraceSource::kProcess);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridGroups, AChipDraggedOutUngroups) {
    groupByComponent();
    dragFrom(middleOfChip(0), window.middleOfHeading(TraceSource::kProcess));
    EXPECT_TRUE(window.grid.groupColumns().empty());
    EXPECT_EQ(window.grid.geometry().rowCount(), 1000);
    EXPECT_TRUE(window.grid.geometry().columns().visible(TraceSource::kComponent));
    groupByComponent();
    dragFrom(middleOfChip(0), {300, 400});
    EXPECT_TRUE(window.grid.groupColumns().empty()) << "let go over the rows";
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridGroups, EscapeLeavesEverythingAsItWas) {
    const Point from = window.middleOfHeading(TraceSource::kComponent);
    window.press(from);
    window.move({from.x, 20}, true);
    window.move(kGroupArea, true);
    window.key(VK_ESCAPE);
    window.release(kGroupArea);
    EXPECT_TRUE(window.grid.groupColumns().empty());
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridGroups, WithoutACaptionThereIsNoStrip) {
    window.grid.setGroupByCaption(L"");
    EXPECT_TRUE(window.grid.geometry().groupArea().strip().empty());
    dragHeading(TraceSource::kComponent, {400, -30});
    EXPECT_TRUE(window.grid.groupColumns().empty());
}

TEST_F(GridGroups, AColumnMayRefuseToBeGroupedBy) {
    window.grid.column(TraceSource::kTrace).setAllowGrouping(false);
    dragHeading(TraceSource::kTrace, kGroupArea);
    EXPECT_TRUE(window.grid.groupColumns().empty());
    EXPECT_EQ(window.grid.geometry().columns().lastVisible(), TraceSource::kTrace);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridGroups, AClickOnAChipReversesItsGroups) {
    groupByComponent();
    window.click(middleOfChip(0));
    EXPECT_EQ(window.grid.groupText(0), L"Component: Store  (250)");
    window.click(middleOfChip(0));
    EXPECT_EQ(window.grid.groupText(0), L"Component: Dialer  (250)");
}

TEST_F(GridGroups, GroupsFoldByMouse) {
    groupByComponent();
    const Rect row = window.grid.geometry().rowRect(1);
    window.click({row.left + 8, (row.top + row.bottom) / 2});
    EXPECT_TRUE(window.grid.grouping().group(1).unfolded);
    EXPECT_EQ(window.grid.geometry().rowCount(), 254);
    EXPECT_EQ(window.grid.grouping().at(2).row, 2) << "the first row of Queue";
    EXPECT_TRUE(window.looksAsPaintedAnew());
    window.doubleClick(middleOfView(1));
    EXPECT_FALSE(window.grid.grouping().group(1).unfolded);
    window.click(middleOfView(3));
    EXPECT_FALSE(window.grid.grouping().group(3).unfolded) << "a click only goes there";
    EXPECT_EQ(focusedView(), 3);
    EXPECT_EQ(window.grid.row(), 0);
}

TEST_F(GridGroups, ADoubleClickOnTheGlyphUnfoldsOnce) {
    groupByComponent();
    const Rect row = window.grid.geometry().rowRect(1);
    window.doubleClick({row.left + 8, (row.top + row.bottom) / 2});
    EXPECT_TRUE(window.grid.grouping().group(1).unfolded);
}

TEST_F(GridGroups, GroupsFoldByKeys) {
    groupByComponent();
    window.key(VK_HOME);
    {
        HeldKey ctrl(VK_CONTROL);
        window.key(VK_HOME);
    }
    EXPECT_EQ(focusedView(), 0);
    window.key(VK_RIGHT);
    EXPECT_EQ(window.grid.geometry().rowCount(), 254);
    window.key(VK_RIGHT);
    EXPECT_EQ(focusedView(), 1);
    EXPECT_EQ(window.grid.row(), 1) << "the first row of Dialer";
    window.key(VK_SUBTRACT);
    EXPECT_EQ(window.grid.geometry().rowCount(), 4);
    EXPECT_EQ(focusedView(), 0);
    window.key(VK_SPACE);
    EXPECT_EQ(window.grid.geometry().rowCount(), 254);
    window.key(VK_LEFT);
    EXPECT_EQ(window.grid.geometry().rowCount(), 4);
    window.key(VK_MULTIPLY);
    EXPECT_EQ(window.grid.geometry().rowCount(), 1004);
    window.key(VK_DIVIDE);
    EXPECT_EQ(window.grid.geometry().rowCount(), 4);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

// On which keys plus, minus, star and slash are depends on the keyboard.
TEST_F(GridGroups, GroupsFoldByTypedCharacters) {
    groupByComponent();
    const auto typed = [this](wchar_t character) {
        EXPECT_TRUE(SendMessageW(window.grid.hwnd(), WM_GETDLGCODE, 0, 0) & DLGC_WANTCHARS);
        SendMessageW(window.grid.hwnd(), WM_CHAR, character, 0);
        return window.grid.geometry().rowCount();
    };
    EXPECT_EQ(typed(L'+'), 254);
    EXPECT_EQ(typed(L'-'), 4);
    EXPECT_EQ(typed(L'*'), 1004);
    EXPECT_EQ(typed(L'/'), 4);
    EXPECT_EQ(typed(L'a'), 4);
    {
        HeldKey shift(VK_SHIFT);
        EXPECT_EQ(typed(L'*'), 1004);
    }
    // A key that was understood types its character as well.
    for (const auto& [key, character] :
         {std::pair{VK_SUBTRACT, L'-'}, {VK_ADD, L'+'}, {VK_DIVIDE, L'/'}, {VK_MULTIPLY, L'*'}}) {
        window.key(key);
        const RowIndex rows = window.grid.geometry().rowCount();
        EXPECT_EQ(typed(character), rows);
    }
}

TEST_F(GridGroups, TheFocusStaysWithItsGroupWhenAllAreFolded) {
    window.grid.setGroupColumns({{TraceSource::kComponent, false}, {TraceSource::kProcess, false}});
    window.grid.setAllGroupsUnfolded(true);
    const int inner = window.grid.grouping().groupCount() - 1;
    const int outer = window.grid.grouping().group(inner).parent;
    ASSERT_NE(outer, kNoGroup);
    window.grid.setCurrentCell(window.grid.grouping().viewOfGroup(inner), 0);
    ASSERT_NE(window.grid.row(), window.grid.grouping().firstRowOf(inner));
    window.key(VK_DIVIDE);
    EXPECT_EQ(focusedView(), window.grid.grouping().viewOfGroup(outer));
    window.key(VK_MULTIPLY);
    EXPECT_EQ(focusedView(), window.grid.grouping().viewOfGroup(outer));
    EXPECT_TRUE(window.grid.geometry().fullyVisible(focusedView()));
    EXPECT_EQ(window.grid.row(), 0) << "the source stays where it is";
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridGroups, TheCursorStepsOverGroupsWithoutMovingTheSource) {
    groupByComponent();
    {
        HeldKey ctrl(VK_CONTROL);
        window.key(VK_HOME);
    }
    moves = 0;
    window.key(VK_DOWN);
    window.key(VK_DOWN);
    EXPECT_EQ(focusedView(), 2);
    EXPECT_EQ(window.grid.row(), 0);
    EXPECT_EQ(moves, 0);
}

TEST_F(GridGroups, ARowThatTheSourceGoesToIsUnfolded) {
    groupByComponent();
    window.grid.setGroupColumns({{TraceSource::kComponent, false}, {TraceSource::kLevel, false}});
    window.source.setCurrentRow(517);
    window.grid.currentRowChanged();
    EXPECT_EQ(window.grid.row(), 517);
    EXPECT_EQ(window.grid.grouping().at(focusedView()).row, 517);
    EXPECT_TRUE(window.grid.geometry().fullyVisible(focusedView()));
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridGroups, FoldingSurvivesASortAndNewRows) {
    groupByComponent();
    window.grid.setGroupUnfolded(2, true);
    window.source.setRowCount(1400);
    window.grid.rowCountChanged();
    EXPECT_EQ(window.grid.grouping().rowCount(), 1000) << "grouped a little later";
    EXPECT_TRUE(window.waitFor([&] { return window.grid.grouping().rowCount() == 1400; }));
    EXPECT_TRUE(window.grid.grouping().group(2).unfolded);
    EXPECT_EQ(window.grid.geometry().rowCount(), 354);
    window.grid.dataChanged();
    EXPECT_TRUE(window.grid.grouping().group(2).unfolded);
    EXPECT_FALSE(window.grid.grouping().group(1).unfolded);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridGroups, ASortThatMovesTheCurrentRowUnfoldsNothing) {
    groupByComponent();
    window.source.setCurrentRow(5);
    window.grid.dataChanged();
    EXPECT_EQ(window.grid.row(), 5);
    EXPECT_EQ(window.grid.geometry().rowCount(), 4);
    EXPECT_EQ(window.grid.grouping().at(focusedView()).group, 0) << "row 5 is in Dialer";
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridGroups, FewerRowsAreNoHarm) {
    groupByComponent();
    window.grid.setAllGroupsUnfolded(true);
    window.source.setRowCount(0);
    window.source.setCurrentRow(-1);
    window.grid.dataChanged();
    EXPECT_EQ(window.grid.geometry().rowCount(), 0);
    EXPECT_EQ(window.grid.row(), -1);
    window.key(VK_DOWN);
    window.key(VK_MULTIPLY);
    window.key(VK_SPACE);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridGroups, EveryColumnMayBeGroupedBy) {
    std::vector<GroupColumn> all;
    for (int column = 0; column < window.grid.columnCount(); ++column) {
        all.push_back({column, false});
    }
    window.grid.setGroupColumns(all);
    EXPECT_EQ(window.grid.geometry().columns().firstVisible(), kNoColumn);
    window.key(VK_MULTIPLY);
    window.key(VK_DOWN);
    window.key(VK_RIGHT);
    window.key(VK_END);
    window.click({300, 300});
    EXPECT_TRUE(window.looksAsPaintedAnew());
    window.grid.setGroupColumns({});
    EXPECT_EQ(window.grid.geometry().rowCount(), 1000);
}

TEST_F(GridGroups, ASourceThatCannotRankLeavesTheRowsUngrouped) {
    class Failing : public TraceSource {
    public:
        using TraceSource::TraceSource;
        std::vector<std::uint32_t> valueRanks(int) const override {
            throw std::runtime_error("gone");
        }
    };
    Failing source(50);
    window.grid.setDataSource(&source);
    EXPECT_THROW(groupByComponent(), std::runtime_error);
    EXPECT_TRUE(window.grid.groupColumns().empty());
    EXPECT_EQ(window.grid.geometry().rowCount(), 50);
    window.grid.setDataSource(nullptr);
}

TEST_F(GridGroups, AnotherSourceStartsUngrouped) {
    groupByComponent();
    TraceSource other(10);
    window.grid.setDataSource(&other);
    EXPECT_TRUE(window.grid.groupColumns().empty());
    EXPECT_EQ(window.grid.geometry().rowCount(), 10);
    window.grid.setDataSource(nullptr);
}

TEST_F(GridGroups, OnlyWhatFoldsIsPaintedAnew) {
    groupByComponent();
    const std::int64_t columns = window.grid.columnCount() - 1;
    const std::int64_t cells =
        window.cellsPaintedBy([&] { window.grid.setGroupUnfolded(0, true); });
    EXPECT_EQ(cells, columns * (window.grid.geometry().endRow() - 1))
        << "one row is the group's own";
    {
        HeldKey ctrl(VK_CONTROL);
        window.key(VK_HOME);
    }
    EXPECT_EQ(window.cellsPaintedBy([&] { window.key(VK_DOWN); }), columns);
    EXPECT_EQ(window.cellsPaintedBy([&] { window.key(VK_DOWN); }), 2 * columns);
    EXPECT_TRUE(window.looksAsPaintedAnew());
    EXPECT_EQ(window.cellsPaintedBy([&] { window.grid.setGroupUnfolded(0, false); }), 0)
        << "only groups are left";
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridGroups, UnfoldedGroupsStaySoAfterASort) {
    groupByComponent();
    window.key(VK_MULTIPLY);
    ASSERT_EQ(window.grid.geometry().rowCount(), 1004);
    window.grid.setGroupUnfolded(3, false);
    window.grid.dataChanged();
    EXPECT_EQ(window.grid.geometry().rowCount(), 754);
    EXPECT_TRUE(window.grid.grouping().group(0).unfolded);
    EXPECT_FALSE(window.grid.grouping().group(3).unfolded);
    window.source.setRowCount(1400);
    window.grid.rowCountChanged();
    EXPECT_TRUE(window.waitFor([&] { return window.grid.grouping().rowCount() == 1400; }));
    EXPECT_EQ(window.grid.geometry().rowCount(), 1400 + 4 - 350);
}

// The heading under the mouse leaves no trace on its way.
TEST_F(GridGroups, ACarriedHeadingLeavesNoTrace) {
    const Point from = window.middleOfHeading(TraceSource::kComponent);
    window.press(from);
    window.move({from.x + 20, from.y + 60}, true);
    window.move({from.x - 200, from.y + 200}, true);
    EXPECT_TRUE(window.looksAsPaintedAnew());
    window.move({from.x - 190, from.y + 205}, true);
    EXPECT_TRUE(window.looksAsPaintedAnew());
    window.key(VK_ESCAPE);
    EXPECT_TRUE(window.looksAsPaintedAnew());
    window.release({10, 400});
}

TEST_F(GridGroups, SidewaysScrollingLeavesGroupsWhereTheyAre) {
    window.grid.column(TraceSource::kTrace).setWidth(forms::Twips(15'000));
    groupByComponent();
    window.grid.setGroupUnfolded(1, true);
    window.scrollBar(SB_HORZ, SB_PAGERIGHT);
    EXPECT_GT(window.grid.geometry().scrollX(), 0);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridGroups, HeadingsMoveColumns) {
    dragHeading(TraceSource::kComponent, window.middleOfHeading(TraceSource::kDate));
    EXPECT_TRUE(window.grid.groupColumns().empty());
    const int place = window.grid.geometry().columns().place(TraceSource::kComponent);
    EXPECT_TRUE(place == 0 || place == 1);
    EXPECT_EQ(window.grid.column(TraceSource::kComponent).dataField(), L"Component");
    dragHeading(TraceSource::kTrace,
                {window.grid.geometry().headingRect(0).left + 2, window.middleOfHeading(0).y});
    EXPECT_LT(window.grid.geometry().columns().place(TraceSource::kTrace), 2);
    dragHeading(TraceSource::kDate,
                {window.grid.geometry().viewWidth() - 2, window.middleOfHeading(0).y});
    EXPECT_EQ(window.grid.geometry().columns().lastVisible(), TraceSource::kDate);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

}  // namespace
}  // namespace grid

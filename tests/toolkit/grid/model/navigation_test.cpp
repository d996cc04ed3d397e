#include "toolkit/grid/model/navigation.h"

#include "toolkit/grid/model/selection.h"

#include <gtest/gtest.h>

namespace grid {
namespace {

class NavigationTest : public testing::Test {
protected:
    void SetUp() override {
        geometry.setMeasures({25, 20, 30, 4});
        geometry.resetColumns(3, 100);
        geometry.setRowCount(100);
        geometry.setView(320, 25 + 310);
    }
    Cell press(Motion motion) {
        cell = navigate(geometry, cell, motion);
        geometry.scrollRowIntoView(cell.row);
        return cell;
    }
    Geometry geometry;
    Cell cell{5, 1};
};

TEST_F(NavigationTest, ArrowsMoveByOneAndStopAtTheEdges) {
    EXPECT_EQ(press(Motion::down), (Cell{6, 1}));
    EXPECT_EQ(press(Motion::up), (Cell{5, 1}));
    EXPECT_EQ(press(Motion::left), (Cell{5, 0}));
    EXPECT_EQ(press(Motion::left), (Cell{5, 0}));
    EXPECT_EQ(press(Motion::rowEnd), (Cell{5, 2}));
    EXPECT_EQ(press(Motion::right), (Cell{5, 2}));
    EXPECT_EQ(press(Motion::rowStart), (Cell{5, 0}));
}

TEST_F(NavigationTest, EndsOfTheSource) {
    EXPECT_EQ(press(Motion::lastRow), (Cell{99, 1}));
    EXPECT_EQ(press(Motion::down), (Cell{99, 1}));
    EXPECT_EQ(press(Motion::firstRow), (Cell{0, 1}));
    EXPECT_EQ(press(Motion::up), (Cell{0, 1}));
}

TEST_F(NavigationTest, PageDownGoesToTheBottomThenByPages) {
    EXPECT_EQ(press(Motion::pageDown).row, 9);
    EXPECT_EQ(press(Motion::pageDown).row, 18);
    EXPECT_EQ(press(Motion::pageDown).row, 27);
    EXPECT_EQ(geometry.firstRow(), 18);
}

TEST_F(NavigationTest, PageUpGoesToTheTopThenByPages) {
    press(Motion::lastRow);
    EXPECT_EQ(press(Motion::pageUp).row, 90);
    EXPECT_EQ(press(Motion::pageUp).row, 81);
    cell.row = 3;
    geometry.scrollToRow(0);
    EXPECT_EQ(press(Motion::pageUp).row, 0);
}

TEST_F(NavigationTest, PagesReachBothEnds) {
    int presses = 0;
    while (press(Motion::pageDown).row < 99 && presses < 50) ++presses;
    EXPECT_EQ(cell.row, 99);
    while (press(Motion::pageUp).row > 0 && presses < 50) ++presses;
    EXPECT_EQ(cell.row, 0);
    EXPECT_LT(presses, 30);
}

TEST_F(NavigationTest, PageKeysMoveWhenOnlyOneRowFits) {
    geometry.setView(320, 25 + 20);
    EXPECT_EQ(press(Motion::pageDown).row, 6);
    EXPECT_EQ(press(Motion::pageUp).row, 5);
}

TEST_F(NavigationTest, FromNowhereTheFirstKeyEntersTheView) {
    geometry.scrollToRow(40);
    cell = {};
    EXPECT_EQ(press(Motion::down), (Cell{40, 0}));
    cell = {};
    EXPECT_EQ(press(Motion::lastRow), (Cell{99, 0}));
}

TEST_F(NavigationTest, WithoutRowsThereIsNoRow) {
    geometry.setRowCount(0);
    cell = {};
    EXPECT_EQ(press(Motion::down).row, kNoRow);
    EXPECT_EQ(press(Motion::lastRow).row, kNoRow);
}

TEST_F(NavigationTest, HiddenColumnsAreSteppedOver) {
    geometry.setColumnVisible(1, false);
    cell = {5, 0};
    EXPECT_EQ(press(Motion::right), (Cell{5, 2}));
}

TEST_F(NavigationTest, PageKeysKnowRowsThatAreCutOff) {
    geometry.setView(320, 25 + 325);
    geometry.scrollToY(40);
    ASSERT_TRUE(geometry.fullyVisible(2));
    ASSERT_TRUE(geometry.fullyVisible(11));
    EXPECT_EQ(navigate(geometry, {5, 1}, Motion::pageDown).row, 11);
    EXPECT_EQ(navigate(geometry, {5, 1}, Motion::pageUp).row, 2);
}

TEST_F(NavigationTest, FromOutOfViewAPageKeyMovesByAPage) {
    geometry.scrollToRow(50);
    EXPECT_EQ(navigate(geometry, {0, 1}, Motion::pageDown).row, 9);
    geometry.scrollToRow(0);
    EXPECT_EQ(navigate(geometry, {99, 1}, Motion::pageUp).row, 90);
}

TEST(Selection, IsTheCurrentRowUnlessARangeWasDrawn) {
    Selection selection;
    EXPECT_FALSE(selection.contains(kNoRow));
    selection.moveTo({4, 1});
    EXPECT_TRUE(selection.contains(4));
    EXPECT_FALSE(selection.contains(5));
    EXPECT_FALSE(selection.wholeRows());
    selection.extendTo({2, 1});
    selection.extendTo({6, 1});
    EXPECT_FALSE(selection.contains(3));
    EXPECT_TRUE(selection.contains(4));
    EXPECT_TRUE(selection.contains(6));
    EXPECT_TRUE(selection.wholeRows());
    selection.selectRows(0, 9);
    EXPECT_TRUE(selection.contains(9));
    EXPECT_EQ(selection.current(), (Cell{6, 1}));
    selection.moveTo({7, 0});
    EXPECT_FALSE(selection.contains(6));
}

}  // namespace
}  // namespace grid

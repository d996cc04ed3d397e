#include "toolkit/grid/model/geometry.h"

#include <gtest/gtest.h>

#include <random>

namespace grid {
namespace {

// Four columns of 100 pixels, selectors 20 wide, headings 25 high, rows of 30 pixels; the view
// shows ten whole rows and a third of another.
class GeometryTest : public testing::Test {
protected:
    void SetUp() override {
        geometry.setMeasures({25, 20, 30, 4});
        geometry.resetColumns(4, 100);
        geometry.setRowCount(1000);
        geometry.setView(320, 25 + 310);
    }
    Geometry geometry;
};

TEST_F(GeometryTest, KnowsTheRowsOnView) {
    EXPECT_EQ(geometry.firstRow(), 0);
    EXPECT_EQ(geometry.endRow(), 11);
    EXPECT_EQ(geometry.rowsOnAPage(), 10);
    EXPECT_TRUE(geometry.fullyVisible(9));
    EXPECT_FALSE(geometry.fullyVisible(10));
}

TEST_F(GeometryTest, APartlyScrolledRowIsOnView) {
    geometry.scrollToY(45);
    EXPECT_EQ(geometry.firstRow(), 1);
    EXPECT_EQ(geometry.endRow(), 12);
    EXPECT_FALSE(geometry.fullyVisible(1));
    EXPECT_EQ(geometry.rowRect(1).top, 25 - 15);
}

TEST_F(GeometryTest, FewRowsEndTheView) {
    geometry.setRowCount(3);
    EXPECT_EQ(geometry.endRow(), 3);
    EXPECT_EQ(geometry.maximumScrollY(), 0);
}

TEST_F(GeometryTest, NoRowsAndNoRoom) {
    geometry.setRowCount(0);
    EXPECT_EQ(geometry.firstRow(), geometry.endRow());
    geometry.setRowCount(1000);
    geometry.setView(0, 0);
    EXPECT_EQ(geometry.endRow() - geometry.firstRow(), 0);
    EXPECT_EQ(geometry.hitTest({0, 0}).area, Area::nowhere);
    EXPECT_EQ(geometry.rowsOnAPage(), 1);
}

TEST_F(GeometryTest, PlacesCellsAndHeadings) {
    geometry.scrollToY(300);
    geometry.scrollToX(40);
    EXPECT_EQ(geometry.cellRect({12, 1}), (Rect{80, 85, 180, 115}));
    EXPECT_EQ(geometry.headingRect(0), (Rect{-20, 0, 80, 25}));
    EXPECT_EQ(geometry.selectorRect(12), (Rect{0, 85, 20, 115}));
    EXPECT_EQ(geometry.dataArea(), (Rect{20, 25, 320, 335}));
}

TEST_F(GeometryTest, HitTestKnowsEveryArea) {
    EXPECT_EQ(geometry.hitTest({5, 5}).area, Area::corner);
    Hit hit = geometry.hitTest({60, 5});
    EXPECT_EQ(hit.area, Area::heading);
    EXPECT_EQ(hit.cell.column, 0);
    hit = geometry.hitTest({118, 5});
    EXPECT_EQ(hit.area, Area::headingBorder);
    EXPECT_EQ(hit.cell.column, 0);
    hit = geometry.hitTest({5, 60});
    EXPECT_EQ(hit.area, Area::selector);
    EXPECT_EQ(hit.cell.row, 1);
    hit = geometry.hitTest({130, 25});
    EXPECT_EQ(hit.area, Area::cell);
    EXPECT_EQ(hit.cell, (Cell{0, 1}));
}

TEST_F(GeometryTest, HitTestBesideTheContentIsNowhere) {
    geometry.setView(600, 335);
    EXPECT_EQ(geometry.hitTest({500, 100}).area, Area::nowhere);
    EXPECT_EQ(geometry.hitTest({500, 5}).area, Area::nowhere);
    geometry.setRowCount(2);
    EXPECT_EQ(geometry.hitTest({60, 25 + 60}).area, Area::nowhere);
    EXPECT_EQ(geometry.hitTest({60, 335}).area, Area::nowhere);
    EXPECT_EQ(geometry.hitTest({-1, 30}).area, Area::nowhere);
}

TEST_F(GeometryTest, ABorderScrolledAwayIsOutOfReach) {
    geometry.scrollToX(90);
    EXPECT_EQ(geometry.hitTest({28, 5}).area, Area::headingBorder);
    geometry.scrollToX(100);
    EXPECT_EQ(geometry.hitTest({18, 5}).area, Area::headingBorder);
    geometry.resetColumns(4, 200);
    geometry.scrollToX(210);
    ASSERT_EQ(geometry.headingRect(0).right, 10);
    EXPECT_EQ(geometry.hitTest({12, 5}).area, Area::corner);
}

TEST_F(GeometryTest, HitTestIsTheInverseOfCellRect) {
    std::mt19937 random(7);
    for (int i = 0; i < 2000; ++i) {
        geometry.scrollToY(static_cast<RowIndex>(random() % 29000));
        geometry.scrollToX(static_cast<int>(random() % 120));
        Point point{static_cast<int>(random() % 320), static_cast<int>(random() % 335)};
        Hit hit = geometry.hitTest(point);
        if (hit.area == Area::cell) {
            EXPECT_TRUE(geometry.cellRect(hit.cell).contains(point));
        } else if (hit.area == Area::selector) {
            EXPECT_TRUE(geometry.selectorRect(hit.cell.row).contains(point));
        }
        EXPECT_EQ(hit.area == Area::cell, geometry.dataArea().contains(point));
    }
}

TEST_F(GeometryTest, ScrollPositionsAreClampedAndTheEndIsAligned) {
    EXPECT_TRUE(geometry.scrollToY(1'000'000));
    EXPECT_EQ(geometry.scrollY(), 990 * 30);
    EXPECT_TRUE(geometry.fullyVisible(999));
    EXPECT_FALSE(geometry.scrollToY(1'000'000));
    EXPECT_TRUE(geometry.scrollToX(5000));
    EXPECT_EQ(geometry.scrollX(), 100);
    geometry.scrollToY(-3);
    EXPECT_EQ(geometry.scrollY(), 0);
}

TEST_F(GeometryTest, BringsRowsIntoView) {
    EXPECT_FALSE(geometry.scrollRowIntoView(9));
    EXPECT_TRUE(geometry.scrollRowIntoView(10));
    EXPECT_EQ(geometry.firstRow(), 1);
    EXPECT_TRUE(geometry.scrollRowIntoView(500));
    EXPECT_EQ(geometry.firstRow(), 491);
    EXPECT_TRUE(geometry.scrollRowIntoView(490));
    EXPECT_EQ(geometry.firstRow(), 490);
    EXPECT_FALSE(geometry.scrollRowIntoView(kNoRow));
    EXPECT_FALSE(geometry.scrollRowIntoView(1000));
}

TEST_F(GeometryTest, BringsColumnsIntoView) {
    EXPECT_FALSE(geometry.scrollColumnIntoView(2));
    EXPECT_TRUE(geometry.scrollColumnIntoView(3));
    EXPECT_EQ(geometry.scrollX(), 100);
    EXPECT_TRUE(geometry.scrollColumnIntoView(0));
    EXPECT_EQ(geometry.scrollX(), 0);
    geometry.setColumnWidth(3, 900);
    EXPECT_TRUE(geometry.scrollColumnIntoView(3));
    EXPECT_EQ(geometry.scrollX(), 300);
}

TEST_F(GeometryTest, MoreRowsKeepThePositionAndFewerClampIt) {
    geometry.scrollToY(3000);
    geometry.setRowCount(2'000'000);
    EXPECT_EQ(geometry.scrollY(), 3000);
    geometry.setRowCount(50);
    EXPECT_EQ(geometry.scrollY(), 40 * 30);
}

TEST_F(GeometryTest, AnotherRowHeightKeepsTheTopRow) {
    geometry.scrollToY(100 * 30 + 15);
    geometry.setMeasures({25, 20, 60, 4});
    EXPECT_EQ(geometry.firstRow(), 100);
    EXPECT_EQ(geometry.scrollY(), 100 * 60 + 30);
}

TEST_F(GeometryTest, BillionsOfRowsDoNotOverflow) {
    RowIndex count = 20'000'000'000;
    geometry.setRowCount(count);
    geometry.scrollRowIntoView(count - 1);
    EXPECT_EQ(geometry.endRow(), count);
    EXPECT_EQ(geometry.rowRect(count - 1).bottom, 25 + 300);
    EXPECT_EQ(geometry.hitTest({60, 30}).cell.row, count - 10);
    geometry.setRowCount(INT64_MAX);
    geometry.scrollToRow(INT64_MAX);
    EXPECT_GT(geometry.scrollY(), 0);
    EXPECT_EQ(geometry.endRow(), geometry.rowCount());
}

TEST_F(GeometryTest, ColumnsThatGetNarrowerClampTheScrollPosition) {
    geometry.scrollToX(100);
    geometry.setColumnWidth(3, 20);
    EXPECT_EQ(geometry.scrollX(), 20);
    geometry.setColumnWidth(3, 100);
    geometry.scrollToX(100);
    geometry.setColumnVisible(3, false);
    EXPECT_EQ(geometry.scrollX(), 0);
    geometry.setColumnVisible(3, true);
    geometry.scrollToX(100);
    geometry.resetColumns(2, 100);
    EXPECT_EQ(geometry.scrollX(), 0);
}

TEST_F(GeometryTest, BehindTheEdgesOfTheViewIsNowhere) {
    EXPECT_EQ(geometry.hitTest({319, 100}).area, Area::cell);
    EXPECT_EQ(geometry.hitTest({320, 100}).area, Area::nowhere);
    EXPECT_EQ(geometry.hitTest({60, 334}).area, Area::cell);
    EXPECT_EQ(geometry.hitTest({60, 335}).area, Area::nowhere);
}

TEST_F(GeometryTest, ARowOnViewIsLeftWhereItIs) {
    geometry.scrollToRow(5);
    EXPECT_FALSE(geometry.scrollRowIntoView(9));
    EXPECT_EQ(geometry.firstRow(), 5);
}

TEST_F(GeometryTest, AHiddenColumnIsNotBroughtIntoView) {
    geometry.resetColumns(4, 200);
    geometry.scrollToX(300);
    geometry.setColumnVisible(0, false);
    const int before = geometry.scrollX();
    EXPECT_FALSE(geometry.scrollColumnIntoView(0));
    EXPECT_EQ(geometry.scrollX(), before);
}

TEST_F(GeometryTest, AColumnCutOffAtTheLeftIsBroughtIntoView) {
    geometry.scrollToX(50);
    EXPECT_TRUE(geometry.scrollColumnIntoView(0));
    EXPECT_EQ(geometry.scrollX(), 0);
}

TEST_F(GeometryTest, AColumnWiderThanTheViewIsLeftAsLongAsSomeOfItShows) {
    geometry.setColumnWidth(0, 900);
    geometry.scrollToX(200);
    EXPECT_FALSE(geometry.scrollColumnIntoView(0));
    EXPECT_EQ(geometry.scrollX(), 200);
    geometry.scrollToX(900);
    EXPECT_TRUE(geometry.scrollColumnIntoView(0)) << "its last pixel is scrolled away";
    EXPECT_EQ(geometry.scrollX(), 0);
}

TEST_F(GeometryTest, AreasEndWithTheView) {
    geometry.setView(10, 335);
    EXPECT_EQ(geometry.headingArea(), (Rect{10, 0, 10, 25}));
    EXPECT_EQ(geometry.dataArea(), (Rect{10, 25, 10, 335}));
    geometry.setMeasures({.headingHeight = 25, .rowHeight = 30, .groupAreaHeight = 40});
    geometry.setView(320, 30);
    EXPECT_EQ(geometry.groupArea().strip(), (Rect{0, 0, 320, 30}));
    EXPECT_EQ(geometry.headingArea(), (Rect{0, 30, 320, 30}));
    EXPECT_TRUE(geometry.dataArea().empty());
}

}  // namespace
}  // namespace grid

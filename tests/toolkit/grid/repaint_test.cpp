// Which part of a window each kind of change has painted anew.
#include "toolkit/grid/repaint.h"

#include "tests/toolkit/grid/grid_window.h"
#include "toolkit/grid/drawing.h"

#include <gtest/gtest.h>

namespace grid {
namespace {

// A selector of 20 pixels, a strip of 40, headings of 24, rows of 20, columns of 100: 0 to 2 and
// half of 3 are on view, and the rows 10 to 19, of which the first is cut off by half.
class RepaintTest : public testing::Test {
protected:
    RepaintTest() {
        ::SetWindowPos(host.hwnd(), nullptr, 0, 0, 370, 259, SWP_NOMOVE | SWP_NOZORDER);
        geometry.setView(370, 259);
        geometry.setMeasures({.headingHeight = 24,
                              .selectorWidth = 20,
                              .rowHeight = 20,
                              .groupAreaHeight = 40,
                              .groupAreaGap = 8});
        geometry.setRowCount(1000);
        geometry.resetColumns(5, 100);
        geometry.scrollToY(210);
        repaint.attach(host.hwnd());
        GridWindow::pump();
        ::ValidateRect(host.hwnd(), nullptr);
    }

    // What has to be painted since the last call.
    Rect dirty() {
        RECT rect{};
        ::GetUpdateRect(host.hwnd(), &rect, FALSE);
        ::ValidateRect(host.hwnd(), nullptr);
        return fromRect(rect);
    }

    HostWindow host{forms::Dpi(96)};
    Geometry geometry;
    Repaint repaint{geometry};
};

TEST_F(RepaintTest, AllIsTheWholeView) {
    repaint.all();
    EXPECT_EQ(dirty(), (Rect{0, 0, 370, 259}));
}

TEST_F(RepaintTest, APartIsThatAndNothingForNothing) {
    repaint.part({10, 20, 30, 50});
    EXPECT_EQ(dirty(), (Rect{10, 20, 30, 50}));
    repaint.part({10, 20, 10, 50});
    EXPECT_EQ(dirty(), Rect{});
}

TEST_F(RepaintTest, AHeadingReachesAsFarAsItIsSeen) {
    repaint.heading(1);
    EXPECT_EQ(dirty(), (Rect{120, 40, 220, 64}));
    repaint.heading(3);
    EXPECT_EQ(dirty(), (Rect{320, 40, 370, 64}));
    geometry.scrollToX(50);
    repaint.heading(0);
    EXPECT_EQ(dirty(), (Rect{20, 40, 70, 64})) << "not over the corner";
}

TEST_F(RepaintTest, ARowReachesFromTheSelectorToTheRightEdge) {
    repaint.row(12);
    EXPECT_EQ(dirty(), (Rect{0, 94, 370, 114}));
    repaint.row(10);
    EXPECT_EQ(dirty(), (Rect{0, 64, 370, 74})) << "not under the headings";
    repaint.row(20);
    EXPECT_EQ(dirty(), (Rect{0, 254, 370, 259}));
}

TEST_F(RepaintTest, ARowOutOfViewIsLeftOut) {
    for (const RowIndex row : {RowIndex{9}, RowIndex{21}, kNoRow}) {
        repaint.row(row);
        EXPECT_EQ(dirty(), Rect{}) << row;
    }
}

TEST_F(RepaintTest, RowsFromOneOnReachToTheLowerEdge) {
    repaint.rowsFrom(12);
    EXPECT_EQ(dirty(), (Rect{0, 94, 370, 259}));
    repaint.rowsFrom(0);
    EXPECT_EQ(dirty(), (Rect{0, 64, 370, 259}));
    repaint.rowsFrom(20);
    EXPECT_EQ(dirty(), (Rect{0, 254, 370, 259}));
    repaint.rowsFrom(21);
    EXPECT_EQ(dirty(), Rect{});
    repaint.rowsFrom(40'000'000'000);
    EXPECT_EQ(dirty(), Rect{});
}

TEST_F(RepaintTest, BelowTheLastRowThereMayBeSomethingToPaintToo) {
    geometry.setRowCount(2);
    repaint.rowsFrom(2);
    EXPECT_EQ(dirty(), (Rect{0, 104, 370, 259}));
}

TEST_F(RepaintTest, ColumnsTakeTheirHeadingsAlong) {
    repaint.columnsFrom(120);
    EXPECT_EQ(dirty(), (Rect{120, 40, 370, 259}));
    repaint.columnsFrom(-30);
    EXPECT_EQ(dirty(), (Rect{0, 40, 370, 259}));
}

TEST_F(RepaintTest, CellsAreThoseOfOneColumn) {
    repaint.cells(1);
    EXPECT_EQ(dirty(), (Rect{120, 64, 220, 259}));
    geometry.scrollToX(50);
    repaint.cells(0);
    EXPECT_EQ(dirty(), (Rect{20, 64, 70, 259})) << "not the selectors";
}

TEST_F(RepaintTest, ScrolledRowsLeaveOnlyWhatComesIntoView) {
    repaint.scrolledRows(-30);
    EXPECT_EQ(dirty(), (Rect{0, 229, 370, 259}));
    repaint.scrolledRows(30);
    EXPECT_EQ(dirty(), (Rect{0, 64, 370, 94}));
    repaint.scrolledRows(0);
    EXPECT_EQ(dirty(), Rect{});
}

TEST_F(RepaintTest, ScrolledColumnsTakeTheirHeadingsAlong) {
    repaint.scrolledColumns(-30);
    EXPECT_EQ(dirty(), (Rect{340, 40, 370, 259}));
    repaint.scrolledColumns(30);
    EXPECT_EQ(dirty(), (Rect{20, 40, 50, 259}));
    repaint.scrolledColumns(0);
    EXPECT_EQ(dirty(), Rect{});
}

TEST_F(RepaintTest, WithoutAWindowNothingHappens) {
    repaint.attach(nullptr);
    repaint.all();
    repaint.row(12);
    repaint.scrolledRows(-30);
    repaint.scrolledColumns(-30);
    repaint.now();
    EXPECT_EQ(dirty(), Rect{});
}

}  // namespace
}  // namespace grid

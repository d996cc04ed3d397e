#include "toolkit/grid/model/scroll_steps.h"

#include <gtest/gtest.h>

namespace grid {
namespace {

using enum ScrollStep;

// Rows of 20 pixels, ten of them on a page, and columns of 1000 pixels in a view of 300.
class ScrollStepsTest : public testing::Test {
protected:
    ScrollStepsTest() {
        geometry.setView(320, 224);
        geometry.setMeasures({.headingHeight = 24, .selectorWidth = 20, .rowHeight = 20});
        geometry.setRowCount(1000);
        geometry.resetColumns(10, 100);
        geometry.scrollToY(500);
        geometry.scrollToX(400);
    }
    Geometry geometry;
};

TEST_F(ScrollStepsTest, ALineIsARow) {
    EXPECT_EQ(steppedY(geometry, lineBack), 480);
    EXPECT_EQ(steppedY(geometry, lineOn), 520);
}

TEST_F(ScrollStepsTest, APageLeavesOneRowOnView) {
    EXPECT_EQ(steppedY(geometry, pageBack), 500 - 180);
    EXPECT_EQ(steppedY(geometry, pageOn), 500 + 180);
    geometry.setView(320, 50);
    EXPECT_EQ(steppedY(geometry, pageOn), 500 + 20) << "at least a row";
}

TEST_F(ScrollStepsTest, TheEndsAreTheFirstAndTheLastRow) {
    EXPECT_EQ(steppedY(geometry, first), 0);
    EXPECT_EQ(steppedY(geometry, last), (1000 - 10) * 20);
    EXPECT_EQ(steppedX(geometry, first, 16), 0);
    EXPECT_EQ(steppedX(geometry, last, 16), 1000 - 300);
}

TEST_F(ScrollStepsTest, SidewaysAPageLeavesALineOnView) {
    EXPECT_EQ(steppedX(geometry, lineBack, 16), 400 - 16);
    EXPECT_EQ(steppedX(geometry, lineOn, 16), 400 + 16);
    EXPECT_EQ(steppedX(geometry, pageBack, 16), 400 - 284);
    EXPECT_EQ(steppedX(geometry, pageOn, 16), 400 + 284);
    geometry.setView(40, 224);
    EXPECT_EQ(steppedX(geometry, pageOn, 16), 400 + 16) << "at least a line";
}

TEST_F(ScrollStepsTest, ANotchOfTheWheelIsItsLinesButNoMoreThanAPage) {
    EXPECT_EQ(wheelNotchY(geometry, 3), 60);
    EXPECT_EQ(wheelNotchY(geometry, 9), 180);
    EXPECT_EQ(wheelNotchY(geometry, 10), 180);
    EXPECT_EQ(wheelNotchY(geometry, 0xFFFFFFFF), 180) << "what the system says for a page";
    EXPECT_EQ(wheelNotchX(geometry, 3, 16), 48);
    EXPECT_EQ(wheelNotchX(geometry, 100, 16), 300);
    EXPECT_EQ(wheelNotchX(geometry, 0xFFFFFFFF, 16), 300);
}

}  // namespace
}  // namespace grid

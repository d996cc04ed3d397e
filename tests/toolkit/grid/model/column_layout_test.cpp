#include "toolkit/grid/model/column_layout.h"

#include "toolkit/grid/model/shapes.h"

#include <gtest/gtest.h>

namespace grid {
namespace {

class ColumnLayoutTest : public testing::Test {
protected:
    void SetUp() override {
        columns.resize(4, 100);
        columns.setWidth(1, 50);
        columns.setVisible(2, false);
    }
    ColumnLayout columns;
};

TEST_F(ColumnLayoutTest, HiddenColumnsTakeNoRoomAndKeepTheirWidth) {
    EXPECT_EQ(columns.left(3), 150);
    EXPECT_EQ(columns.totalWidth(), 250);
    EXPECT_EQ(columns.right(2), columns.left(2));
    columns.setVisible(2, true);
    EXPECT_EQ(columns.totalWidth(), 350);
}

TEST_F(ColumnLayoutTest, FindsTheColumnUnderAPoint) {
    EXPECT_EQ(columns.at(-1), kNoColumn);
    EXPECT_EQ(columns.at(0), 0);
    EXPECT_EQ(columns.at(99), 0);
    EXPECT_EQ(columns.at(100), 1);
    EXPECT_EQ(columns.at(150), 3);
    EXPECT_EQ(columns.at(250), kNoColumn);
}

TEST_F(ColumnLayoutTest, FindsTheNearestBorder) {
    EXPECT_EQ(columns.borderAt(97, 4), 0);
    EXPECT_EQ(columns.borderAt(104, 4), 0);
    EXPECT_EQ(columns.borderAt(105, 4), kNoColumn);
    EXPECT_EQ(columns.borderAt(252, 4), 3);
    columns.setWidth(1, 4);
    EXPECT_EQ(columns.borderAt(101, 4), 0);
    EXPECT_EQ(columns.borderAt(103, 4), 1);
}

TEST_F(ColumnLayoutTest, AColumnPulledToNothingCanBePulledOpenAgain) {
    columns.setWidth(1, 0);
    EXPECT_EQ(columns.borderAt(100, 4), 1);
    EXPECT_EQ(columns.at(100), 3);
}

TEST_F(ColumnLayoutTest, StepsOverHiddenColumns) {
    EXPECT_EQ(columns.next(1, 1), 3);
    EXPECT_EQ(columns.next(3, -1), 1);
    EXPECT_EQ(columns.next(3, 1), kNoColumn);
    columns.setVisible(0, false);
    EXPECT_EQ(columns.firstVisible(), 1);
    EXPECT_EQ(columns.lastVisible(), 3);
}

TEST_F(ColumnLayoutTest, AMovedColumnKeepsItsNumberAndWidth) {
    columns.setWidth(3, 30);
    columns.move(3, 0);
    EXPECT_EQ(columns.left(3), 0);
    EXPECT_EQ(columns.left(0), 30);
    EXPECT_EQ(columns.place(3), 0);
    EXPECT_EQ(columns.place(2), 3);
    EXPECT_EQ(columns.columnAtPlace(1), 0);
    EXPECT_EQ(columns.firstVisible(), 3);
    EXPECT_EQ(columns.next(3, 1), 0);
    EXPECT_EQ(columns.at(29), 3);
    columns.move(3, 3);
    EXPECT_EQ(columns.place(2), 2);
    EXPECT_EQ(columns.lastVisible(), 3);
}

TEST_F(ColumnLayoutTest, ADropGoesBeforeTheColumnWhoseMiddleLiesBeyond) {
    // Column 2 is hidden, so columns 0, 1 and 3 stand at 0, 100 and 200.
    EXPECT_EQ(columns.placeAt(-5), 0);
    EXPECT_EQ(columns.placeAt(49), 0);
    EXPECT_EQ(columns.placeAt(columns.left(1) + 1), 1);
    EXPECT_EQ(columns.placeAt(columns.right(1) - 1), 3);
    EXPECT_EQ(columns.placeAt(columns.totalWidth()), 4);
}

TEST(ColumnLayout, WithoutColumnsNothingIsFound) {
    ColumnLayout columns;
    EXPECT_EQ(columns.at(0), kNoColumn);
    EXPECT_EQ(columns.borderAt(0, 4), kNoColumn);
    EXPECT_EQ(columns.firstVisible(), kNoColumn);
    EXPECT_EQ(columns.totalWidth(), 0);
}

TEST_F(ColumnLayoutTest, OfTwoBordersAtOnePlaceTheOneBehindIsFound) {
    columns.setWidth(0, 0);
    columns.move(0, 1);
    ASSERT_EQ(columns.right(0), columns.right(1));
    EXPECT_EQ(columns.borderAt(50, 4), 0) << "by place, not by number";
}

TEST_F(ColumnLayoutTest, NoWidthIsNegative) {
    columns.setWidth(0, -5);
    EXPECT_EQ(columns.width(0), 0);
    EXPECT_EQ(columns.left(1), 0);
}

}  // namespace
}  // namespace grid

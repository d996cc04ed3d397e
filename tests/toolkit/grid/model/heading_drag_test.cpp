#include "toolkit/grid/model/heading_drag.h"

#include <gtest/gtest.h>

namespace grid {
namespace {

using Held = HeadingDrag::Held;
using To = HeadingDrop::To;
using Step = HeadingDrag::BorderStep;

// Four columns of 100 pixels behind a selector of 20; a strip of 40 for groups, headings of 24.
class HeadingDragTest : public testing::Test {
protected:
    HeadingDragTest() {
        geometry.setView(500, 300);
        geometry.setMeasures({.headingHeight = 24,
                              .selectorWidth = 20,
                              .rowHeight = 20,
                              .groupAreaHeight = 40,
                              .groupAreaGap = 8});
        geometry.resetColumns(4, 100);
    }

    void groupBy(std::vector<GroupColumn> columns, std::vector<int> chipWidths) {
        groups.setColumns(std::move(columns));
        geometry.setGroupChips(std::move(chipWidths));
    }

    static constexpr Point kSlack{4, 4};

    Geometry geometry;
    GroupView groups;
    HeadingDrag drag{geometry, groups};
};

TEST_F(HeadingDragTest, HoldsNothingAtFirst) {
    EXPECT_FALSE(drag.active());
    EXPECT_FALSE(drag.heldDown());
    EXPECT_EQ(drag.carried(2), std::nullopt);
    EXPECT_EQ(drag.letGo(), Held::nothing);
}

TEST_F(HeadingDragTest, APressedHeadingIsDownWhileTheMouseIsOverIt) {
    drag.takeHeading(1, true, {220 - 2, 50});
    EXPECT_EQ(drag.held(), Held::heading);
    EXPECT_EQ(drag.column(), 1);
    EXPECT_TRUE(drag.heldDown());
    drag.pull({220 + 1, 50}, kSlack);
    EXPECT_FALSE(drag.heldDown()) << "over the next heading";
    drag.pull({220 - 1, 50}, kSlack);
    EXPECT_TRUE(drag.heldDown());
    EXPECT_EQ(drag.letGo(), Held::heading);
    EXPECT_FALSE(drag.heldDown());
}

TEST_F(HeadingDragTest, AHeadingIsCarriedOnceItIsPulledFurtherThanTheSlack) {
    for (const Point to : {Point{154, 54}, Point{146, 46}}) {
        drag.takeHeading(1, true, {150, 50});
        drag.pull(to, kSlack);
        EXPECT_EQ(drag.held(), Held::heading);
        drag.letGo();
    }
    for (const Point to : {Point{155, 50}, Point{145, 50}, Point{150, 55}, Point{150, 45}}) {
        drag.takeHeading(1, true, {150, 50});
        drag.pull(to, kSlack);
        EXPECT_EQ(drag.held(), Held::carried);
        EXPECT_FALSE(drag.heldDown());
        drag.pull({150, 50}, kSlack);
        EXPECT_EQ(drag.held(), Held::carried) << "also back where it came from";
        drag.letGo();
    }
}

TEST_F(HeadingDragTest, TheSlackIsMeasuredInEachDirection) {
    drag.takeHeading(1, true, {150, 50});
    drag.pull({156, 50}, {6, 1});
    EXPECT_EQ(drag.held(), Held::heading);
    drag.pull({150, 52}, {6, 1});
    EXPECT_EQ(drag.held(), Held::carried);
}

TEST_F(HeadingDragTest, ACarriedHeadingGoesWithTheMouse) {
    drag.takeHeading(1, true, {150, 50});
    drag.pull({180, 150}, kSlack);
    const auto carried = drag.carried(2);
    ASSERT_TRUE(carried);
    EXPECT_EQ(carried->column, 1);
    EXPECT_EQ(carried->rect, (Rect{150, 140, 250, 164}));
    EXPECT_TRUE(carried->mark.empty()) << "over the rows it would go nowhere";
}

TEST_F(HeadingDragTest, OfAWideHeadingWhatIsAroundTheMouseIsCarried) {
    geometry.setColumnWidth(1, 1000);
    drag.takeHeading(1, true, {460, 50});
    drag.pull({460, 60}, kSlack);
    EXPECT_EQ(drag.carried(2)->rect, (Rect{460 - 12 * 24 + 1, 50, 461, 74}));
    drag.letGo();
    drag.takeHeading(1, true, {130, 50});
    drag.pull({130, 60}, kSlack);
    EXPECT_EQ(drag.carried(2)->rect, (Rect{120, 50, 120 + 12 * 24, 74}));
}

TEST_F(HeadingDragTest, OverTheHeadingsItGoesAmongTheColumns) {
    drag.takeHeading(1, true, {150, 50});
    EXPECT_EQ(drag.dropAt({30, 50}), (HeadingDrop{To::columns, 0}));
    EXPECT_EQ(drag.dropAt({5, 50}), (HeadingDrop{To::columns, 0})) << "the corner belongs to them";
    EXPECT_EQ(drag.dropAt({369, 50}), (HeadingDrop{To::columns, 3}));
    EXPECT_EQ(drag.dropAt({499, 40}), (HeadingDrop{To::columns, 4}));
    EXPECT_EQ(drag.dropAt({499, 63}), (HeadingDrop{To::columns, 4}));
    EXPECT_EQ(drag.dropAt({499, 64}), HeadingDrop{});
    EXPECT_EQ(drag.dropAt({500, 50}), HeadingDrop{});
    EXPECT_EQ(drag.dropAt({-1, 50}), HeadingDrop{});
}

TEST_F(HeadingDragTest, OverTheStripItGoesAmongTheGroups) {
    groupBy({{3}}, {60});
    drag.takeHeading(1, true, {150, 50});
    EXPECT_EQ(drag.dropAt({10, 39}), (HeadingDrop{To::groups, 0}));
    EXPECT_EQ(drag.dropAt({300, 0}), (HeadingDrop{To::groups, 1}));
    EXPECT_EQ(drag.dropAt({300, -1}), HeadingDrop{});
}

TEST_F(HeadingDragTest, AColumnThatMayNotBeGroupedByStaysOutOfTheStrip) {
    drag.takeHeading(1, false, {150, 50});
    EXPECT_EQ(drag.dropAt({300, 20}), HeadingDrop{});
}

TEST_F(HeadingDragTest, AChipThatIsLetGoOfAnywhereElseGoesBackToItsPlace) {
    groupBy({{2}}, {60});
    geometry.setColumnVisible(2, false);
    drag.takeHeading(2, true, {20, 20});
    EXPECT_EQ(drag.placeOf(2), (Rect{8, 8, 68, 32}));
    EXPECT_EQ(drag.dropAt({300, 250}), (HeadingDrop{To::columns, 2}));
    EXPECT_EQ(drag.dropAt({300, 20}), (HeadingDrop{To::groups, 1}));
}

TEST_F(HeadingDragTest, TheMarkShowsWhereItWouldGo) {
    const auto markAt = [this](Point point) {
        drag.takeHeading(1, true, {150, 50});
        drag.pull({150, 150}, kSlack);
        drag.pull(point, kSlack);
        return drag.carried(2)->mark;
    };
    EXPECT_EQ(markAt({330, 50}), (Rect{318, 40, 322, 64})) << "in front of the last column";
    EXPECT_EQ(markAt({450, 50}), (Rect{418, 40, 422, 64})) << "behind it";
    EXPECT_EQ(markAt({300, 20}), geometry.groupArea().insertionMark(0, 2));
    geometry.setView(200, 300);
    geometry.scrollToX(50);
    EXPECT_EQ(markAt({25, 50}), (Rect{68, 40, 72, 64})) << "in front of the second, scrolled";
}

TEST_F(HeadingDragTest, ABorderMovesFromTheWidthThatTheColumnShows) {
    drag.takeBorder(2, {320, 50});
    EXPECT_EQ(drag.held(), Held::border);
    EXPECT_FALSE(drag.heldDown());
    EXPECT_EQ(drag.pullBorder({320, 99}), Step::none) << "only sideways counts";
    EXPECT_FALSE(drag.borderMoved());
    EXPECT_EQ(drag.pullBorder({321, 50}), Step::first);
    EXPECT_EQ(drag.pullBorder({320, 50}), Step::next);
    EXPECT_TRUE(drag.borderMoved());
    EXPECT_EQ(drag.borderWidth({350, 50}), 130);
    EXPECT_EQ(drag.borderWidth({100, 50}), 0);
    EXPECT_EQ(drag.letGo(), Held::border);
    EXPECT_FALSE(drag.borderMoved());
    drag.takeBorder(2, {320, 50});
    EXPECT_EQ(drag.pullBorder({330, 50}), Step::first) << "of the next drag";
}

}  // namespace
}  // namespace grid

#include "toolkit/grid/model/group_area.h"

#include <gtest/gtest.h>

namespace grid {
namespace {

class GroupAreaTest : public testing::Test {
protected:
    void SetUp() override { area.layOut({0, 0, 500, 36}, {80, 60}, 6); }
    GroupArea area;
};

TEST_F(GroupAreaTest, ChipsStandBesideEachOther) {
    EXPECT_EQ(area.chip(0), (Rect{6, 6, 86, 30}));
    EXPECT_EQ(area.chip(1), (Rect{92, 6, 152, 30}));
    EXPECT_EQ(area.levelAt({7, 7}), 0);
    EXPECT_EQ(area.levelAt({92, 29}), 1);
    EXPECT_EQ(area.levelAt({89, 10}), kNoLevel);
    EXPECT_EQ(area.levelAt({7, 2}), kNoLevel);
}

TEST_F(GroupAreaTest, AHeadingGoesWhereItsMiddleIsPassed) {
    EXPECT_EQ(area.insertionAt(0), 0);
    EXPECT_EQ(area.insertionAt(45), 0);
    EXPECT_EQ(area.insertionAt(46), 1);
    EXPECT_EQ(area.insertionAt(121), 1);
    EXPECT_EQ(area.insertionAt(122), 2);
    EXPECT_EQ(area.insertionAt(499), 2);
}

TEST_F(GroupAreaTest, TheMarkStandsBetweenTheChips) {
    EXPECT_EQ(area.insertionMark(0, 2), (Rect{2, 3, 4, 33}));
    EXPECT_EQ(area.insertionMark(1, 2), (Rect{88, 3, 90, 33}));
    EXPECT_EQ(area.insertionMark(2, 2), (Rect{154, 3, 156, 33}));
}

TEST_F(GroupAreaTest, WithoutChipsTheMarkStandsAtTheBeginning) {
    area.layOut({0, 0, 500, 36}, {}, 6);
    EXPECT_EQ(area.levelCount(), 0);
    EXPECT_EQ(area.insertionAt(300), 0);
    EXPECT_EQ(area.insertionMark(0, 2), (Rect{2, 3, 4, 33}));
}

}  // namespace
}  // namespace grid

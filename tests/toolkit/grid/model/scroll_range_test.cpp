#include "toolkit/grid/model/scroll_range.h"

#include <gtest/gtest.h>

#include <limits>

namespace grid {
namespace {

TEST(ScrollRange, SmallCountsAreOneUnitARow) {
    ScrollRange range(1'000'000, 30);
    EXPECT_EQ(range.barMaximum(), 999'999);
    EXPECT_EQ(range.barPage(), 30);
    for (RowIndex row : {RowIndex{0}, RowIndex{65'536}, RowIndex{999'969}, range.lastTop()}) {
        EXPECT_EQ(range.row(range.barPosition(row)), row);
    }
}

TEST(ScrollRange, FewerRowsThanAPageLeaveNothingToScroll) {
    ScrollRange range(5, 30);
    EXPECT_EQ(range.lastTop(), 0);
    EXPECT_EQ(range.barPage(), range.barMaximum() + 1);
    EXPECT_EQ(range.row(17), 0);
}

TEST(ScrollRange, NoRows) {
    ScrollRange range(0, 30);
    EXPECT_EQ(range.lastTop(), 0);
    EXPECT_EQ(range.barPosition(0), 0);
    EXPECT_EQ(range.row(std::numeric_limits<int>::max()), 0);
}

TEST(ScrollRange, CountsBeyond32BitsReachBothEndsAndKeepTheirOrder) {
    RowIndex count = 40'000'000'001;
    ScrollRange range(count, 30);
    EXPECT_GT(range.barMaximum(), 1 << 29);
    EXPECT_EQ(range.row(0), 0);
    EXPECT_EQ(range.row(range.barMaximum() - range.barPage() + 1), count - 30);
    EXPECT_EQ(range.barPosition(count - 30), range.barMaximum() - range.barPage() + 1);
    RowIndex before = -1;
    for (RowIndex row = 0; row < count; row += count / 997) {
        RowIndex back = range.row(range.barPosition(row));
        EXPECT_LE(std::abs(back - row), 40) << row;
        EXPECT_GT(back, before);
        before = back;
    }
}

TEST(ScrollRange, TheLargestCountDoesNotOverflow) {
    RowIndex count = std::numeric_limits<RowIndex>::max();
    ScrollRange range(count, 1);
    EXPECT_GT(range.barMaximum(), 0);
    EXPECT_EQ(range.row(range.barPosition(count)), count - 1);
    EXPECT_EQ(range.row(-5), 0);
}

TEST(ScrollRange, ThePageIsAtLeastAUnit) {
    EXPECT_EQ(ScrollRange(40'000'000'001, 30).barPage(), 1);
}

}  // namespace
}  // namespace grid

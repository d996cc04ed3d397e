#include "toolkit/grid/model/wheel.h"

#include <gtest/gtest.h>

namespace grid {
namespace {

TEST(Wheel, ANotchScrollsItsLines) {
    Wheel wheel;
    EXPECT_EQ(wheel.turn(120, 90), 90);
    EXPECT_EQ(wheel.turn(-240, 90), -180);
}

TEST(Wheel, SmallStepsAddUpToTheSameDistance) {
    Wheel wheel;
    std::int64_t sum = 0;
    for (int i = 0; i < 120; ++i) sum += wheel.turn(-1, 90);
    EXPECT_EQ(sum, -90);
}

TEST(Wheel, TurningBackDropsTheRemainder) {
    Wheel wheel;
    EXPECT_EQ(wheel.turn(100, 1), 0);
    EXPECT_EQ(wheel.turn(-30, 1), 0);
    EXPECT_EQ(wheel.turn(-90, 1), -1);
}

TEST(Wheel, ResetForgetsTheRemainder) {
    Wheel wheel;
    wheel.turn(119, 1);
    wheel.reset();
    EXPECT_EQ(wheel.turn(1, 1), 0);
}

}  // namespace
}  // namespace grid

#include "toolkit/forms/units.h"

#include <gtest/gtest.h>

using namespace forms;
using namespace forms::literals;

namespace {

struct Density {
    unsigned dpi;
    int pixelsOf315Twips;
    double twipsOfOnePixel;
};

class UnitsAtDensity : public testing::TestWithParam<Density> {};

TEST_P(UnitsAtDensity, AnInchIsAsManyPixelsAsThereAreDots) {
    EXPECT_EQ(toPixels(1440_tw, Dpi(GetParam().dpi)).value, static_cast<int>(GetParam().dpi));
}

TEST_P(UnitsAtDensity, AButtonOf315Twips) {
    EXPECT_EQ(toPixels(315_tw, Dpi(GetParam().dpi)).value, GetParam().pixelsOf315Twips);
}

TEST_P(UnitsAtDensity, OnePixelInTwips) {
    EXPECT_DOUBLE_EQ(toTwips(Pixels(1), Dpi(GetParam().dpi)).value, GetParam().twipsOfOnePixel);
}

TEST_P(UnitsAtDensity, PixelsSurviveTheWayToTwipsAndBack) {
    const Dpi dpi(GetParam().dpi);
    for (int pixels = -300; pixels <= 3000; ++pixels) {
        ASSERT_EQ(toPixels(toTwips(Pixels(pixels), dpi), dpi).value, pixels);
    }
}

INSTANTIATE_TEST_SUITE_P(Densities, UnitsAtDensity,
                         testing::Values(Density{96, 21, 15.0}, Density{120, 26, 12.0},
                                         Density{144, 32, 10.0}, Density{192, 42, 7.5}),
                         [](const auto& density) { return std::to_string(density.param.dpi); });

TEST(Units, RoundsToTheNearestPixelOnBothSidesOfZero) {
    EXPECT_EQ(toPixels(Twips(937.5), Dpi(96)).value, 63);
    EXPECT_EQ(toPixels(Twips(-937.5), Dpi(96)).value, -63);
    EXPECT_EQ(toPixels(7_tw, Dpi(96)).value, 0);
    EXPECT_EQ(toPixels(7.5_tw, Dpi(96)).value, 1);
}

TEST(Units, ComputesWithFractions) {
    const Twips height = 12000_tw - 120_tw - 937.5_tw;
    EXPECT_DOUBLE_EQ(height.value, 10942.5);
    EXPECT_DOUBLE_EQ((height / 2 + 3 * 10_tw).value, 5501.25);
    EXPECT_LT(4999.9_tw, 5000_tw);
}

TEST(Units, ScalesDesignPixels) {
    EXPECT_EQ(scaled(16, Dpi(96)).value, 16);
    EXPECT_EQ(scaled(16, Dpi(144)).value, 24);
    EXPECT_EQ(scaled(16, Dpi(192)).value, 32);
}

}  // namespace

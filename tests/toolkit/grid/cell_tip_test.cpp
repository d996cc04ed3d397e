// The tip's window, and when one is due.
#include "toolkit/grid/cell_tip.h"

#include "tests/toolkit/grid/grid_window.h"
#include "toolkit/grid/drawing.h"
#include "toolkit/grid/text_font.h"

#include <gtest/gtest.h>

namespace grid {
namespace {

// Some systems put the edge of a tip outside the place that it was given.
constexpr int kEdge = 1;

class CellTipTest : public testing::Test {
protected:
    void show(const Rect& cell, const std::wstring& text, bool wrap = false) {
        tip.show(host.hwnd(), cell, text, wrap, font.handle(), forms::Dpi(96));
    }
    Rect shownAt() const {
        RECT rect{};
        ::GetWindowRect(tip.hwnd(), &rect);
        return fromRect(rect);
    }

    HostWindow host{forms::Dpi(96)};
    TextFont font{forms::messageFont(), forms::Dpi(96)};
    CellTip tip;
};

TEST_F(CellTipTest, OneIsDueOnceForEveryRest) {
    EXPECT_TRUE(tip.rest({3, 1}));
    EXPECT_FALSE(tip.rest({3, 1}));
    EXPECT_TRUE(tip.rest({3, 2}));
    tip.leave({3, 2});
    EXPECT_FALSE(tip.rest({3, 2})) << "the mouse is still there";
    tip.leave({4, 2});
    EXPECT_TRUE(tip.rest({3, 2}));
    tip.hide();
    EXPECT_TRUE(tip.rest({3, 2}));
}

TEST_F(CellTipTest, NoneIsDueWhileThereAreNone) {
    tip.setOn(false);
    EXPECT_FALSE(tip.on());
    EXPECT_FALSE(tip.rest({3, 1}));
    tip.setOn(true);
    EXPECT_TRUE(tip.rest({3, 1}));
}

TEST_F(CellTipTest, ShowsBelowItsCellAndGoesWithTheMouse) {
    tip.rest({3, 1});
    show({100, 100, 200, 120}, L"the whole text");
    EXPECT_TRUE(tip.shown());
    EXPECT_TRUE(::IsWindowVisible(tip.hwnd()));
    EXPECT_EQ(tip.text(), L"the whole text");
    EXPECT_NEAR(shownAt().left, 100, kEdge);
    EXPECT_NEAR(shownAt().top, 120, kEdge);
    tip.leave({3, 1});
    EXPECT_TRUE(tip.shown());
    tip.leave({3, 2});
    EXPECT_FALSE(tip.shown());
    EXPECT_FALSE(::IsWindowVisible(tip.hwnd()));
}

TEST_F(CellTipTest, TurningThemOffHidesTheOneOnShow) {
    show({100, 100, 200, 120}, L"the whole text");
    tip.setOn(false);
    EXPECT_FALSE(tip.shown());
}

TEST_F(CellTipTest, StandsAboveItsCellWhereThereIsNoRoomBelow) {
    const int bottom = ::GetSystemMetrics(SM_CYSCREEN);
    show({100, bottom - 30, 200, bottom - 5}, L"the whole text");
    EXPECT_NEAR(shownAt().bottom, bottom - 30, kEdge);
}

TEST_F(CellTipTest, StaysOnTheScreenAtTheRight) {
    const int right = ::GetSystemMetrics(SM_CXSCREEN);
    show({right - 40, 100, right, 120}, L"a text that is wider than what is left of the screen");
    EXPECT_NEAR(shownAt().right, right, kEdge);
    EXPECT_NEAR(shownAt().top, 120, kEdge);
}

TEST_F(CellTipTest, WrapsOnlyWhenAskedTo) {
    std::wstring words;
    for (int i = 0; i < 30; ++i) words += L"words ";
    show({0, 0, 100, 20}, words, true);
    const Rect wrapped = shownAt();
    show({0, 0, 100, 20}, words, false);
    const Rect inOneLine = shownAt();
    EXPECT_LT(wrapped.width(), inOneLine.width());
    EXPECT_GT(wrapped.height(), inOneLine.height());
    EXPECT_LT(wrapped.width(), 480 + 20);
}

TEST_F(CellTipTest, AVeryLongTextEndsInAnEllipsis) {
    show({0, 0, 100, 20}, std::wstring(4000, L'x'));
    EXPECT_EQ(tip.text(), std::wstring(4000, L'x'));
    show({0, 0, 100, 20}, std::wstring(4001, L'x'));
    EXPECT_EQ(tip.text(), std::wstring(4000, L'x') + L'\x2026');
}

TEST_F(CellTipTest, AnotherOwnerGetsATipOfItsOwn) {
    show({100, 100, 200, 120}, L"one");
    HostWindow other{forms::Dpi(96)};
    tip.show(other.hwnd(), {100, 100, 200, 120}, L"two", false, font.handle(), forms::Dpi(96));
    EXPECT_EQ(::GetWindow(tip.hwnd(), GW_OWNER), other.hwnd());
    EXPECT_TRUE(tip.shown());
    tip.destroy();
    EXPECT_EQ(tip.hwnd(), nullptr);
    EXPECT_FALSE(tip.shown());
}

}  // namespace
}  // namespace grid

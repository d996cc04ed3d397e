// The scroll bars of a window, without a grid.
#include "toolkit/grid/scroll_bars.h"

#include "tests/toolkit/grid/grid_window.h"

#include <gtest/gtest.h>

namespace grid {
namespace {

class BarWindow : public forms::Window {
public:
    explicit BarWindow(ScrollBars& bars) : bars_(bars) {
        Creation creation;
        creation.className = L"ScrollBarsTest";
        creation.style = WS_POPUP | WS_VISIBLE | WS_VSCROLL | WS_HSCROLL;
        creation.bounds = {0, 0, 400, 300};
        createOwn(creation);
    }

    int timers = 0;
    int updates = 0;

protected:
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_TIMER && wParam == kBarTimer) {
            ++timers;
            updates += bars_.onTimer() ? 1 : 0;
            return 0;
        }
        return Window::handleMessage(message, wParam, lParam);
    }

private:
    ScrollBars& bars_;
};

// Rows of 20 pixels in a view of 200, columns of 1000 pixels in one of 300.
class ScrollBarsTest : public testing::Test {
protected:
    ScrollBarsTest() {
        geometry.setView(320, 224);
        geometry.setMeasures({.headingHeight = 24, .selectorWidth = 20, .rowHeight = 20});
        geometry.setRowCount(1000);
        geometry.resetColumns(10, 100);
        bars.attach(window.hwnd());
    }

    SCROLLINFO shown(int bar) const {
        SCROLLINFO info{};
        info.cbSize = sizeof info;
        info.fMask = SIF_ALL;
        ::GetScrollInfo(window.hwnd(), bar, &info);
        return info;
    }

    Geometry geometry;
    ScrollBars bars{geometry};
    BarWindow window{bars};
};

TEST_F(ScrollBarsTest, ShowWhatTheGeometrySays) {
    geometry.scrollToY(505);
    geometry.scrollToX(400);
    bars.update();
    EXPECT_EQ(shown(SB_VERT).nMin, 0);
    EXPECT_EQ(shown(SB_VERT).nMax, 999);
    EXPECT_EQ(shown(SB_VERT).nPage, 10u);
    EXPECT_EQ(shown(SB_VERT).nPos, 25);
    EXPECT_EQ(shown(SB_HORZ).nMax, 999);
    EXPECT_EQ(shown(SB_HORZ).nPage, 300u);
    EXPECT_EQ(shown(SB_HORZ).nPos, 400);
    geometry.scrollToY(geometry.maximumScrollY());
    bars.update();
    EXPECT_EQ(shown(SB_VERT).nPos, 990) << "at the end";
}

TEST_F(ScrollBarsTest, EachFollowsByItself) {
    bars.update();
    geometry.scrollToX(17);
    bars.update();
    EXPECT_EQ(shown(SB_HORZ).nPos, 17);
    EXPECT_EQ(shown(SB_VERT).nPos, 0);
    geometry.setRowCount(500);
    bars.update();
    EXPECT_EQ(shown(SB_VERT).nMax, 499);
    geometry.setView(320, 124);
    bars.update();
    EXPECT_EQ(shown(SB_VERT).nPage, 5u);
}

TEST_F(ScrollBarsTest, GoWhereAllIsOnView) {
    geometry.setRowCount(3);
    geometry.resetColumns(2, 100);
    bars.update();
    EXPECT_EQ(::GetWindowLongPtrW(window.hwnd(), GWL_STYLE) & (WS_VSCROLL | WS_HSCROLL), 0);
}

TEST_F(ScrollBarsTest, StepsLeadToPositions) {
    geometry.scrollToY(500);
    geometry.scrollToX(400);
    EXPECT_EQ(bars.verticalTarget(SB_LINEUP), 480);
    EXPECT_EQ(bars.verticalTarget(SB_LINEDOWN), 520);
    EXPECT_EQ(bars.verticalTarget(SB_PAGEUP), 320);
    EXPECT_EQ(bars.verticalTarget(SB_PAGEDOWN), 680);
    EXPECT_EQ(bars.verticalTarget(SB_TOP), 0);
    EXPECT_EQ(bars.verticalTarget(SB_BOTTOM), geometry.maximumScrollY());
    EXPECT_EQ(bars.verticalTarget(99), std::nullopt);
    EXPECT_EQ(bars.horizontalTarget(SB_LINELEFT, 16), 384);
    EXPECT_EQ(bars.horizontalTarget(SB_LINERIGHT, 16), 416);
    EXPECT_EQ(bars.horizontalTarget(SB_PAGELEFT, 16), 116);
    EXPECT_EQ(bars.horizontalTarget(SB_PAGERIGHT, 16), 684);
    EXPECT_EQ(bars.horizontalTarget(SB_LEFT, 16), 0);
    EXPECT_EQ(bars.horizontalTarget(SB_RIGHT, 16), 700);
    EXPECT_EQ(bars.horizontalTarget(SB_ENDSCROLL, 16), std::nullopt);
    EXPECT_EQ(geometry.scrollY(), 500) << "nobody has scrolled yet";
}

// Without a mouse on the thumb Windows reports the bar's position as that of the thumb.
TEST_F(ScrollBarsTest, TheThumbLeadsToItsRow) {
    geometry.setRowCount(1'000'000);
    bars.update();
    ::SetScrollPos(window.hwnd(), SB_VERT, 654'321, FALSE);
    ::SetScrollPos(window.hwnd(), SB_HORZ, 321, FALSE);
    EXPECT_EQ(bars.verticalTarget(SB_THUMBTRACK), 654'321 * 20);
    EXPECT_EQ(bars.verticalTarget(SB_THUMBPOSITION), 654'321 * 20);
    EXPECT_EQ(bars.horizontalTarget(SB_THUMBTRACK, 16), 321);
    EXPECT_EQ(bars.horizontalTarget(SB_THUMBPOSITION, 16), 321);
}

TEST_F(ScrollBarsTest, FollowALittleLaterOnceForAllRequests) {
    bars.update();
    for (int i = 1; i <= 100; ++i) {
        geometry.setRowCount(1000 + i);
        bars.updateSoon();
    }
    EXPECT_EQ(shown(SB_VERT).nMax, 999);
    EXPECT_TRUE(GridWindow::waitFor([&] { return shown(SB_VERT).nMax == 1099; }));
    EXPECT_EQ(window.updates, 1);
    EXPECT_FALSE(::KillTimer(window.hwnd(), kBarTimer)) << "the timer is gone";
}

TEST_F(ScrollBarsTest, StandStillWhileTheThumbIsHeld) {
    bars.update();
    bars.verticalTarget(SB_THUMBTRACK);
    geometry.setRowCount(2000);
    bars.updateSoon();
    ASSERT_TRUE(GridWindow::waitFor([&] { return window.timers >= 2; }));
    EXPECT_EQ(window.updates, 0);
    EXPECT_EQ(shown(SB_VERT).nMax, 999);
    EXPECT_EQ(bars.verticalTarget(SB_ENDSCROLL), std::nullopt);
    EXPECT_EQ(shown(SB_VERT).nMax, 1999);
    EXPECT_TRUE(GridWindow::waitFor([&] { return window.updates == 1; }));
}

TEST_F(ScrollBarsTest, TheThumbIsLetGoOfWithItsFinalPosition) {
    bars.verticalTarget(SB_THUMBTRACK);
    EXPECT_FALSE(bars.onTimer());
    bars.verticalTarget(SB_THUMBPOSITION);
    EXPECT_TRUE(bars.onTimer());
    bars.horizontalTarget(SB_THUMBTRACK, 16);
    EXPECT_TRUE(bars.onTimer()) << "rows may come while the other thumb is held";
}

TEST_F(ScrollBarsTest, WithoutAWindowNothingHappens) {
    bars.update();
    bars.updateSoon();
    bars.verticalTarget(SB_THUMBTRACK);
    bars.attach(nullptr);
    EXPECT_FALSE(::KillTimer(window.hwnd(), kBarTimer)) << "the timer went with the window";
    geometry.setRowCount(2000);
    bars.update();
    bars.updateSoon();
    EXPECT_EQ(shown(SB_VERT).nMax, 999);
    bars.attach(window.hwnd());
    EXPECT_TRUE(bars.onTimer()) << "the thumb was of the window before";
    EXPECT_EQ(shown(SB_VERT).nMax, 1999);
}

}  // namespace
}  // namespace grid

#include "tests/toolkit/grid/grid_window.h"
#include "tests/toolkit/grid/held_key.h"

#include <gtest/gtest.h>

namespace grid {
namespace {

class GridInput : public testing::Test {
protected:
    GridInput() : window(1000) {
        window.grid.onRowColChange = [this] { ++moves; };
    }
    GridWindow window;
    int moves = 0;
};

TEST_F(GridInput, KeysMoveTheCurrentCell) {
    window.key(VK_DOWN);
    window.key(VK_DOWN);
    window.key(VK_RIGHT);
    EXPECT_EQ(window.source.currentRow(), 2);
    EXPECT_EQ(window.grid.row(), 2);
    EXPECT_EQ(window.grid.col(), 1);
    EXPECT_EQ(moves, 3);
    window.key(VK_END);
    EXPECT_EQ(window.grid.col(), TraceSource::kTrace);
    window.key(VK_HOME);
    EXPECT_EQ(window.grid.col(), 0);
    window.key(VK_UP);
    EXPECT_EQ(window.source.currentRow(), 1);
}

TEST_F(GridInput, AKeyThatLeadsNowhereRaisesNothing) {
    window.key(VK_UP);
    window.key(VK_LEFT);
    EXPECT_EQ(moves, 0);
}

TEST_F(GridInput, PageKeysScroll) {
    std::int64_t page = window.grid.geometry().rowsOnAPage();
    window.key(VK_NEXT);
    EXPECT_EQ(window.grid.row(), page - 1);
    EXPECT_EQ(window.grid.firstRow(), 0);
    window.key(VK_NEXT);
    EXPECT_EQ(window.grid.row(), 2 * page - 2);
    EXPECT_EQ(window.grid.firstRow(), page - 1);
    window.key(VK_PRIOR);
    window.key(VK_PRIOR);
    EXPECT_EQ(window.grid.row(), 0);
}

TEST_F(GridInput, CtrlHomeAndEndGoToTheFirstAndLastRow) {
    {
        HeldKey ctrl(VK_CONTROL);
        window.key(VK_END);
        EXPECT_EQ(window.grid.row(), 999);
        EXPECT_TRUE(window.grid.geometry().fullyVisible(999));
        window.key(VK_HOME);
    }
    EXPECT_EQ(window.grid.row(), 0);
    EXPECT_EQ(window.grid.col(), 0);
}

TEST_F(GridInput, TabAndEnterAreLeftToTheForm) {
    LRESULT code = SendMessageW(window.grid.hwnd(), WM_GETDLGCODE, 0, 0);
    EXPECT_NE(code & DLGC_WANTARROWS, 0);
    EXPECT_EQ(code & (DLGC_WANTTAB | DLGC_WANTALLKEYS), 0);
}

TEST_F(GridInput, AClickMovesTheCurrentCellAndTakesTheFocus) {
    SetFocus(window.host.hwnd());
    window.click(window.middleOf({5, TraceSource::kComponent}));
    EXPECT_EQ(GetFocus(), window.grid.hwnd());
    EXPECT_EQ(window.source.currentRow(), 5);
    EXPECT_EQ(window.grid.col(), TraceSource::kComponent);
    EXPECT_EQ(moves, 1);
}

TEST_F(GridInput, AClickOnARecordSelectorKeepsTheColumn) {
    window.grid.setCol(3);
    Rect selector = window.grid.geometry().selectorRect(6);
    window.click({selector.left + 3, selector.top + 3});
    EXPECT_EQ(window.grid.row(), 6);
    EXPECT_EQ(window.grid.col(), 3);
}

TEST_F(GridInput, AClickBelowTheLastRowChangesNothing) {
    window.source.setRowCount(2);
    window.grid.rowCountChanged();
    window.pump();
    moves = 0;
    window.click({100, 450});
    EXPECT_EQ(moves, 0);
    EXPECT_EQ(window.grid.row(), 0);
}

TEST_F(GridInput, ASourceMayRefuseToMove) {
    window.source.refuses = true;
    window.key(VK_DOWN);
    EXPECT_EQ(window.grid.row(), 0);
    EXPECT_EQ(moves, 0);
}

TEST_F(GridInput, TheRightButtonHasNoEffect) {
    bool asked = false;
    window.grid.onMouseDown = [&](const forms::MouseEvent& e) {
        asked = e.button == forms::MouseButton::right;
    };
    Point cell = window.middleOf({5, 1});
    std::int64_t painted = window.cellsPaintedBy([&] {
        SendMessageW(window.grid.hwnd(), WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(cell.x, cell.y));
        SendMessageW(window.grid.hwnd(), WM_RBUTTONUP, 0, MAKELPARAM(cell.x, cell.y));
    });
    EXPECT_TRUE(asked) << "the owner still hears of it";
    EXPECT_EQ(painted, 0);
    EXPECT_EQ(window.grid.row(), 0);
    EXPECT_EQ(moves, 0);
}

TEST_F(GridInput, WhenTheSourceMovesItsRowIsBroughtIntoView) {
    window.source.setCurrentRow(700);
    window.grid.currentRowChanged();
    EXPECT_EQ(window.grid.row(), 700);
    EXPECT_TRUE(window.grid.geometry().fullyVisible(700));
    EXPECT_EQ(moves, 1);
    window.grid.currentRowChanged();
    EXPECT_EQ(moves, 1);
}

TEST_F(GridInput, ANotificationFromWithinAMoveRaisesTheEventOnce) {
    class Notifying : public TraceSource {
    public:
        using TraceSource::TraceSource;
        void setCurrentRow(std::int64_t row) override {
            TraceSource::setCurrentRow(row);
            owner->currentRowChanged();
        }
        Grid* owner = nullptr;
    };
    Notifying source(100);
    source.owner = &window.grid;
    window.grid.setDataSource(&source);
    moves = 0;
    window.click(window.middleOf({3, 2}));
    EXPECT_EQ(window.grid.row(), 3);
    EXPECT_EQ(moves, 1);
    window.grid.setDataSource(nullptr);
}

TEST_F(GridInput, BindingAndSortingRaiseRowColChangeEvenWhenTheRowIsTheSame) {
    window.grid.dataChanged();
    EXPECT_EQ(moves, 1);
    TraceSource empty(0);
    window.grid.setDataSource(&empty);
    EXPECT_EQ(moves, 2);
    EXPECT_EQ(window.grid.row(), -1);
    empty.setRowCount(4);
    empty.setCurrentRow(0);
    window.grid.rowCountChanged();
    EXPECT_EQ(moves, 3);
    EXPECT_EQ(window.grid.row(), 0);
    window.grid.setDataSource(nullptr);
}

TEST_F(GridInput, HeadClickIsRaisedOnRelease) {
    int clicked = -1;
    int times = 0;
    window.grid.onHeadClick = [&](int column) {
        clicked = column;
        ++times;
    };
    window.press(window.middleOfHeading(2));
    EXPECT_EQ(times, 0);
    window.release(window.middleOfHeading(2));
    EXPECT_EQ(clicked, 2);
    EXPECT_EQ(times, 1);
    window.doubleClick(window.middleOfHeading(1));
    EXPECT_EQ(times, 3);
    EXPECT_EQ(moves, 0);
}

TEST_F(GridInput, AHeadingLetGoElsewhereIsNoClick) {
    int times = 0;
    window.grid.onHeadClick = [&](int) { ++times; };
    window.press(window.middleOfHeading(2));
    window.move(window.middleOfHeading(3), true);
    window.release(window.middleOfHeading(3));
    window.press(window.middleOfHeading(2));
    window.key(VK_ESCAPE);
    window.release(window.middleOfHeading(2));
    EXPECT_EQ(times, 0);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridInput, AHeadClickHandlerMayBindAnotherSource) {
    TraceSource other(5);
    window.grid.onHeadClick = [&](int) { window.grid.setDataSource(&other); };
    window.click(window.middleOfHeading(2));
    EXPECT_EQ(window.grid.approxCount(), 5);
    EXPECT_TRUE(window.looksAsPaintedAnew());
    window.grid.setDataSource(nullptr);
}

void drag(GridWindow& window, Point from, int distance) {
    window.press(from);
    for (int part = 1; part <= 4; ++part) {
        window.move({from.x + distance * part / 4, from.y}, true);
    }
    window.release({from.x + distance, from.y});
}

TEST_F(GridInput, DraggingABorderResizesTheColumn) {
    int times = 0;
    int clicks = 0;
    window.grid.onColResize = [&](int column, bool&) {
        EXPECT_EQ(column, 1);
        ++times;
    };
    window.grid.onHeadClick = [&](int) { ++clicks; };
    int before = window.grid.geometry().columns().width(1);
    drag(window, window.borderOf(1), 40);
    EXPECT_EQ(window.grid.geometry().columns().width(1), before + 40);
    drag(window, window.borderOf(1), -5000);
    EXPECT_EQ(window.grid.geometry().columns().width(1), 0);
    EXPECT_EQ(times, 2);
    EXPECT_EQ(clicks, 0);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridInput, ACancelledResizeLeavesTheWidth) {
    int times = 0;
    window.grid.onColResize = [&](int, bool& cancel) {
        ++times;
        cancel = true;
    };
    int before = window.grid.geometry().columns().width(1);
    drag(window, window.borderOf(1), 40);
    EXPECT_EQ(window.grid.geometry().columns().width(1), before);
    EXPECT_EQ(times, 1);
    window.doubleClick(window.borderOf(1));
    EXPECT_EQ(window.grid.geometry().columns().width(1), before);
    EXPECT_EQ(GetCapture(), nullptr);
}

TEST_F(GridInput, EscapeGivesTheOldWidthBack) {
    int before = window.grid.geometry().columns().width(1);
    Point border = window.borderOf(1);
    window.press(border);
    window.move({border.x + 30, border.y}, true);
    EXPECT_EQ(window.grid.geometry().columns().width(1), before + 30);
    window.key(VK_ESCAPE);
    EXPECT_EQ(window.grid.geometry().columns().width(1), before);
    window.release({border.x + 30, border.y});
    EXPECT_EQ(window.grid.geometry().columns().width(1), before);
}

TEST_F(GridInput, TheFillingColumnIsDraggedFromTheWidthItShows) {
    const ColumnLayout& columns = window.grid.geometry().columns();
    int before = columns.width(TraceSource::kTrace);
    Rect heading = window.grid.geometry().headingRect(TraceSource::kTrace);
    drag(window, {heading.right - 2, 8}, 60);
    EXPECT_EQ(columns.width(TraceSource::kTrace), before + 60);
}

TEST_F(GridInput, AColumnThatMayNotBeSizedHasNoBorderToDrag) {
    int clicks = 0;
    window.grid.onHeadClick = [&](int) { ++clicks; };
    window.grid.column(1).setAllowSizing(false);
    int before = window.grid.geometry().columns().width(1);
    drag(window, window.borderOf(1), 40);
    EXPECT_EQ(window.grid.geometry().columns().width(1), before);
    window.click(window.borderOf(1));
    EXPECT_EQ(clicks, 1);
}

TEST_F(GridInput, ADoubleClickOnABorderFitsTheContent) {
    forms::Twips fitting = window.grid.column(1).width();
    window.grid.column(1).setWidth(fitting + forms::Twips(600));
    window.doubleClick(window.borderOf(1));
    EXPECT_EQ(window.grid.column(1).width(), fitting);
}

TEST_F(GridInput, TheWheelScrollsItsLines) {
    UINT lines = 0;
    SystemParametersInfoW(SPI_GETWHEELSCROLLLINES, 0, &lines, 0);
    int scrolls = 0;
    window.grid.onScroll = [&] { ++scrolls; };
    window.wheel(-120);
    EXPECT_EQ(window.grid.firstRow(), lines);
    window.wheel(120);
    EXPECT_EQ(window.grid.firstRow(), 0);
    window.wheel(120);
    EXPECT_EQ(scrolls, 2);
    EXPECT_EQ(window.grid.row(), 0);
}

TEST_F(GridInput, AFineWheelScrollsByPixels) {
    window.wheel(-20);
    std::int64_t sixth = window.grid.geometry().scrollY();
    EXPECT_GT(sixth, 0);
    for (int i = 0; i < 5; ++i) {
        window.wheel(-20);
    }
    EXPECT_EQ(window.grid.geometry().scrollY() % window.grid.geometry().measures().rowHeight, 0);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridInput, ShiftAndTiltScrollSideways) {
    window.grid.column(TraceSource::kTrace).setWidth(forms::Twips(15'000));
    window.wheel(-120, MK_SHIFT);
    int right = window.grid.geometry().scrollX();
    EXPECT_GT(right, 0);
    EXPECT_EQ(window.grid.firstRow(), 0);
    SendMessageW(window.grid.hwnd(), WM_MOUSEHWHEEL,
                 static_cast<WPARAM>(static_cast<DWORD>(MAKELONG(0, 120))), 0);
    EXPECT_EQ(window.grid.geometry().scrollX(), 2 * right);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridInput, ScrollBarsMoveByLinesAndPages) {
    std::int64_t page = window.grid.geometry().rowsOnAPage();
    window.scrollBar(SB_VERT, SB_LINEDOWN);
    EXPECT_EQ(window.grid.firstRow(), 1);
    window.scrollBar(SB_VERT, SB_PAGEDOWN);
    EXPECT_EQ(window.grid.firstRow(), page);
    window.scrollBar(SB_VERT, SB_BOTTOM);
    EXPECT_EQ(window.grid.geometry().endRow(), 1000);
    EXPECT_EQ(window.bar(SB_VERT).nPos,
              window.bar(SB_VERT).nMax - static_cast<int>(window.bar(SB_VERT).nPage) + 1);
    window.scrollBar(SB_VERT, SB_TOP);
    EXPECT_EQ(window.grid.firstRow(), 0);
}

TEST(GridThumb, ReachesRowsBeyond16Bits) {
    GridWindow window(1'000'000);
    window.trackThumb(SB_VERT, 654'321);
    EXPECT_EQ(window.grid.firstRow(), 654'321);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST(GridThumb, ReachesTheEndOfBillionsOfRows) {
    GridWindow window(40'000'000'000);
    SCROLLINFO bar = window.bar(SB_VERT);
    window.trackThumb(SB_VERT, bar.nMax - static_cast<int>(bar.nPage) + 1);
    EXPECT_EQ(window.grid.geometry().endRow(), 40'000'000'000);
    window.click(window.middleOf({window.grid.firstRow() + 2, 1}));
    EXPECT_EQ(window.source.currentRow(), window.grid.firstRow() + 2);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST(GridThumb, TheBarDoesNotMoveUnderAHeldThumb) {
    GridWindow window(1000);
    SendMessageW(window.grid.hwnd(), WM_VSCROLL, SB_THUMBTRACK, 0);
    window.source.setRowCount(2000);
    window.grid.rowCountChanged();
    ASSERT_TRUE(window.waitForTimer(kBarTimer, 2));
    EXPECT_EQ(window.bar(SB_VERT).nMax, 999);
    SendMessageW(window.grid.hwnd(), WM_VSCROLL, SB_ENDSCROLL, 0);
    EXPECT_EQ(window.bar(SB_VERT).nMax, 1999);
}

class GridTips : public GridInput {
protected:
    GridTips() {
        window.grid.onFetchCellTips = [this](int column, std::int64_t row, std::wstring& tip,
                                             bool& wrap) {
            ++asked;
            askedFor = {row, column};
            text = tip;
            wrap = true;
        };
    }
    const CellTip& tip() const { return window.grid.cellTip(); }
    int asked = 0;
    Cell askedFor;
    std::wstring text;
};

TEST_F(GridTips, ACutOffCellShowsItsWholeText) {
    window.hover(window.middleOf({3, TraceSource::kTrace}));
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(askedFor, (Cell{3, TraceSource::kTrace}));
    EXPECT_NE(text.find(L"was established"), std::wstring::npos);
    ASSERT_TRUE(tip().shown());
    EXPECT_EQ(tip().text(), text);
    EXPECT_TRUE(IsWindowVisible(tip().hwnd()));
    RECT rect{};
    GetWindowRect(tip().hwnd(), &rect);
    EXPECT_LT(rect.right - rect.left, 520);
    EXPECT_GT(rect.bottom - rect.top, 25);
}

TEST_F(GridTips, AWholeTextNeedsNoTip) {
    window.hover(window.middleOf({3, TraceSource::kSource}));
    EXPECT_EQ(asked, 0);
    EXPECT_FALSE(tip().shown());
}

TEST_F(GridTips, TheTipGoesWithTheMouseAKeyOrAScroll) {
    Point cell = window.middleOf({3, TraceSource::kTrace});
    window.hover(cell);
    window.move(window.middleOf({4, TraceSource::kTrace}));
    EXPECT_FALSE(tip().shown());
    window.hover(cell);
    EXPECT_TRUE(tip().shown());
    window.key(VK_DOWN);
    EXPECT_FALSE(tip().shown());
    window.hover(cell);
    window.wheel(-120);
    EXPECT_FALSE(tip().shown());
    EXPECT_FALSE(IsWindowVisible(tip().hwnd()));
}

TEST_F(GridTips, ARestingMouseIsAskedForOnce) {
    Point cell = window.middleOf({3, TraceSource::kTrace});
    window.hover(cell);
    window.hover(cell);
    EXPECT_EQ(asked, 1);
}

TEST_F(GridTips, AHeadingIsRowMinusOneAndHasNoTipOfItsOwn) {
    window.grid.column(1).setWidth(forms::Twips(450));
    window.hover(window.middleOfHeading(1));
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(askedFor, (Cell{-1, 1}));
    EXPECT_TRUE(text.empty());
    EXPECT_FALSE(tip().shown());
}

TEST_F(GridTips, AnEmptyTipShowsNothing) {
    window.grid.onFetchCellTips = [](int, std::int64_t, std::wstring& tip, bool&) { tip.clear(); };
    window.hover(window.middleOf({3, TraceSource::kTrace}));
    EXPECT_FALSE(tip().shown());
}

TEST_F(GridTips, TipsCanBeTurnedOff) {
    window.grid.setCellTips(false);
    window.hover(window.middleOf({3, TraceSource::kTrace}));
    EXPECT_EQ(asked, 0);
}

}  // namespace
}  // namespace grid

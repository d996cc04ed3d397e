#include "tests/toolkit/grid/grid_window.h"
#include "toolkit/grid/messages.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>

namespace grid {
namespace {

constexpr std::int64_t kColumns = 7;

std::int64_t rowsOnView(const GridWindow& window) {
    const Geometry& geometry = window.grid.geometry();
    return geometry.endRow() - geometry.firstRow();
}

TEST(GridPaint, AsksOnlyForWhatIsOnView) {
    GridWindow window(1'000'000);
    window.grid.setFirstRow(700'000);
    window.source.resetCounts();
    std::int64_t painted =
        window.cellsPaintedBy([&] { ::InvalidateRect(window.grid.hwnd(), nullptr, FALSE); });
    EXPECT_EQ(painted, rowsOnView(window) * kColumns);
    EXPECT_EQ(window.source.asked(), painted);
    EXPECT_EQ(window.source.firstAsked(), 700'000);
    EXPECT_EQ(window.source.lastAsked(), window.grid.geometry().endRow() - 1);
}

TEST(GridPaint, TheRowCountDoesNotMatter) {
    std::int64_t costs[2] = {};
    std::int64_t rows[2] = {1000, 40'000'000'000};
    for (int i = 0; i < 2; ++i) {
        GridWindow window(rows[i]);
        window.source.resetCounts();
        ::InvalidateRect(window.grid.hwnd(), nullptr, FALSE);
        window.pump();
        costs[i] = window.source.asked();
    }
    EXPECT_EQ(costs[0], costs[1]);
}

TEST(GridPaint, TellsHowManyRowsItShowed) {
    GridWindow window(0);
    auto painted = [&] { return ::SendMessageW(window.grid.hwnd(), GM_GETPAINTEDROWS, 0, 0); };
    EXPECT_EQ(painted(), 0);
    window.source.setRowCount(3);
    window.grid.rowCountChanged();
    EXPECT_EQ(painted(), 0) << "the rows are there but not yet painted";
    window.pump();
    EXPECT_EQ(painted(), 3);
    window.source.setRowCount(1'000'000);
    window.grid.rowCountChanged();
    window.pump();
    EXPECT_EQ(painted(), rowsOnView(window));
}

TEST(GridPaint, TheBackgroundIsNeverErased) {
    GridWindow window(10);
    HDC dc = ::GetDC(window.grid.hwnd());
    EXPECT_EQ(::SendMessageW(window.grid.hwnd(), WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc), 0),
              1);
    ::ReleaseDC(window.grid.hwnd(), dc);
}

TEST(GridPaint, AnArrowKeyPaintsTwoRows) {
    GridWindow window(1000);
    EXPECT_EQ(window.cellsPaintedBy([&] { window.key(VK_DOWN); }), 2 * kColumns);
    EXPECT_EQ(window.cellsPaintedBy([&] { window.key(VK_RIGHT); }), kColumns);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST(GridPaint, ScrollingALinePaintsOnlyWhatComesIntoView) {
    GridWindow window(1000);
    std::int64_t painted = window.cellsPaintedBy([&] { window.scrollBar(SB_VERT, SB_LINEDOWN); });
    EXPECT_GE(painted, kColumns);
    EXPECT_LE(painted, 2 * kColumns);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST(GridPaint, RowsThatArriveOutOfViewPaintNothing) {
    GridWindow window(100);
    EXPECT_EQ(window.cellsPaintedBy([&] {
        for (int i = 1; i <= 5000; ++i) {
            window.source.setRowCount(100 + i);
            window.grid.rowCountChanged();
        }
    }),
              0);
    EXPECT_EQ(window.grid.firstRow(), 0);
}

TEST(GridPaint, RowsThatArriveOnViewPaintThemselvesOnly) {
    GridWindow window(3);
    EXPECT_EQ(window.cellsPaintedBy([&] {
        window.source.setRowCount(5);
        window.grid.rowCountChanged();
    }),
              2 * kColumns);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST(GridPaint, TheScrollBarFollowsTheRowCount) {
    GridWindow window(3);
    window.source.setRowCount(1'000'000);
    window.grid.rowCountChanged();
    EXPECT_TRUE(window.waitFor([&] { return window.bar(SB_VERT).nMax == 999'999; }));
    EXPECT_TRUE(window.looksAsPaintedAnew());
    window.source.setRowCount(2);
    window.grid.rowCountChanged();
    EXPECT_TRUE(window.waitFor(
        [&] { return (::GetWindowLongPtrW(window.grid.hwnd(), GWL_STYLE) & WS_VSCROLL) == 0; }));
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST(GridPaint, FewerRowsThanTheScrollPositionBringTheLastIntoView) {
    GridWindow window(1000);
    window.grid.setFirstRow(900);
    window.source.setRowCount(50);
    window.grid.rowCountChanged();
    window.pump();
    EXPECT_EQ(window.grid.geometry().endRow(), 50);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST(GridPaint, ChangedDataIsPaintedAnewAndThePositionStays) {
    GridWindow window(1000);
    window.grid.setFirstRow(100);
    window.source.put(101, TraceSource::kProcess, L"Changed");
    std::int64_t painted = window.cellsPaintedBy([&] { window.grid.dataChanged(); });
    EXPECT_EQ(painted, rowsOnView(window) * kColumns);
    EXPECT_EQ(window.grid.firstRow(), 100);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

// The strip of a row's background between the text of two columns.
COLORREF backgroundOf(const GridWindow& window, std::int64_t row) {
    Rect cell = window.grid.geometry().cellRect({row, TraceSource::kProcess});
    return Snapshot::ofClient(window.grid.hwnd()).at(cell.left + 3, cell.bottom - 4);
}

TEST(GridPaint, TheCurrentRowIsSeenWithAndWithoutFocus) {
    GridWindow window(100);
    window.click(window.middleOf({4, TraceSource::kTrace}));
    COLORREF focused = backgroundOf(window, 4);
    COLORREF other = backgroundOf(window, 5);
    ::SetFocus(window.host.hwnd());
    window.pump();
    COLORREF unfocused = backgroundOf(window, 4);
    EXPECT_NE(focused, other);
    EXPECT_NE(unfocused, other);
    EXPECT_NE(unfocused, focused);
    EXPECT_EQ(other, ::GetSysColor(COLOR_WINDOW));
}

TEST(GridPaint, TheRecordSelectorMarksTheCurrentRowOnly) {
    GridWindow window(100);
    window.click(window.middleOf({4, 0}));
    Snapshot view = Snapshot::ofClient(window.grid.hwnd());
    auto colors = [&](std::int64_t row) {
        return view.colors(window.grid.geometry().selectorRect(row));
    };
    EXPECT_GT(colors(4), colors(5));
    EXPECT_EQ(colors(3), colors(5));
    window.grid.setRecordSelectors(false);
    EXPECT_EQ(window.grid.geometry().dataArea().left, 0);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

// How much of a part of a cell is not background: the upper or the lower half.
int ink(const GridWindow& window, Cell cell, bool lowerHalf) {
    Rect rect = window.grid.geometry().cellRect(cell);
    int middle = (rect.top + rect.bottom) / 2;
    Rect half{rect.left + 2, lowerHalf ? middle : rect.top + 2, rect.right - 3,
              lowerHalf ? rect.bottom - 3 : middle};
    int background =
        Snapshot::ofClient(window.grid.hwnd()).count(half, ::GetSysColor(COLOR_WINDOW));
    return half.width() * half.height() - background;
}

TEST(GridPaint, WrappingCellsShowTwoLinesOthersOne) {
    GridWindow window(100);
    EXPECT_GT(ink(window, {3, TraceSource::kTrace}, true), 50);
    EXPECT_GT(ink(window, {3, TraceSource::kSource}, false), 50);
    EXPECT_LT(ink(window, {3, TraceSource::kSource}, true), 20);
    window.grid.column(TraceSource::kTrace).setWrapText(false);
    window.pump();
    EXPECT_LT(ink(window, {3, TraceSource::kTrace}, true), 60);
}

TEST(GridPaint, ALineFeedBeginsASecondLineWhereTheCellWraps) {
    GridWindow window(100);
    window.source.put(3, TraceSource::kTrace, L"one\r\ntwo");
    window.source.put(4, TraceSource::kTrace, L"one two");
    window.grid.dataChanged();
    window.pump();
    EXPECT_GT(ink(window, {3, TraceSource::kTrace}, true),
              ink(window, {4, TraceSource::kTrace}, true));
}

TEST(GridPaint, NumbersStandAtTheRight) {
    GridWindow window(100);
    window.grid.column(TraceSource::kLevel).setWidth(forms::Twips(1500));
    window.pump();
    Rect cell = window.grid.geometry().cellRect({3, TraceSource::kLevel});
    Rect left{cell.left + 1, cell.top + 1, cell.left + 50, cell.bottom - 2};
    Rect right{cell.right - 50, cell.top + 1, cell.right - 2, cell.bottom - 2};
    Snapshot view = Snapshot::ofClient(window.grid.hwnd());
    EXPECT_EQ(view.colors(left), 1);
    EXPECT_GT(view.colors(right), 1);
}

TEST(GridPaint, SortPicturesAreDrawnUpAndDown) {
    GridWindow window(100);
    Rect heading = window.grid.geometry().headingRect(TraceSource::kTrace);
    auto look = [&](const wchar_t* style) {
        window.grid.column(TraceSource::kTrace).setHeadingStyle(style);
        window.pump();
        return Snapshot::ofClient(window.grid.hwnd());
    };
    Snapshot plain = look(L"Heading");
    Snapshot up = look(L"Ascending");
    Snapshot down = look(L"Descending");
    EXPECT_GT(plain.differences(up, heading), 8);
    EXPECT_GT(plain.differences(down, heading), 8);
    EXPECT_GT(up.differences(down, heading), 4);
    EXPECT_EQ(look(L"Heading").differences(plain), 0);
}

TEST(GridPaint, PrintsIntoAnotherContext) {
    GridWindow window(100);
    Snapshot screen = Snapshot::ofClient(window.grid.hwnd());
    std::int64_t painted = window.cellsPaintedBy([&] {
        HDC dc = ::GetDC(window.grid.hwnd());
        HDC memory = ::CreateCompatibleDC(dc);
        HBITMAP bitmap = ::CreateCompatibleBitmap(dc, screen.width(), screen.height());
        HGDIOBJ original = ::SelectObject(memory, bitmap);
        ::SendMessageW(window.grid.hwnd(), WM_PRINTCLIENT, reinterpret_cast<WPARAM>(memory),
                       PRF_CLIENT);
        ::BitBlt(dc, 0, 0, screen.width(), screen.height(), memory, 0, 0, SRCCOPY);
        ::SelectObject(memory, original);
        ::DeleteObject(bitmap);
        ::DeleteDC(memory);
        ::ReleaseDC(window.grid.hwnd(), dc);
    });
    EXPECT_EQ(painted, rowsOnView(window) * kColumns);
    EXPECT_EQ(screen.differences(Snapshot::ofClient(window.grid.hwnd())), 0);
}

class FailingSource : public TraceSource {
public:
    using TraceSource::TraceSource;
    void cellText(std::int64_t row, int column, std::wstring& text) const override {
        if (fails) throw std::runtime_error("the file is gone");
        TraceSource::cellText(row, column, text);
    }
    bool fails = true;
};

TEST(GridPaint, ASourceThatThrowsIsReportedAndTheWindowLives) {
    int errors = 0;
    auto former = forms::setUnexpectedErrorHandler([&](std::exception_ptr) { ++errors; });
    GridWindow window(10);
    FailingSource failing(10);
    window.grid.setDataSource(&failing);
    window.pump();
    EXPECT_GE(errors, 1);
    EXPECT_LT(errors, 10);
    failing.fails = false;
    EXPECT_EQ(window.cellsPaintedBy([&] { window.grid.dataChanged(); }), 10 * kColumns);
    window.grid.setDataSource(nullptr);
    forms::setUnexpectedErrorHandler(former);
}

// Whatever the user does, what was moved and painted in pieces is what one paint would show.
class GridPaintSequence : public testing::TestWithParam<unsigned> {};

TEST_P(GridPaintSequence, PiecesMakeTheWhole) {
    GridWindow window(400, forms::Dpi(GetParam()));
    std::mt19937 random(GetParam());
    auto upTo = [&](int most) { return static_cast<int>(random() % static_cast<unsigned>(most)); };
    window.grid.column(TraceSource::kTrace).setWidth(forms::Twips(9000));
    const int keys[] = {VK_UP, VK_DOWN, VK_PRIOR, VK_NEXT, VK_LEFT, VK_RIGHT, VK_HOME, VK_END};
    for (int step = 0; step < 120; ++step) {
        switch (upTo(8)) {
            case 0:
                window.key(keys[upTo(8)]);
                break;
            case 1:
                window.wheel(upTo(400) - 200);
                break;
            case 2:
                window.wheel(upTo(400) - 200, MK_SHIFT);
                break;
            case 3:
                window.click({upTo(700), 60 + upTo(400)});
                break;
            case 4:
                window.grid.column(upTo(7)).setWidth(forms::Twips(600 + 15 * upTo(150)));
                break;
            case 5:
                window.scrollBar(upTo(2), upTo(4));
                break;
            case 6:
                window.source.setRowCount(window.source.rowCount() + upTo(9));
                window.grid.rowCountChanged();
                break;
            default:
                window.source.setCurrentRow(upTo(400));
                window.grid.currentRowChanged();
                break;
        }
        ASSERT_TRUE(window.looksAsPaintedAnew()) << "after step " << step;
    }
}

INSTANTIATE_TEST_SUITE_P(Dpi, GridPaintSequence, testing::Values(96u, 144u));

}  // namespace
}  // namespace grid

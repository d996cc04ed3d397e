// Ranges of rows, and copying them.
#include "tests/toolkit/grid/grid_window.h"
#include "tests/toolkit/grid/held_key.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace grid {
namespace {

std::wstring onClipboard(HWND owner) {
    std::wstring text;
    if (OpenClipboard(owner)) {
        if (HANDLE memory = GetClipboardData(CF_UNICODETEXT)) {
            text = static_cast<const wchar_t*>(GlobalLock(memory));
            GlobalUnlock(memory);
        }
        CloseClipboard();
    }
    return text;
}

class GridSelection : public testing::Test {
protected:
    GridSelection() : window(1000) {}

    std::wstring copied() {
        HeldKey ctrl(VK_CONTROL);
        window.key('C');
        return onClipboard(window.host.hwnd());
    }
    void selectAll() {
        HeldKey ctrl(VK_CONTROL);
        window.key('A');
    }
    Point selectorOf(RowIndex view) {
        const Rect rect = window.grid.geometry().selectorRect(view);
        return {rect.left + 3, (rect.top + rect.bottom) / 2};
    }
    const Selection& selection() const { return window.grid.selection(); }

    GridWindow window;
};

TEST_F(GridSelection, ShiftAndAKeyDrawARange) {
    window.key(VK_DOWN);
    {
        HeldKey shift(VK_SHIFT);
        window.key(VK_DOWN);
        window.key(VK_DOWN);
    }
    EXPECT_EQ(selection().firstRow(), 1);
    EXPECT_EQ(selection().lastRow(), 3);
    EXPECT_EQ(window.source.currentRow(), 3);
    {
        HeldKey shift(VK_SHIFT);
        window.key(VK_PRIOR);
    }
    EXPECT_EQ(selection().firstRow(), 0);
    EXPECT_EQ(selection().lastRow(), 1);
    window.key(VK_DOWN);
    EXPECT_EQ(selection().firstRow(), 1);
    EXPECT_EQ(selection().lastRow(), 1);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridSelection, ShiftAndAClickDrawARange) {
    window.click(window.middleOf({2, 1}));
    {
        HeldKey shift(VK_SHIFT);
        window.click(window.middleOf({6, 3}));
    }
    EXPECT_EQ(selection().firstRow(), 2);
    EXPECT_EQ(selection().lastRow(), 6);
    EXPECT_EQ(window.grid.col(), 3);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridSelection, OnlyTheRowsThatChangeArePainted) {
    window.key(VK_DOWN);
    HeldKey shift(VK_SHIFT);
    window.key(VK_DOWN);
    const std::int64_t cells = window.cellsPaintedBy([&] { window.key(VK_DOWN); });
    EXPECT_EQ(cells, 2 * window.grid.columnCount())
        << "the row that was the current one, and the new";
    EXPECT_EQ(window.cellsPaintedBy([&] { window.key(VK_UP); }), 2 * window.grid.columnCount());
    // Without a change of the current cell only the rows that come and go are painted.
    window.key(VK_DOWN);
    window.key(VK_DOWN);
    window.key(VK_DOWN);
    EXPECT_EQ(selection().firstRow(), 1);
    EXPECT_EQ(selection().lastRow(), 5);
    const std::int64_t onView = window.grid.geometry().endRow();
    EXPECT_EQ(window.cellsPaintedBy([&] { selectAll(); }),
              (onView - 5) * window.grid.columnCount());
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridSelection, CtrlAAndAllRowsAreSelectedWhereverTheCurrentOneIs) {
    window.key(VK_DOWN);
    {
        HeldKey ctrl(VK_CONTROL);
        window.key('A');
    }
    EXPECT_EQ(selection().firstRow(), 0);
    EXPECT_EQ(selection().lastRow(), 999);
    EXPECT_EQ(window.grid.row(), 1);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridSelection, CtrlCCopiesTheCurrentCell) {
    window.click(window.middleOf({4, TraceSource::kComponent}));
    EXPECT_EQ(copied(), L"Session");
}

TEST_F(GridSelection, CtrlCCopiesTheSelectedRowsInTheOrderOfTheColumns) {
    window.grid.column(TraceSource::kTrace).setVisible(false);
    window.grid.column(TraceSource::kDate).setVisible(false);
    window.grid.moveColumn(TraceSource::kLevel, 0);
    window.click(selectorOf(1));
    EXPECT_EQ(copied(), L"1\tRouter\tsource1.cpp\t1001\tDialer\r\n");
    {
        HeldKey shift(VK_SHIFT);
        window.click(selectorOf(2));
    }
    EXPECT_EQ(copied(),
              L"1\tRouter\tsource1.cpp\t1001\tDialer\r\n2\tNodeMgr\tsource2.cpp\t1002\tQueue\r\n");
}

TEST_F(GridSelection, FieldsThatWouldBreakTheTableAreQuoted) {
    window.source.put(0, TraceSource::kProcess, L"two\r\nlines");
    window.source.put(0, TraceSource::kSource, L"a\ttab");
    window.source.put(0, TraceSource::kComponent, L"say \"no\"");
    window.source.put(0, TraceSource::kLevel, std::wstring(L"a\0b", 3));
    window.grid.column(TraceSource::kTrace).setVisible(false);
    window.grid.column(TraceSource::kDate).setVisible(false);
    window.grid.column(TraceSource::kNumber).setVisible(false);
    window.click(selectorOf(0));
    EXPECT_EQ(copied(), L"\"two\r\nlines\"\t\"a\ttab\"\t\"say \"\"no\"\"\"\ta b\r\n");
    window.click(window.middleOf({0, TraceSource::kProcess}));
    EXPECT_EQ(copied(), L"two\r\nlines") << "a single cell is copied as it is";
}

TEST_F(GridSelection, GroupsAreCopiedAsTheyRead) {
    window.grid.setGroupColumns({{TraceSource::kComponent, false}});
    {
        HeldKey ctrl(VK_CONTROL);
        window.key('A');
    }
    EXPECT_EQ(copied(),
              L"Component: Dialer  (250)\r\nComponent: Queue  (250)\r\n"
              L"Component: Session  (250)\r\nComponent: Store  (250)\r\n");
}

TEST_F(GridSelection, TheWindowAnswersWhileRowsAreCopied) {
    selectAll();
    std::atomic<bool> answered{false};
    bool meanwhile = false;
    std::thread other;
    window.source.onAsked = [&] {
        meanwhile = answered;
        if (!other.joinable()) {
            other = std::thread([&] {
                answered = SendMessageTimeoutW(window.grid.hwnd(), WM_NULL, 0, 0, SMTO_NORMAL,
                                               60000, nullptr) != 0;
            });
        }
        if (!meanwhile) Sleep(1);
    };
    const std::wstring text = copied();
    window.source.onAsked = nullptr;
    ASSERT_TRUE(other.joinable());
    window.waitFor([&] { return answered.load(); });
    other.join();
    EXPECT_TRUE(meanwhile);
    EXPECT_EQ(std::count(text.begin(), text.end(), L'\n'), 1000);
}

TEST_F(GridSelection, EscapeEndsACopyAndLeavesTheClipboard) {
    window.click(window.middleOf({4, TraceSource::kComponent}));
    EXPECT_EQ(copied(), L"Session");
    ASSERT_TRUE(window.waitFor([&] { return GetForegroundWindow() == window.host.hwnd(); }));
    selectAll();
    int asked = 0;
    window.source.onAsked = [&] {
        if (++asked == 10) {
            INPUT keys[2]{};
            for (INPUT& key : keys) {
                key.type = INPUT_KEYBOARD;
                key.ki.wVk = VK_ESCAPE;
            }
            keys[1].ki.dwFlags = KEYEVENTF_KEYUP;
            SendInput(2, keys, sizeof(INPUT));
        }
        Sleep(1);
    };
    EXPECT_EQ(copied(), L"Session");
    window.source.onAsked = nullptr;
    EXPECT_GE(asked, 10);
    EXPECT_LT(asked, 7000) << "seven texts a row";
}

TEST_F(GridSelection, NothingIsCopiedWithoutRows) {
    TraceSource empty(0);
    window.grid.setDataSource(&empty);
    {
        HeldKey ctrl(VK_CONTROL);
        window.key('A');
    }
    EXPECT_EQ(window.grid.selectedText(), L"");
    window.grid.setDataSource(nullptr);
    EXPECT_EQ(window.grid.selectedText(), L"");
}

TEST_F(GridSelection, ASortLeavesTheCurrentRowAlone) {
    HeldKey shift(VK_SHIFT);
    window.key(VK_DOWN);
    window.key(VK_DOWN);
    window.grid.dataChanged();
    EXPECT_EQ(selection().firstRow(), 2);
    EXPECT_EQ(selection().lastRow(), 2);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST_F(GridSelection, RowsThatArriveLeaveTheRange) {
    {
        HeldKey shift(VK_SHIFT);
        window.key(VK_DOWN);
    }
    window.source.setRowCount(5000);
    window.grid.rowCountChanged();
    EXPECT_EQ(selection().firstRow(), 0);
    EXPECT_EQ(selection().lastRow(), 1);
}

}  // namespace
}  // namespace grid

// The running viewer as a user's hands meet it; what came of it is read as a screen reader does.
#include "tests/program/hands.h"
#include "tests/program/running_viewer.h"
#include "tests/support/accessible_client.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

constexpr long kRows = 600;

/// The clipboard's text.
std::wstring copied() {
    std::wstring text;
    if (OpenClipboard(nullptr)) {
        if (HANDLE memory = GetClipboardData(CF_UNICODETEXT)) {
            text = static_cast<const wchar_t*>(GlobalLock(memory));
            GlobalUnlock(memory);
        }
        CloseClipboard();
    }
    return text;
}

class KeysAndMouseTest : public testing::Test {
protected:
    KeysAndMouseTest()
        : viewer{folder, L"-db \"" + folder.makeDatabase("a.mdb", kRows).wstring() + L'"'},
          main{viewer.waitForWindow()} {
        EXPECT_TRUE(hands::front(main));
        gridWindow = FindWindowExW(main, nullptr, L"DataGrid", nullptr);
        EXPECT_TRUE(eventually([&] { return table() && table().childCount() == kRows + 1; }));
        EXPECT_TRUE(sorted(1)) << "sorted when loaded";
    }

    /// Whether the order by a column has been set so many times.
    bool sorted(int times) const {
        return eventually([&] {
            const std::string log = folder.log();
            const std::string mark = "Exiting tdbgridData_HeadClick_0";
            int found = 0;
            for (std::size_t at = 0; (at = log.find(mark, at)) != std::string::npos; ++at) ++found;
            return found >= times;
        });
    }

    AccessibleClient table() const { return AccessibleClient{gridWindow}; }

    std::wstring cell(LONG row, LONG column) const { return table().child(row + 2).value(column); }

    /// Number of the current record, from 0, as its texts tell.
    std::wstring focusedCell() const {
        const AccessibleClient focus = table().focus();
        return focus ? focus.value() : L"(none)";
    }

    RECT headingPlace(const std::wstring& name) const {
        const AccessibleClient headings = table().child(1);
        const LONG count = headings ? headings.childCount() : 0;
        for (LONG column = 1; column <= count; ++column) {
            if (headings.name(column) == name) return headings.location(column);
        }
        return {};
    }

    static POINT middleOf(const RECT& place) {
        return {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
    }

    void click(const RECT& place) const {
        POINT at = middleOf(place);
        ScreenToClient(gridWindow, &at);
        hands::click(gridWindow, at);
    }

    OleSession ole;
    ViewerFolder folder;
    RunningViewer viewer;
    HWND main;
    HWND gridWindow = nullptr;
};

TEST_F(KeysAndMouseTest, KeysMoveSelectAndCopy) {
    const std::wstring second = cell(1, 1);
    hands::press(VK_DOWN);
    EXPECT_TRUE(eventually([&] { return focusedCell() == second; }));
    hands::press(VK_END, {VK_CONTROL});
    const auto selected = [&](LONG row) {
        return (table().child(row + 2).state() & STATE_SYSTEM_SELECTED) != 0;
    };
    EXPECT_TRUE(eventually([&] { return selected(kRows - 1); }));
    hands::press(VK_HOME, {VK_CONTROL});
    hands::press(VK_DOWN, {VK_SHIFT});
    hands::press(VK_DOWN, {VK_SHIFT});
    EXPECT_TRUE(eventually([&] { return selected(2); }));
    EXPECT_TRUE(selected(0));
    EXPECT_FALSE(selected(3));
    const DWORD before = GetClipboardSequenceNumber();
    hands::press('C', {VK_CONTROL});
    EXPECT_TRUE(eventually([&] {
        // Whoever looks keeps the clipboard from the viewer for that time.
        if (GetClipboardSequenceNumber() == before) return false;
        const std::wstring text = copied();
        return std::count(text.begin(), text.end(), L'\n') == 3 && text.starts_with(cell(0, 1)) &&
               text.find(L'\t' + cell(2, 2) + L'\t') != std::wstring::npos;
    })) << std::filesystem::path{copied()}.string();
}

TEST_F(KeysAndMouseTest, AHeadingClickSortsAndAnotherReverses) {
    const auto first = [&] { return cell(0, 2); };
    const auto last = [&] { return cell(kRows - 1, 2); };
    click(headingPlace(L"Process"));
    ASSERT_TRUE(sorted(2));  // in the order by date the first may be less than the last, too
    ASSERT_LT(first(), last());
    const std::wstring least = first();
    const std::wstring greatest = last();
    click(headingPlace(L"Process"));
    EXPECT_TRUE(eventually([&] { return first() == greatest && last() == least; }));
}

TEST_F(KeysAndMouseTest, AHeadingDraggedUpGroupsAndOutAgainUngroups) {
    const RECT heading = headingPlace(L"Component");
    const RECT headings = table().child(1).location();
    const POINT strip{headings.right - 60, headings.top - 12};
    hands::drag(middleOf(heading), strip);
    ASSERT_TRUE(eventually([&] {
        const long count = table().childCount();
        return count > 1 && count < 100;
    }));
    const long groups = table().childCount() - 1;
    long rows = 0;
    for (LONG group = 2; group <= groups + 1; ++group) {
        const std::wstring name = table().child(group).name();
        EXPECT_TRUE(name.starts_with(L"Component: ")) << std::filesystem::path{name}.string();
        rows += std::stol(name.substr(name.rfind(L'(') + 1));
    }
    EXPECT_EQ(rows, kRows);

    hands::press(VK_HOME, {VK_CONTROL});
    hands::press(VK_RIGHT);
    EXPECT_TRUE(eventually([&] { return table().childCount() > groups + 1; })) << "unfolded";
    hands::press(VK_DIVIDE);
    EXPECT_TRUE(eventually([&] { return table().childCount() == groups + 1; }));
    hands::press(VK_MULTIPLY);
    EXPECT_TRUE(eventually([&] { return table().childCount() == groups + 1 + kRows; }));

    const RECT row = table().child(1).location();
    hands::drag({row.left + 40, row.top - 18}, {row.left + 300, row.top + 200});
    EXPECT_TRUE(eventually([&] { return table().childCount() == kRows + 1; }));
    EXPECT_GT(headingPlace(L"Component").right, 0);
}

TEST_F(KeysAndMouseTest, TheMenuKeysOpenTheirDialogs) {
    hands::press('F', {VK_CONTROL});
    const HWND find = viewer.waitForWindow(L"VorelleDiagnosticViewer.dlgFind");
    ASSERT_TRUE(find);
    hands::press(VK_ESCAPE);
    EXPECT_TRUE(eventually([&] { return !IsWindowVisible(find); }));
    hands::press('O', {VK_CONTROL});
    const HWND open = viewer.waitForWindow(kDialogClass);
    ASSERT_TRUE(open);
    EXPECT_EQ(textOf(open), L"Select Diagnostic Database File");
    PostMessageW(open, WM_COMMAND, IDCANCEL, 0);
    EXPECT_TRUE(eventually([&] { return viewer.window(kDialogClass) == nullptr; }));
    EXPECT_EQ(table().childCount(), kRows + 1) << "cancelled";
}

TEST_F(KeysAndMouseTest, AltAndF4EndTheProgram) {
    hands::press(VK_F4, {VK_MENU});
    EXPECT_TRUE(viewer.waitForEnd());
    EXPECT_EQ(viewer.exitCode(), 0u);
}

}  // namespace

// What a screen reader, a process of its own, learns of the running viewer.
#include "tests/program/hands.h"
#include "tests/program/running_viewer.h"
#include "tests/support/accessible_client.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace {

std::wstring classOf(HWND window) {
    std::array<wchar_t, 128> name{};
    GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return name.data();
}

/// All windows within a window.
std::vector<HWND> within(HWND window) {
    std::vector<HWND> found;
    EnumChildWindows(
        window,
        [](HWND child, LPARAM list) {
            reinterpret_cast<std::vector<HWND>*>(list)->push_back(child);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&found));
    return found;
}

HWND childOfClass(HWND window, const wchar_t* className) {
    for (const HWND child : within(window)) {
        if (classOf(child) == className) return child;
    }
    return nullptr;
}

class AccessibilityTest : public testing::Test {
protected:
    AccessibilityTest()
        : viewer{folder, L"-db \"" + folder.makeDatabase("a.mdb", 400).wstring() + L'"'} {}

    /// The grid, when all rows are loaded and sorted.
    AccessibleClient loadedTable() {
        main = viewer.waitForWindow();
        gridWindow = main ? childOfClass(main, L"DataGrid") : nullptr;
        eventually([&] {
            const AccessibleClient table{gridWindow};
            return table && table.childCount() == 401 &&
                   folder.log().find("Exiting tdbgridData_HeadClick_0") != std::string::npos;
        });
        // The order by date, which follows the last row, would undo what a test does before it.
        EXPECT_TRUE(eventually([&] {
            return folder.log().find("Exiting tdbgridData_HeadClick_0") != std::string::npos;
        }));
        return AccessibleClient{gridWindow};
    }

    OleSession ole;
    ViewerFolder folder;
    RunningViewer viewer;
    HWND main = nullptr;
    HWND gridWindow = nullptr;
};

TEST_F(AccessibilityTest, TheGridIsATableOfTraceLines) {
    const AccessibleClient table = loadedTable();
    ASSERT_TRUE(table);
    EXPECT_EQ(table.role(), ROLE_SYSTEM_TABLE);
    EXPECT_EQ(table.name(), L"Diagnostic Data");
    EXPECT_EQ(table.childCount(), 401);
    const AccessibleClient headings = table.child(1);
    ASSERT_TRUE(headings);
    ASSERT_EQ(headings.childCount(), 9);
    EXPECT_EQ(headings.role(1), ROLE_SYSTEM_COLUMNHEADER);
    const std::vector<std::wstring> names{L"Date", L"Process",   L"Source",
                                          L"No.",  L"Component", L"Level",
                                          L"Port", L"CallId",    L"Diagnostic"};
    for (LONG column = 1; column <= 9; ++column) {
        EXPECT_EQ(headings.name(column), names[static_cast<std::size_t>(column) - 1]);
    }
    const AccessibleClient row = table.child(2);
    ASSERT_TRUE(row);
    EXPECT_EQ(row.role(), ROLE_SYSTEM_ROW);
    EXPECT_EQ(row.childCount(), 9);
    EXPECT_EQ(row.role(2), ROLE_SYSTEM_CELL);
    EXPECT_EQ(row.name(2), L"Process");
    EXPECT_NE(row.value(2), L"");
    EXPECT_NE(row.name().find(row.value(2)), std::wstring::npos);
    EXPECT_NE(row.state(2) & STATE_SYSTEM_SELECTED, 0) << "the first row is the current one";
    EXPECT_EQ(table.child(3).state(2) & STATE_SYSTEM_SELECTED, 0);
}

TEST_F(AccessibilityTest, TheFocusIsFoundAndMoved) {
    const AccessibleClient table = loadedTable();
    ASSERT_TRUE(table);
    const AccessibleClient cell = table.child(11).child(2);
    ASSERT_TRUE(cell);
    EXPECT_EQ(cell->accSelect(SELFLAG_TAKEFOCUS, AccessibleClient::id(CHILDID_SELF)), S_OK);
    EXPECT_NE(table.child(11).state(2) & STATE_SYSTEM_SELECTED, 0);
    const AccessibleClient focus = table.focus();
    ASSERT_TRUE(focus);
    EXPECT_EQ(focus.name(), L"Process");
    EXPECT_EQ(focus.value(), cell.value());
}

TEST_F(AccessibilityTest, AHeadingSortsWhenItIsClicked) {
    const AccessibleClient table = loadedTable();
    ASSERT_TRUE(table);
    const AccessibleClient heading = table.child(1).child(2);
    EXPECT_EQ(heading->accDoDefaultAction(AccessibleClient::id(CHILDID_SELF)), S_OK);
    std::vector<std::wstring> values;
    for (LONG row = 2; row <= 401; row += 19) values.push_back(table.child(row).value(2));
    EXPECT_TRUE(std::is_sorted(values.begin(), values.end()));
    EXPECT_NE(values.front(), values.back());
}

void expectNames(HWND window, std::size_t least) {
    std::size_t named = 0;
    for (const HWND child : within(window)) {
        // What a control is made of speaks through the control.
        if (!IsWindowVisible(child) || GetParent(child) != window) continue;
        const AccessibleClient object{child};
        ASSERT_TRUE(object);
        EXPECT_NE(object.name(), L"") << std::filesystem::path{classOf(child)}.string();
        ++named;
    }
    EXPECT_GE(named, least);
}

TEST_F(AccessibilityTest, EveryControlHasAName) {
    ASSERT_TRUE(loadedTable());
    expectNames(main, 4);
    const HWND tabs = childOfClass(main, WC_TABCONTROLW);
    PostMessageW(tabs, WM_KEYDOWN, VK_RIGHT, 0);
    const HWND tree = childOfClass(main, WC_TREEVIEWW);
    ASSERT_TRUE(eventually([&] { return IsWindowVisible(tree); }));
    expectNames(main, 9);
    ASSERT_TRUE(hands::front(main));
    hands::press('F', {VK_CONTROL});
    const HWND find = viewer.waitForWindow(L"VorelleDiagnosticViewer.dlgFind");
    ASSERT_TRUE(find);
    expectNames(find, 6);
}

}  // namespace

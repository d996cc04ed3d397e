// What a screen reader learns of a grid. That it learns the same from another process, a test of
// the whole program sees.
#include "tests/support/accessible_client.h"
#include "tests/toolkit/grid/grid_window.h"
#include "tests/toolkit/grid/held_key.h"

#include <gtest/gtest.h>

namespace grid {
namespace {

class GridAccessibleTest : public testing::Test {
protected:
    GridAccessibleTest() : window(1000) { window.grid.setCaption(L"Trace lines"); }

    AccessibleClient table() const { return AccessibleClient{window.grid.hwnd()}; }

    OleSession ole;
    GridWindow window;
};

TEST_F(GridAccessibleTest, IsATableOfRowsOfCells) {
    const AccessibleClient found = table();
    ASSERT_TRUE(found);
    EXPECT_EQ(found.role(), ROLE_SYSTEM_TABLE);
    EXPECT_EQ(found.name(), L"Trace lines");
    EXPECT_EQ(found.childCount(), 1001) << "the headings and the rows";
    EXPECT_NE(found.state() & STATE_SYSTEM_FOCUSED, 0);

    const AccessibleClient headings = found.child(1);
    ASSERT_TRUE(headings);
    EXPECT_EQ(headings.role(), ROLE_SYSTEM_ROW);
    EXPECT_EQ(headings.childCount(), 7);
    EXPECT_EQ(headings.role(2), ROLE_SYSTEM_COLUMNHEADER);
    EXPECT_EQ(headings.name(2), L"Process");

    const AccessibleClient row = found.child(3);
    ASSERT_TRUE(row);
    EXPECT_EQ(row.role(), ROLE_SYSTEM_ROW);
    EXPECT_EQ(row.childCount(), 7);
    EXPECT_EQ(row.name(2), L"Process");
    EXPECT_EQ(row.value(2), L"Router");
    EXPECT_EQ(row.role(2), ROLE_SYSTEM_CELL);
    EXPECT_NE(row.name().find(L"Router; source1.cpp; 1001; Dialer"), std::wstring::npos);
    EXPECT_EQ(row.child(2).value(), L"Router");
    EXPECT_EQ(row.parent().role(), ROLE_SYSTEM_TABLE);
    EXPECT_EQ(row.child(2).parent().name(), row.name());
}

TEST_F(GridAccessibleTest, ChildrenThatAreNotThereAreNone) {
    const AccessibleClient found = table();
    EXPECT_FALSE(found.child(1002));
    EXPECT_FALSE(found.child(1).child(8));
    EXPECT_FALSE(found.child(2).child(8));
    EXPECT_FALSE(found.child(2).child(-1));
    EXPECT_FALSE(found.child(-1'000'000));
    EXPECT_EQ(found.name(5000), L"");
}

TEST_F(GridAccessibleTest, TheFocusIsTheCurrentCell) {
    window.click(window.middleOf({4, TraceSource::kComponent}));
    const AccessibleClient focus = table().focus();
    ASSERT_TRUE(focus);
    EXPECT_EQ(focus.role(), ROLE_SYSTEM_CELL);
    EXPECT_EQ(focus.name(), L"Component");
    EXPECT_EQ(focus.value(), L"Session");
    const long state = focus.state();
    EXPECT_NE(state & STATE_SYSTEM_FOCUSED, 0);
    EXPECT_NE(state & STATE_SYSTEM_SELECTED, 0);
    EXPECT_EQ(state & STATE_SYSTEM_OFFSCREEN, 0);
    SetFocus(window.host.hwnd());
    EXPECT_FALSE(table().focus());
}

TEST_F(GridAccessibleTest, ASelectedRangeCanBeWalkedThrough) {
    window.key(VK_DOWN);
    {
        HeldKey shift(VK_SHIFT);
        window.key(VK_DOWN);
        window.key(VK_DOWN);
    }
    VARIANT answer{};
    ASSERT_EQ(table()->get_accSelection(&answer), S_OK);
    ASSERT_EQ(answer.vt, VT_UNKNOWN);
    IEnumVARIANT* rows = nullptr;
    answer.punkVal->QueryInterface(IID_IEnumVARIANT, reinterpret_cast<void**>(&rows));
    answer.punkVal->Release();
    ASSERT_NE(rows, nullptr);
    VARIANT row[4] = {};
    ULONG fetched = 0;
    EXPECT_EQ(rows->Next(4, row, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 3u);
    EXPECT_EQ(AccessibleClient{row[0]}.value(2), L"Router");
    EXPECT_EQ(AccessibleClient{row[1]}.value(2), L"NodeMgr");
    EXPECT_EQ(AccessibleClient{row[2]}.value(2), L"CallServer");
    rows->Release();
}

TEST_F(GridAccessibleTest, TheCellUnderAPointIsFoundWhereItSaysItIs) {
    const RECT place = table().child(5).location(2);
    const AccessibleClient found =
        table().at({(place.left + place.right) / 2, (place.top + place.bottom) / 2});
    ASSERT_TRUE(found);
    EXPECT_EQ(found.name(), L"Process");
    EXPECT_EQ(found.value(), L"CallServer") << "row 3";
    const RECT away = table().child(900).location();
    EXPECT_EQ(away.right - away.left, 0);
    EXPECT_NE(table().child(900).state() & STATE_SYSTEM_OFFSCREEN, 0);
}

TEST_F(GridAccessibleTest, NeighboursAreReached) {
    const AccessibleClient cell = table().child(2).child(2);
    EXPECT_EQ(cell.next(NAVDIR_RIGHT).name(), L"Source");
    EXPECT_EQ(cell.next(NAVDIR_DOWN).value(), L"Router");
    EXPECT_FALSE(cell.next(NAVDIR_UP));
    EXPECT_FALSE(table().child(2).child(1).next(NAVDIR_LEFT));
    EXPECT_EQ(table().next(NAVDIR_FIRSTCHILD).childCount(), 7);
    EXPECT_EQ(table().child(2).next(NAVDIR_PREVIOUS).name(1), L"Date");
    EXPECT_EQ(table().child(1).next(NAVDIR_NEXT).value(2), L"CallServer");
}

TEST_F(GridAccessibleTest, ACellCanBeMadeTheCurrentOne) {
    const AccessibleClient cell = table().child(8).child(3);
    EXPECT_EQ(cell->accSelect(SELFLAG_TAKEFOCUS, AccessibleClient::id(CHILDID_SELF)), S_OK);
    EXPECT_EQ(window.grid.row(), 6);
    EXPECT_EQ(window.grid.col(), 2);
}

TEST_F(GridAccessibleTest, AHeadingIsClicked) {
    int clicked = -1;
    window.grid.onHeadClick = [&](int column) { clicked = column; };
    const AccessibleClient heading = table().child(1).child(3);
    EXPECT_EQ(heading.action(), L"Click");
    EXPECT_EQ(heading->accDoDefaultAction(AccessibleClient::id(CHILDID_SELF)), S_OK);
    EXPECT_EQ(clicked, 2);
    EXPECT_EQ(table().child(3)->accDoDefaultAction(AccessibleClient::id(1)), DISP_E_MEMBERNOTFOUND);
}

TEST_F(GridAccessibleTest, GroupsSayWhatTheyHoldAndFold) {
    window.grid.setGroupColumns({{TraceSource::kComponent, false}});
    const AccessibleClient found = table();
    EXPECT_EQ(found.childCount(), 5);
    EXPECT_EQ(found.child(1).childCount(), 6);
    const AccessibleClient group = found.child(3);
    EXPECT_EQ(group.name(), L"Component: Queue  (250)");
    EXPECT_EQ(group.childCount(), 0);
    EXPECT_NE(group.state() & STATE_SYSTEM_COLLAPSED, 0);
    EXPECT_EQ(group.action(), L"Expand");
    EXPECT_EQ(group->accDoDefaultAction(AccessibleClient::id(CHILDID_SELF)), S_OK);
    EXPECT_NE(group.state() & STATE_SYSTEM_EXPANDED, 0);
    EXPECT_EQ(found.childCount(), 255);
    EXPECT_EQ(found.child(4).value(2), L"NodeMgr") << "row 2";
}

// The numbers in events lead to what they are about.
TEST_F(GridAccessibleTest, AnEventNamesTheCellThatGotTheFocus) {
    static LONG child;
    child = 0;
    (void)table();  // Somebody listens.
    HWINEVENTHOOK hook = SetWinEventHook(
        EVENT_OBJECT_FOCUS, EVENT_OBJECT_FOCUS, nullptr,
        [](HWINEVENTHOOK, DWORD, HWND, LONG object, LONG id, DWORD, DWORD) {
            child = object == OBJID_CLIENT ? id : 0;
        },
        GetCurrentProcessId(), GetCurrentThreadId(), WINEVENT_OUTOFCONTEXT);
    window.key(VK_DOWN);
    window.key(VK_RIGHT);
    EXPECT_TRUE(window.waitFor([] { return child == -1 - (1 * 7 + 1); })) << child;
    EXPECT_EQ(table().child(child).value(), L"Router");
    UnhookWinEvent(hook);
}

TEST_F(GridAccessibleTest, AnObjectOutlivesItsGrid) {
    const AccessibleClient found = table();
    const AccessibleClient row = found.child(2);
    window.grid.destroy();
    EXPECT_EQ(row.name(), L"");
    EXPECT_EQ(row.role(), -1);
    EXPECT_EQ(found.childCount(), 0);
    EXPECT_FALSE(found.child(2));
}

}  // namespace
}  // namespace grid

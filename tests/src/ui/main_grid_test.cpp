// The main window's grid met by the messages of keys and mouse: sorting, sizing, grouping, dropped
// files, and the window's geometry at all densities.
#include "src/text/text.h"
#include "tests/src/ui/main_window.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>

namespace {

using namespace forms::literals;

class MainGridTest : public MainWindowTest {
protected:
    grid::Grid& traces() { return form.tdbgridData; }

    void openLoaded(std::uint32_t count) {
        form.show();
        open(makeFile("a.mdb", count));
        ASSERT_TRUE(waitLoaded());
        forms::doEvents();
    }

    POINT headingMiddle(const wchar_t* field) {
        const grid::Rect heading = traces().geometry().headingRect(traces().columnIndex(field));
        return {heading.left + std::min(heading.width() / 2, 60),
                (heading.top + heading.bottom) / 2};
    }

    void mouse(UINT message, POINT at) {
        ::SendMessageW(traces().hwnd(), message, message == WM_LBUTTONUP ? 0 : MK_LBUTTON,
                       MAKELPARAM(at.x, at.y));
    }

    void clickHeading(const wchar_t* field) {
        const POINT at = headingMiddle(field);
        mouse(WM_LBUTTONDOWN, at);
        mouse(WM_LBUTTONUP, at);
        forms::doEvents();
    }

    void drag(POINT from, POINT to) {
        mouse(WM_LBUTTONDOWN, from);
        mouse(WM_MOUSEMOVE, {(from.x + to.x) / 2, (from.y + to.y) / 2});
        mouse(WM_MOUSEMOVE, to);
        mouse(WM_LBUTTONUP, to);
        forms::doEvents();
    }

    void key(int virtualKey) {
        ::SendMessageW(traces().hwnd(), WM_KEYDOWN, static_cast<WPARAM>(virtualKey), 1);
        forms::doEvents();
    }
};

TEST_F(MainGridTest, ThreeClicksOnDateAndOneOnProcess) {
    openLoaded(500);
    traces().setDataSource(nullptr);
    rows().setSort(u"");
    form.reloadDBGrid(rows());
    clickHeading(L"Date");
    EXPECT_EQ(rows().sort(), u"Date ASC");
    EXPECT_EQ(headingStyle(L"Date"), L"Ascending");
    clickHeading(L"Date");
    EXPECT_EQ(rows().sort(), u"Date DESC");
    EXPECT_EQ(headingStyle(L"Date"), L"Descending");
    clickHeading(L"Date");
    EXPECT_EQ(rows().sort(), u"Date ASC");
    clickHeading(L"Process");
    EXPECT_EQ(rows().sort(), u"Process ASC");
    for (int column = 0; column < traces().columnCount(); ++column) {
        const grid::Column& each = traces().column(column);
        EXPECT_EQ(each.headingStyle(), each.dataField() == L"Process" ? L"Ascending" : L"Heading");
    }
}

TEST_F(MainGridTest, AClickOnTheTraceHeadingSortsNothingButSetsUp) {
    openLoaded(200);
    traces().column(L"Trace").setCaption(L"changed");
    clickHeading(L"Trace");
    EXPECT_EQ(rows().sort(), u"Date ASC");
    EXPECT_EQ(headingStyle(L"Date"), L"Ascending");
    EXPECT_EQ(traces().column(L"Trace").caption(), L"Diagnostic");
}

TEST_F(MainGridTest, TheBorderOfTheTraceHeadingCannotBeDragged) {
    openLoaded(200);
    const auto border = [&](const wchar_t* field) {
        const grid::Rect heading = traces().geometry().headingRect(traces().columnIndex(field));
        return POINT{heading.right - 1, (heading.top + heading.bottom) / 2};
    };
    const forms::Twips trace = traces().column(L"Trace").width();
    drag(border(L"Trace"), {border(L"Trace").x - 50, border(L"Trace").y});
    EXPECT_EQ(traces().column(L"Trace").width(), trace);
    const forms::Twips process = traces().column(L"Process").width();
    drag(border(L"Process"), {border(L"Process").x + 50, border(L"Process").y});
    EXPECT_GT(traces().column(L"Process").width(), process);
}

// The status window shows what goes on; the keys stay with whoever had them.
TEST_F(MainGridTest, SortingLeavesTheFocusWhereItIs) {
    openLoaded(300);
    form.findDialog.show();
    form.findDialog.comboFindWhat.setFocus();
    const HWND focus = ::GetFocus();
    ASSERT_NE(focus, nullptr);
    bool shown = false;
    HWND focusMeanwhile = nullptr;
    forms::post([&] {
        shown = form.status.visible();
        focusMeanwhile = ::GetFocus();
    });
    form.tdbgridData_HeadClick(traces().columnIndex(L"Process"));
    forms::doEvents();
    EXPECT_TRUE(shown);
    EXPECT_EQ(focusMeanwhile, focus);
    EXPECT_EQ(rows().sort(), u"Process ASC");
    EXPECT_FALSE(form.status.visible());
    EXPECT_EQ(::GetFocus(), focus);
    EXPECT_EQ(::GetActiveWindow(), form.findDialog.hwnd());
}

TEST_F(MainGridTest, AFailedSortIsReportedAndLeavesTheWindowUsable) {
    openLoaded(300);
    rows().close();
    form.tdbgridData_HeadClick(traces().columnIndex(L"Process"));
    forms::doEvents();
    ASSERT_FALSE(reports.empty());
    EXPECT_TRUE(reports.front().starts_with(u"tdbgridData_HeadClick: Err.Number = 3704 "));
    EXPECT_EQ(headingStyle(L"Process"), L"Ascending");
    EXPECT_EQ(headingStyle(L"Date"), L"Heading");
    EXPECT_FALSE(form.status.visible());
}

TEST_F(MainGridTest, TheStylesAreThere) {
    form.load();
    for (const wchar_t* name :
         {L"Normal", L"Heading", L"Footing", L"Selected", L"Caption", L"HighlightRow", L"EvenRow",
          L"OddRow", L"RecordSelector", L"FilterBar", L"Ascending", L"Descending", L"BigRed",
          L"imgSubscriber"}) {
        EXPECT_NO_THROW(traces().style(name)) << std::filesystem::path{name};
    }
    EXPECT_EQ(traces().style(L"Ascending").picture, grid::HeadingPicture::ascending);
    EXPECT_EQ(traces().style(L"Descending").picture, grid::HeadingPicture::descending);
    EXPECT_TRUE(traces().cellTips());
    EXPECT_EQ(traces().groupByCaption(), L"Drag a column header here to group by that column");
}

TEST_F(MainGridTest, TipsWrapForRowsOnly) {
    openLoaded(50);
    std::wstring tip = L"whole text";
    bool wrap = false;
    traces().onFetchCellTips(1, 3, tip, wrap);
    EXPECT_TRUE(wrap);
    EXPECT_EQ(tip, L"whole text");
    wrap = true;
    traces().onFetchCellTips(1, -1, tip, wrap);
    EXPECT_TRUE(wrap) << "a heading's tip is left as it is";
}

// Record numbers, find and what is exported keep to the records, whatever the view shows.
TEST_F(MainGridTest, GroupsAreTheViewsAlone) {
    openLoaded(600);
    const POINT strip{500, 10};
    drag(headingMiddle(L"Component"), strip);
    ASSERT_EQ(traces().groupColumns().size(), 1u);
    EXPECT_EQ(traces().approxCount(), 600);
    EXPECT_LT(traces().geometry().rowCount(), 600);
    EXPECT_EQ(rows().recordCount(), 600);
    EXPECT_EQ(panel(3), L"  Line 1 of 600  ");

    rows().setAbsolutePosition(321);
    EXPECT_EQ(panel(3), L"  Line 321 of 600  ");
    EXPECT_EQ(traces().row(), 320) << "its group was opened";
    EXPECT_EQ(traces().grouping().at(traces().selection().current().row).row, 320);

    clickHeading(L"Process");
    EXPECT_EQ(rows().sort(), u"Process ASC");
    EXPECT_EQ(traces().groupColumns().size(), 1u);
}

TEST_F(MainGridTest, GroupsAndPlacesOutliveTheFilter) {
    openLoaded(600);
    const int component = traces().columnIndex(L"Component");
    traces().setGroupColumns({{component, true}});
    traces().moveColumn(traces().columnIndex(L"Source"), 0);
    form.cmdApplyFilter.onClick();
    ASSERT_TRUE(waitLoaded());
    ASSERT_EQ(traces().groupColumns().size(), 1u);
    EXPECT_EQ(traces().groupColumns()[0].column, component);
    EXPECT_TRUE(traces().groupColumns()[0].descending);
    EXPECT_EQ(traces().columnAtPlace(0), traces().columnIndex(L"Source"));
    EXPECT_TRUE(waitUntil([this] { return traces().grouping().rowCount() == 600; }));
}

TEST_F(MainGridTest, ColumnsThatAFileBringsStandWhereTheyBelong) {
    open(makeFile("oldest.mdb", 20, fixture::TraceFormat::Oldest));
    ASSERT_TRUE(waitLoaded());
    ASSERT_LT(traces().columnIndex(L"Port"), 0);
    traces().moveColumn(traces().columnIndex(L"TraceLevel"), 0);
    open(makeFile("newer.mdb", 30));
    ASSERT_TRUE(waitLoaded());
    std::vector<std::wstring> fields;
    for (int place = 0; place < traces().columnCount(); ++place) {
        fields.push_back(traces().column(traces().columnAtPlace(place)).dataField());
    }
    EXPECT_EQ(fields,
              (std::vector<std::wstring>{L"TraceLevel", L"Port", L"CallId", L"Date", L"Process",
                                         L"Source", L"TraceNumber", L"Component", L"Trace"}));
}

TEST_F(MainGridTest, GroupsAndPlacesOutliveAFilterThatIsNotValid) {
    openLoaded(600);
    traces().setGroupColumns({{traces().columnIndex(L"Component"), true}});
    traces().moveColumn(traces().columnIndex(L"Source"), 0);
    UniqueTraces& unique = modDatabase::uniqueTraces();
    ASSERT_GT(unique.size(), 1u);
    unique[0].qrxIndex = std::u16string{u"it's"};
    unique[1].selected = false;
    form.cmdApplyFilter.onClick();
    EXPECT_EQ(traces().columnCount(), 0);
    form.cmdSelectAllUniqueTraces.onClick();
    form.cmdApplyFilter.onClick();
    ASSERT_TRUE(waitLoaded());
    ASSERT_EQ(traces().groupColumns().size(), 1u);
    EXPECT_EQ(traces().groupColumns()[0].column, traces().columnIndex(L"Component"));
    EXPECT_EQ(traces().columnAtPlace(0), traces().columnIndex(L"Source"));
}

TEST_F(MainGridTest, TheTraceColumnIsNotGroupedBy) {
    openLoaded(100);
    drag(headingMiddle(L"Trace"), {500, 10});
    EXPECT_TRUE(traces().groupColumns().empty());
}

std::vector<char> bytesOf(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

HDROP dropOf(const std::vector<std::wstring>& paths) {
    std::wstring list;
    for (const std::wstring& path : paths) list += path + L'\0';
    list += L'\0';
    const std::size_t bytes = list.size() * sizeof(wchar_t);
    const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, sizeof(DROPFILES) + bytes);
    auto* files = static_cast<DROPFILES*>(::GlobalLock(memory));
    files->pFiles = sizeof(DROPFILES);
    files->fWide = TRUE;
    std::memcpy(files + 1, list.data(), bytes);
    ::GlobalUnlock(memory);
    return static_cast<HDROP>(memory);
}

TEST_F(MainGridTest, ADroppedDatabaseIsOpened) {
    openLoaded(100);
    const HDROP drop = dropOf({makeFile("other.mdb", 70).wstring(), L"C:\\second.mdb"});
    ::SendMessageW(form.hwnd(), WM_DROPFILES, reinterpret_cast<WPARAM>(drop), 0);
    ASSERT_TRUE(waitLoaded());
    EXPECT_EQ(traces().approxCount(), 70);
    EXPECT_TRUE(reports.empty());
}

TEST_F(MainGridTest, WhatIsNoDatabaseIsReportedWhenDropped) {
    openLoaded(100);
    const HDROP drop = dropOf({folder.write("text.txt", {'n', 'o'}).wstring()});
    ::SendMessageW(form.hwnd(), WM_DROPFILES, reinterpret_cast<WPARAM>(drop), 0);
    forms::doEvents();
    EXPECT_EQ(traces().approxCount(), 0);
    EXPECT_FALSE(reports.empty());
}

TEST_F(MainGridTest, NothingIsDroppedOnAWindowThatWaitsForAnother) {
    openLoaded(100);
    ::EnableWindow(form.hwnd(), FALSE);
    const HDROP drop = dropOf({makeFile("other.mdb", 70).wstring()});
    ::SendMessageW(form.hwnd(), WM_DROPFILES, reinterpret_cast<WPARAM>(drop), 0);
    ::EnableWindow(form.hwnd(), TRUE);
    forms::doEvents();
    EXPECT_EQ(traces().approxCount(), 100);
}

TEST_F(MainGridTest, TheRowMenuIsThereAndHidden) {
    form.load();
    EXPECT_EQ(form.mnuRightClick.caption(), L"RightClick");
    EXPECT_EQ(form.mnuAddEditNote.caption(), L"Add/Edit Note");
    EXPECT_EQ(form.mnuHighlightRow.caption(), L"Highlight Row");
    EXPECT_FALSE(form.mnuRightClick.visible());
    EXPECT_FALSE(form.mnuHighlightRow.visible());
    EXPECT_EQ(::GetMenuItemCount(::GetMenu(form.hwnd())), 3);
    form.mnuAddEditNote.onClick();
    EXPECT_TRUE(reports.empty());
}

TEST_F(MainGridTest, TheMenuHasItsKeys) {
    form.load();
    EXPECT_EQ(form.mnuOpenTraceDatabase.shortcut(), L"Ctrl+O");
    EXPECT_EQ(form.mnuExportData.shortcut(), L"Ctrl+E");
    EXPECT_EQ(form.mnuFind.shortcut(), L"Ctrl+F");
    EXPECT_EQ(form.mnuFindNext.shortcut(), L"F3");
    EXPECT_EQ(form.mnuHelp.shortcut(), L"F1");
}

// Looking changes nothing in the file, the columns for notes included.
TEST_F(MainGridTest, ADatabaseIsLeftAsItIs) {
    const auto path = makeFile("a.mdb", 300);
    const auto before = bytesOf(path);
    form.show();
    open(path);
    ASSERT_TRUE(waitLoaded());
    clickHeading(L"Process");
    drag(headingMiddle(L"Component"), {500, 10});
    key(VK_DOWN);
    form.mnuAddEditNote.onClick();
    form.cmdClearAllUniqueTraces.onClick();
    form.cmdApplyFilter.onClick();
    forms::doEvents();
    EXPECT_EQ(bytesOf(path), before);
}

class MainGeometryTest : public MainWindowTest, public testing::WithParamInterface<int> {
protected:
    /// As when the window is moved to a display of that density. The size fits on the smallest
    /// screen there is at the greatest.
    void comeTo(int dpi) {
        const RECT bounds{10, 10, 10 + 7200 * dpi / 1440, 10 + 5700 * dpi / 1440};
        ::SendMessageW(form.hwnd(), WM_DPICHANGED, MAKEWPARAM(dpi, dpi),
                       reinterpret_cast<LPARAM>(&bounds));
        form.move({150_tw, 150_tw, 7200_tw, 5700_tw});
        forms::doEvents();
    }
    /// Two pixels, in twips.
    double close() const { return 2 * 1440.0 / GetParam(); }

    void expectGeometry() {
        const double wide = form.width().value;
        const double tall = form.height().value;
        EXPECT_NEAR(wide, 7200, close());
        EXPECT_NEAR(tall, 5700, close());
        const forms::Bounds tab = form.sstabMain.bounds();
        EXPECT_NEAR(tab.left.value, 60, close());
        EXPECT_NEAR(tab.top.value, 60, close());
        EXPECT_NEAR(tab.width.value, wide - 240, close());
        const double aboveBar = form.statusbarMain.top().value - 120;
        EXPECT_NEAR(tab.height.value, std::min(tall - 120 - 937.5, aboveBar), close());
        const double lines = 3 * form.textHeight(L"TEST").value;
        const forms::Bounds grid = form.tdbgridData.bounds();
        EXPECT_NEAR(grid.left.value, 120, close());
        EXPECT_NEAR(grid.width.value, tab.width.value - 240, close());
        EXPECT_NEAR(grid.top.value, form.sstabMain.tabHeight().value + 60 + 60, close());
        EXPECT_NEAR(grid.height.value, tab.height.value - grid.top.value - 120 - lines, close());
        const forms::Bounds text = form.txtTrace.bounds();
        EXPECT_NEAR(text.top.value, grid.top.value + grid.height.value + 60, close());
        EXPECT_NEAR(text.height.value, lines, close());
        const forms::Bounds tree = form.tvUniqueTraces.bounds();
        EXPECT_NEAR(tree.width.value, tab.width.value - 240, close());
        EXPECT_NEAR(tree.height.value,
                    tab.height.value - tree.top.value - form.cmdExpandAll.height().value - 180,
                    close());
        for (const forms::Button* button :
             {&form.cmdExpandAll, &form.cmdCollapseAll, &form.cmdClearAllUniqueTraces,
              &form.cmdSelectAllUniqueTraces}) {
            EXPECT_NEAR(button->top().value, tree.top.value + tree.height.value + 60, close());
        }
        EXPECT_NEAR(form.cmdExpandAll.left().value, 180, close());
        EXPECT_NEAR(form.cmdCollapseAll.left().value, 540, close());
        EXPECT_NEAR(form.cmdExpandAll.width().value, 315, close());
    }
};

TEST_P(MainGeometryTest, HoldsInTwips) {
    form.show();
    comeTo(GetParam());
    expectGeometry();
}

TEST_P(MainGeometryTest, HoldsOnTheWayThroughAnotherDensity) {
    form.show();
    comeTo(GetParam() == 96 ? 192 : 96);
    comeTo(GetParam());
    expectGeometry();
}

TEST_P(MainGeometryTest, TheSmallestSizeHolds) {
    form.show();
    comeTo(GetParam());
    form.move({150_tw, 150_tw, 3000_tw, 5700_tw});
    forms::doEvents();
    EXPECT_NEAR(form.width().value, 5000, close());
    EXPECT_NEAR(form.height().value, 5700, close());
    form.move({150_tw, 150_tw, 6000_tw, 3000_tw});
    forms::doEvents();
    EXPECT_NEAR(form.width().value, 6000, close());
    EXPECT_NEAR(form.height().value, 5000, close());
}

INSTANTIATE_TEST_SUITE_P(Densities, MainGeometryTest, testing::Values(96, 120, 144, 192));

}  // namespace

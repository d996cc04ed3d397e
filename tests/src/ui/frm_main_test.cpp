#include "src/text/text.h"
#include "tests/src/log/fake_log_system.h"
#include "tests/src/ui/main_window.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace forms::literals;

TEST_F(MainWindowTest, ComesUpEmptyWithoutADatabase) {
    form.show();
    forms::doEvents();
    EXPECT_TRUE(form.visible());
    EXPECT_EQ(form.caption(), L"Vorelle Diagnostic Viewer");
    EXPECT_EQ(form.tdbgridData.approxCount(), 0);
    EXPECT_EQ(form.txtTrace.text(), L"");
    EXPECT_TRUE(reports.empty());
}

TEST_F(MainWindowTest, TakesItsCaptionsFromTheTexts) {
    form.load();
    EXPECT_EQ(form.sstabMain.tabCaption(0), L"Diagnostic Data");
    EXPECT_EQ(form.sstabMain.tabCaption(1), L"Filters");
    EXPECT_EQ(form.mnuFileMenu.caption(), L"&File");
    EXPECT_EQ(form.mnuOpenTraceDatabase.caption(), L"&Open Diagnostic Database");
    EXPECT_EQ(form.mnuExit.caption(), L"E&xit");
}

TEST_F(MainWindowTest, StandsInTheMiddleOnFourFifthsOfTheScreen) {
    form.load();
    const forms::Bounds bounds = form.bounds();
    EXPECT_NEAR(bounds.width.value, form.screenWidth().value * 0.8, 30);
    EXPECT_NEAR(bounds.height.value, form.screenHeight().value * 0.8, 30);
    EXPECT_NEAR(bounds.left.value, form.screenWidth().value * 0.1, 30);
    EXPECT_NEAR(bounds.top.value, form.screenHeight().value * 0.1, 30);
}

TEST_F(MainWindowTest, TheCentringStandsInTheLog) {
    SharedFakeLog log;
    form.load();
    const auto lines = log.messages("[frmMain]centerDisplay");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_TRUE(lines[0].starts_with("Entering [frmMain]centerDisplay"));
    EXPECT_TRUE(lines[1].starts_with("Exiting [frmMain]centerDisplay"));
}

// The texts of the tree's nodes are laid out in columns.
TEST_F(MainWindowTest, TheTreeHasAFontOfOneWidth) {
    form.load();
    EXPECT_EQ(form.tvUniqueTraces.font().name, L"Courier New");
    const forms::GdiFont& font = form.tvUniqueTraces.gdiFont();
    EXPECT_EQ(font.textWidth(L"iiiiiiii").value, font.textWidth(L"WWWWWWWW").value);
}

TEST_F(MainWindowTest, TabsGridAndTextFollowTheWindowsSize) {
    form.show();
    form.move({600_tw, 600_tw, 9000_tw, 8000_tw});
    forms::doEvents();
    EXPECT_NEAR(form.sstabMain.left().value, 60, 15);
    EXPECT_NEAR(form.sstabMain.width().value, 9000 - 240, 15);
    EXPECT_NEAR(form.tdbgridData.width().value, form.sstabMain.width().value - 240, 15);
    EXPECT_NEAR(form.txtTrace.height().value, 3 * form.textHeight(L"TEST").value, 15);
    EXPECT_NEAR(form.txtTrace.top().value,
                form.tdbgridData.top().value + form.tdbgridData.height().value + 60, 15);
    EXPECT_NEAR(form.txtTrace.top().value + form.txtTrace.height().value,
                form.sstabMain.height().value - 60, 30);
    EXPECT_LE(form.sstabMain.top().value + form.sstabMain.height().value,
              form.statusbarMain.top().value);
}

TEST_F(MainWindowTest, ATooSmallWindowSnapsBack) {
    form.show();
    form.move({600_tw, 600_tw, 3000_tw, 2000_tw});
    forms::doEvents();
    EXPECT_NEAR(form.width().value, 5000, 15);
    EXPECT_NEAR(form.height().value, 5000, 15);
}

TEST_F(MainWindowTest, MinimisingMovesNothing) {
    form.show();
    std::vector<forms::Bounds> before;
    for (const forms::Control* control : form.controls()) before.push_back(control->bounds());
    form.setWindowState(forms::WindowState::minimized);
    forms::doEvents();
    std::size_t i = 0;
    for (const forms::Control* control : form.controls()) {
        EXPECT_EQ(control->bounds(), before.at(i++));
    }
}

TEST_F(MainWindowTest, TheFilterTabHidesGridAndText) {
    form.show();
    form.sstabMain.setTab(1);
    EXPECT_FALSE(form.tdbgridData.isShown());
    EXPECT_FALSE(form.txtTrace.isShown());
    EXPECT_FALSE(form.tdbgridData.visible() || form.txtTrace.visible());
    form.sstabMain.setTab(0);
    EXPECT_TRUE(form.tdbgridData.isShown());
    EXPECT_TRUE(form.txtTrace.isShown());
}

TEST_F(MainWindowTest, LoadsCountsAndSortsByDate) {
    open(makeFile("a.mdb", 3000));
    ASSERT_TRUE(waitLoaded());
    EXPECT_EQ(form.tdbgridData.approxCount(), 3000);
    EXPECT_EQ(panel(3), L"  Line 1 of 3000  ");
    EXPECT_EQ(panel(1), L"");
    EXPECT_EQ(rows().sort(), u"Date ASC");
    EXPECT_EQ(headingStyle(L"Date"), L"Ascending");
    EXPECT_EQ(headingStyle(L"Process"), L"Heading");
    EXPECT_FALSE(form.status.visible());
    EXPECT_TRUE(reports.empty());
}

TEST_F(MainWindowTest, TheNoticeStandsWhileRowsArrive) {
    // No message is fetched before the checks, so the end of the fetch cannot be among them.
    modDatabase::connectToDB(makeFile("a.mdb", 5000).u16string());
    modDatabase::openRecordsets();
    EXPECT_EQ(panel(1), L"Loading diagnostic, data is not sorted by date until completely loaded.");
    EXPECT_GE(rows().recordCount(), 100);
    form.reloadDBGrid(rows());
    EXPECT_GE(form.tdbgridData.approxCount(), 100);
    EXPECT_NE(cell(99, L"Process"), L"");
    ASSERT_TRUE(waitLoaded());
    EXPECT_EQ(panel(1), L"");
}

TEST_F(MainWindowTest, ColumnsAreSetUp) {
    open(makeFile("a.mdb", 500));
    ASSERT_TRUE(waitLoaded());
    const std::vector<std::pair<std::wstring, std::wstring>> expected{
        {L"Date", L"Date"},         {L"Process", L"Process"},     {L"Source", L"Source"},
        {L"TraceNumber", L" No. "}, {L"Component", L"Component"}, {L"TraceLevel", L" Level "},
        {L"Trace", L"Diagnostic"},  {L"Port", L"Port"},           {L"CallId", L"CallId"}};
    EXPECT_EQ(form.tdbgridData.columnCount(), static_cast<int>(expected.size()));
    for (const auto& [field, caption] : expected) {
        const grid::Column& column = form.tdbgridData.column(field);
        EXPECT_EQ(column.caption(), caption);
        EXPECT_EQ(column.wrapText(), field == L"Trace") << caption;
    }
}

TEST_F(MainWindowTest, AnOldestFileHasSevenColumns) {
    open(makeFile("oldest.mdb", 500, fixture::TraceFormat::Oldest));
    ASSERT_TRUE(waitLoaded());
    EXPECT_EQ(form.tdbgridData.columnCount(), 7);
    EXPECT_EQ(form.tdbgridData.columnIndex(L"Port"), -1);
    EXPECT_NE(cell(0, L"Trace"), L"");
}

TEST_F(MainWindowTest, RowsAreTwiceAsHighAsAtFirst) {
    form.load();
    const forms::Twips before = form.tdbgridData.rowHeight();
    open(makeFile("a.mdb", 10));
    EXPECT_NEAR(form.tdbgridData.rowHeight().value, 2 * before.value, 15);
    open(makeFile("b.mdb", 10));
    EXPECT_NEAR(form.tdbgridData.rowHeight().value, 2 * before.value, 15);
}

TEST_F(MainWindowTest, HeadingClicksSortAndReverse) {
    open(makeFile("a.mdb", 800));
    ASSERT_TRUE(waitLoaded());
    const auto click = [this](const wchar_t* field) {
        form.tdbgridData.onHeadClick(form.tdbgridData.columnIndex(field));
    };
    click(L"Date");
    EXPECT_EQ(rows().sort(), u"Date DESC");
    EXPECT_EQ(headingStyle(L"Date"), L"Descending");
    click(L"Date");
    EXPECT_EQ(rows().sort(), u"Date ASC");
    click(L"Process");
    EXPECT_EQ(rows().sort(), u"Process ASC");
    EXPECT_EQ(headingStyle(L"Process"), L"Ascending");
    EXPECT_EQ(headingStyle(L"Date"), L"Heading");
    EXPECT_FALSE(form.status.visible());
}

TEST_F(MainWindowTest, TheTraceColumnIsNeverSorted) {
    open(makeFile("a.mdb", 300));
    ASSERT_TRUE(waitLoaded());
    form.tdbgridData.column(L"Trace").setCaption(L"changed");
    form.tdbgridData.onHeadClick(form.tdbgridData.columnIndex(L"Trace"));
    EXPECT_EQ(rows().sort(), u"Date ASC");
    EXPECT_EQ(headingStyle(L"Date"), L"Ascending");
    EXPECT_EQ(headingStyle(L"Trace"), L"Heading");
    EXPECT_EQ(form.tdbgridData.column(L"Trace").caption(), L"Diagnostic") << "not set up again";
}

TEST_F(MainWindowTest, OnlyTheTraceColumnRefusesToBeResized) {
    open(makeFile("a.mdb", 300));
    ASSERT_TRUE(waitLoaded());
    for (int column = 0; column < form.tdbgridData.columnCount(); ++column) {
        bool cancel = false;
        form.tdbgridData.onColResize(column, cancel);
        EXPECT_EQ(cancel, form.tdbgridData.column(column).dataField() == L"Trace");
    }
}

TEST_F(MainWindowTest, TheCurrentRowShowsItsPlaceAndItsText) {
    open(makeFile("a.mdb", 300));
    ASSERT_TRUE(waitLoaded());
    ::SendMessageW(form.tdbgridData.hwnd(), WM_KEYDOWN, VK_DOWN, 0);
    EXPECT_EQ(rows().absolutePosition(), 2);
    EXPECT_EQ(panel(3), L"  Line 2 of 300  ");
    rows().setAbsolutePosition(12);
    EXPECT_EQ(form.tdbgridData.row(), 11);
    EXPECT_EQ(panel(3), L"  Line 12 of 300  ");
    std::wstring text = toWide(rows().fields()[u"Trace"].text());
    std::wstring shown = form.txtTrace.text();
    std::erase(text, L'\r');
    std::erase(shown, L'\r');
    EXPECT_EQ(shown, text);
}

TEST_F(MainWindowTest, AnEmptyTableShowsItsPositionAndNoText) {
    open(makeFile("empty.mdb", 0));
    ASSERT_TRUE(waitLoaded());
    EXPECT_EQ(form.txtTrace.text(), L"");
    EXPECT_TRUE(panel(3).ends_with(L" of 0  ")) << toWide(fromWide(panel(3)));
    EXPECT_EQ(form.tdbgridData.columnCount(), 9);
}

TEST_F(MainWindowTest, LinesOfATraceEndAsTheTextBoxWants) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"tblTraces", .columns = fixture::traceColumns(fixture::TraceFormat::Oldest)});
    fixture::Row row(7);
    row[0] = jet::Date{38000.5};
    row[6] = std::u16string{u"one\ntwo\r\nthree"};
    table.insert(row);
    open(folder.write("lines.mdb", builder.bytes()));
    ASSERT_TRUE(waitUntil([this] { return panel(1).empty() && rows().recordCount() == 1; }));
    form.tdbgridData.onRowColChange();
    EXPECT_EQ(form.txtTrace.text(), L"one\r\ntwo\r\nthree");
}

TEST_F(MainWindowTest, AZeroCharacterDoesNotEndTheText) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"tblTraces", .columns = fixture::traceColumns(fixture::TraceFormat::Oldest)});
    fixture::Row row(7);
    row[0] = jet::Date{38000.5};
    row[6] = u"before" + std::u16string(1, u'\0') + u"after";
    table.insert(row);
    open(folder.write("zero.mdb", builder.bytes()));
    ASSERT_TRUE(waitUntil([this] { return panel(1).empty() && rows().recordCount() == 1; }));
    form.tdbgridData.onRowColChange();
    EXPECT_EQ(form.txtTrace.text(), L"before after");
}

TEST_F(MainWindowTest, AFilterThatIsNotValidLeavesNoRecordOnShow) {
    open(makeFile("a.mdb", 300));
    ASSERT_TRUE(waitLoaded());
    ASSERT_NE(form.txtTrace.text(), L"");
    ASSERT_EQ(panel(3), L"  Line 1 of 300  ");
    modDatabase::uniqueTraces()[0].qrxIndex = std::u16string{u"it's"};
    modDatabase::uniqueTraces()[1].selected = false;
    form.cmdApplyFilter.onClick();
    ASSERT_EQ(rows().state(), ado::adStateClosed);
    EXPECT_EQ(form.txtTrace.text(), L"");
    EXPECT_EQ(panel(3), L"");
}

TEST_F(MainWindowTest, OpeningFromTheMenuReplacesTheDatabase) {
    open(makeFile("a.mdb", 300));
    ASSERT_TRUE(waitLoaded());
    dialogs.answer = makeFile("b.mdb", 40).wstring();
    form.mnuOpenTraceDatabase.onClick();
    ASSERT_TRUE(waitLoaded());
    EXPECT_EQ(form.tdbgridData.approxCount(), 40);
    ASSERT_EQ(dialogs.asked.size(), 1u);
    EXPECT_EQ(dialogs.asked[0].title, L"Select Diagnostic Database File");
    EXPECT_EQ(dialogs.asked[0].filter, L"Database (*.mdb)|*.mdb");
    EXPECT_EQ(dialogs.asked[0].filterIndex, 1);
}

/// Does something before another thread works for the window.
class WatchingRunner {
public:
    explicit WatchingRunner(const std::function<void()>& before)
        : inUse_{servicesWith(&Services::runWhilePainting,
                              [before](const std::function<void()>& work) {
                                  before();
                                  forms::runWhilePainting(work);
                              })} {}

private:
    ServicesInUse inUse_;
};

TEST_F(MainWindowTest, WhileAnOlderFileIsUpgradedTheRowsBeforeAreGone) {
    open(makeFile("a.mdb", 300));
    ASSERT_TRUE(waitLoaded());
    const grid::Alignment level =
        form.tdbgridData.dataSource()->alignment(form.tdbgridData.columnIndex(L"TraceLevel"));
    EXPECT_EQ(level, grid::Alignment::right);
    int errors = 0;
    const auto usual = forms::setUnexpectedErrorHandler([&](std::exception_ptr) { ++errors; });
    int looks = 0;
    WatchingRunner watching{[&] {
        grid::Grid& traces = form.tdbgridData;
        ++looks;
        EXPECT_EQ(traces.approxCount(), 0);
        EXPECT_EQ(traces.geometry().rowCount(), 0);
        EXPECT_EQ(form.txtTrace.text(), L"");
        EXPECT_EQ(panel(3), L"");
        EXPECT_EQ(traces.dataSource()->alignment(traces.columnIndex(L"TraceLevel")), level);
        ::RedrawWindow(traces.hwnd(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    }};
    dialogs.answer = makeFile("b.mdb", 40, fixture::TraceFormat::Older).wstring();
    form.mnuOpenTraceDatabase.onClick();
    EXPECT_TRUE(waitLoaded());
    forms::setUnexpectedErrorHandler(usual);
    EXPECT_GT(looks, 0);
    EXPECT_EQ(errors, 0);
    EXPECT_EQ(form.tdbgridData.approxCount(), 40);
}

TEST_F(MainWindowTest, CancellingTheDialogChangesNothing) {
    open(makeFile("a.mdb", 300));
    ASSERT_TRUE(waitLoaded());
    form.mnuOpenTraceDatabase.onClick();
    EXPECT_EQ(form.tdbgridData.approxCount(), 300);
    EXPECT_EQ(rows().sort(), u"Date ASC");
    EXPECT_EQ(form.selectDatabase(), u"");
}

TEST_F(MainWindowTest, AFileThatCannotBeOpenedLeavesAnEmptyWorkingWindow) {
    open(folder.write("text.mdb", std::vector<std::uint8_t>(9000, 'x')));
    forms::doEvents();
    EXPECT_TRUE(form.visible());
    EXPECT_FALSE(form.status.visible());
    EXPECT_EQ(form.tdbgridData.approxCount(), 0);
    EXPECT_EQ(panel(1), L"");
    EXPECT_FALSE(reports.empty());

    dialogs.answer = makeFile("good.mdb", 40).wstring();
    form.mnuOpenTraceDatabase.onClick();
    ASSERT_TRUE(waitLoaded());
    EXPECT_EQ(form.tdbgridData.approxCount(), 40);
}

TEST_F(MainWindowTest, ABadFileAfterAGoodOneEmptiesTheWindow) {
    open(makeFile("good.mdb", 300));
    ASSERT_TRUE(waitLoaded());
    dialogs.answer = folder.write("bad.mdb", std::vector<std::uint8_t>(100, 'x')).wstring();
    form.mnuOpenTraceDatabase.onClick();
    forms::doEvents();
    EXPECT_EQ(form.tdbgridData.approxCount(), 0);
    EXPECT_EQ(form.txtTrace.text(), L"");
    EXPECT_EQ(panel(3), L"");
    EXPECT_EQ(form.tvUniqueTraces.nodeCount(), 0);
}

TEST_F(MainWindowTest, ABadFileDuringALoadEndsTheHourglass) {
    open(makeFile("good.mdb", 300));
    ASSERT_TRUE(waitLoaded());
    rows().fetchProgress(1000, 5000, ado::adStatusOK);
    ASSERT_EQ(form.mousePointer(), forms::MousePointer::arrowHourglass);
    dialogs.answer = folder.write("bad.mdb", std::vector<std::uint8_t>(100, 'x')).wstring();
    form.mnuOpenTraceDatabase.onClick();
    EXPECT_EQ(form.mousePointer(), forms::MousePointer::standard);
    EXPECT_EQ(panel(1), L"");
}

TEST_F(MainWindowTest, ARightClickShowsNoMenu) {
    open(makeFile("a.mdb", 300));
    ASSERT_TRUE(waitLoaded());
    const HWND gridWindow = form.tdbgridData.hwnd();
    ::SendMessageW(gridWindow, WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(80, 60));
    ::SendMessageW(gridWindow, WM_RBUTTONUP, 0, MAKELPARAM(80, 60));
    EXPECT_EQ(::FindWindowW(L"#32768", nullptr), nullptr);
    EXPECT_EQ(rows().absolutePosition(), 1);
}

TEST_F(MainWindowTest, AClickIntoTheTextGivesTheFocusToTheGrid) {
    form.show();
    form.txtTrace.onClick();
    EXPECT_TRUE(form.tdbgridData.hasFocus());
}

TEST_F(MainWindowTest, ExitEndsTheProgram) {
    form.show();
    form.mnuExit.onClick();
    EXPECT_EQ(ended, 1);
}

TEST_F(MainWindowTest, ClosingTheWindowEndsTheProgram) {
    form.show();
    ::SendMessageW(form.hwnd(), WM_CLOSE, 0, 0);
    EXPECT_EQ(ended, 1);
}

TEST_F(MainWindowTest, JapaneseAndEmojiReachGridAndTextUnchanged) {
    const std::u16string text = u"\u97F3\u58F0\u30E1\u30FC\u30EB \U0001F4DE end";
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"tblTraces", .columns = fixture::traceColumns(fixture::TraceFormat::Oldest)});
    fixture::Row row(7);
    row[0] = jet::Date{38000.5};
    row[6] = text;
    table.insert(row);
    open(folder.write("unicode.mdb", builder.bytes()));
    ASSERT_TRUE(waitUntil([this] { return panel(1).empty() && rows().recordCount() == 1; }));
    EXPECT_EQ(cell(0, L"Trace"), toWide(text));
    EXPECT_EQ(form.txtTrace.text(), toWide(text));
}

TEST_F(MainWindowTest, EverySampleFileIsShownWhole) {
    const auto samples = fixture::testDataFolder();
    if (!samples) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    for (const auto& entry : std::filesystem::directory_iterator{*samples}) {
        if (entry.path().extension() != ".mdb") continue;
        open(folder.copy(entry.path()));
        ASSERT_TRUE(waitLoaded()) << entry.path();
        auto dump = entry.path();
        dump.replace_extension(".traces.tsv");
        EXPECT_EQ(static_cast<std::size_t>(form.tdbgridData.approxCount()),
                  fixture::readPlainTable(dump).rows.size())
            << entry.path();
    }
}

}  // namespace

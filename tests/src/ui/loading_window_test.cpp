// What the main window says while a database is opened and its trace records arrive.
#include "tests/src/ui/main_window.h"

#include <gtest/gtest.h>

namespace {

using forms::MousePointer;

class LoadingWindowTest : public MainWindowTest {
protected:
    void openLoaded(std::uint32_t count) {
        open(makeFile("a.mdb", count));
        ASSERT_TRUE(waitLoaded());
    }
    void setPanel(int number, const wchar_t* text) {
        form.statusbarMain.panel(number).setText(text);
    }

    const ado::Error gone{ado::kErrorFile, "the drive is gone"};
};

TEST_F(LoadingWindowTest, TheStatusWindowShowsWhileADatabaseIsOpened) {
    form.openingBegins();
    EXPECT_TRUE(form.status.visible());
    EXPECT_EQ(form.status.lblStatus.text(), L"Loading diagnostic data.  Please wait...");
    EXPECT_FALSE(form.status.pbarStatus.visible());
    form.openingEnds();
    EXPECT_FALSE(form.status.visible());
}

TEST_F(LoadingWindowTest, TheHourglassShowsDuringAnUpgrade) {
    form.upgradeBegins();
    EXPECT_EQ(form.mousePointer(), MousePointer::hourglass);
    form.upgradeEnds();
    EXPECT_EQ(form.mousePointer(), MousePointer::standard);
}

TEST_F(LoadingWindowTest, TheNoticeStandsUntilTheLoadIsRefused) {
    form.loadBegins();
    EXPECT_EQ(panel(frmMain::kNoticePanel),
              L"Loading diagnostic, data is not sorted by date until completely loaded.");
    form.setMousePointer(MousePointer::arrowHourglass);
    form.loadRefused();
    EXPECT_EQ(panel(frmMain::kNoticePanel), L"");
    EXPECT_EQ(form.mousePointer(), MousePointer::standard);
}

TEST_F(LoadingWindowTest, EveryThousandRowsArePutIntoTheStatusBar) {
    openLoaded(1200);
    rows().setAbsolutePosition(7);
    setPanel(frmMain::kPositionPanel, L"as it was");
    form.rowsLoaded(999);
    EXPECT_EQ(panel(frmMain::kPositionPanel), L"as it was");
    EXPECT_EQ(form.mousePointer(), MousePointer::standard);
    form.rowsLoaded(1000);
    EXPECT_EQ(panel(frmMain::kPositionPanel), L"  Line 7 of 1200  ");
    EXPECT_EQ(form.mousePointer(), MousePointer::arrowHourglass);
    setPanel(frmMain::kPositionPanel, L"as it was");
    form.rowsLoaded(0);
    EXPECT_EQ(panel(frmMain::kPositionPanel), L"  Line 7 of 1200  ");
}

// The rows are counted and the notice is gone before they are sorted, under the hourglass.
TEST_F(LoadingWindowTest, AtItsEndTheLoadIsCountedAndThenSorted) {
    openLoaded(300);
    for (const ado::Error* const error : {static_cast<const ado::Error*>(nullptr), &gone}) {
        form.tdbgridData.setDataSource(nullptr);
        rows().setSort(u"");
        form.reloadDBGrid(rows());
        setPanel(frmMain::kNoticePanel, L"a notice");
        setPanel(frmMain::kPositionPanel, L"");
        bool sorting = false;
        forms::post([&] {
            sorting = form.status.visible();
            EXPECT_EQ(form.status.lblStatus.text(), L"Sorting data please wait...");
            EXPECT_EQ(panel(frmMain::kPositionPanel), L"  Line 1 of 300  ");
            EXPECT_EQ(panel(frmMain::kNoticePanel), L"");
            EXPECT_EQ(form.mousePointer(), MousePointer::hourglass);
            EXPECT_EQ(rows().sort(), u"");
        });
        form.loadEnded({.error = error});
        EXPECT_TRUE(sorting);
        EXPECT_EQ(rows().sort(), u"Date ASC");
        EXPECT_EQ(headingStyle(L"Date"), L"Ascending");
        EXPECT_EQ(form.mousePointer(), MousePointer::standard);
        EXPECT_FALSE(form.status.visible());
    }
}

TEST_F(LoadingWindowTest, AnEmptyTableIsCountedToo) {
    openLoaded(0);
    EXPECT_TRUE(panel(frmMain::kPositionPanel).ends_with(L" of 0  "));
    EXPECT_EQ(panel(frmMain::kNoticePanel), L"");
}

}  // namespace

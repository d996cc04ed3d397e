// The guarded procedures that need windows or the system, each failed eleven times, and the
// unguarded ones once.
#include "src/platform/mdl_html_help.h"
#include "src/platform/mdl_priority.h"
#include "src/platform/utilities.h"
#include "src/search/trace_search.h"
#include "src/ui/about/frm_about.h"
#include "tests/src/log/guarded_procedures.h"
#include "tests/src/log/step_fault.h"
#include "tests/src/ui/macro_traces_test.h"

#include <gtest/gtest.h>

namespace {

class GuardedWindowsTest : public MacroTracesTest {
protected:
    /// Fails every step of the procedure: there is no other way to make it fail.
    static void expectGuardedByFault(const std::string& label, Lines lines,
                                     const std::function<void()>& call) {
        const FailingSteps failing{std::u16string{label.begin(), label.end()}};
        expectGuarded(label, lines, call);
    }

    static void expectOneFailureByFault(const std::string& label,
                                        const std::function<void()>& call) {
        const FailingSteps failing{std::u16string{label.begin(), label.end()}};
        expectOneFailure(label, call);
    }
};

TEST_F(GuardedWindowsTest, HeadClick) {
    SharedFakeLog quiet;
    open(makeFile("a.mdb", 20));
    ASSERT_TRUE(waitLoaded());
    expectGuarded("tdbgridData_HeadClick", Lines::Plain,
                  [this] { form.tdbgridData_HeadClick(99); });
    modDatabase::openDiagRecordset(u"WHERE nonsense '");
    expectGuarded("tdbgridData_HeadClick", Lines::Plain,
                  [this] { form.tdbgridData_HeadClick(form.tdbgridData.columnIndex(L"Date")); });
}

TEST_F(GuardedWindowsTest, FetchCellTips) {
    SharedFakeLog quiet;
    open(makeFile("a.mdb", 20));
    ASSERT_TRUE(waitLoaded());
    expectGuardedByFault("tdbgridData_FetchCellTips", Lines::Plain, [this] {
        std::wstring text;
        bool wrap = false;
        form.tdbgridData.onFetchCellTips(0, 1, text, wrap);
    });
}

TEST_F(GuardedWindowsTest, PopulateMacroTracesTreeview) {
    // Without a node there is none to scroll to.
    SharedFakeLog quiet;
    read({});
    expectGuarded("[frmMacroTraces]populateMacroTracesTreeview", Lines::Numbered, [this] {
        frmMacroTraces dialog{form.tvUniqueTraces};
        dialog.load();
    });
}

TEST_F(GuardedWindowsTest, ConstructToolTipText) {
    SharedFakeLog quiet;
    form.load();
    forms::TreeNode& group = form.tvUniqueTraces.addRoot(L"g", L"it's");
    forms::TreeNode& trace = form.tvUniqueTraces.addChild(group, L"t", L"trace");
    expectGuarded("[frmMacroTraces]constructToolTipText", Lines::Numbered,
                  [&] { constructToolTipText(trace); });
}

TEST_F(GuardedWindowsTest, ChangePriority) {
    expectGuardedByFault("[mdlPriority]ChangePriority", Lines::Plain,
                         [] { mdlPriority::ChangePriority(mdlPriority::kBelowNormal); });
}

TEST_F(GuardedWindowsTest, GetHelpFileName) {
    expectGuardedByFault("[mdlHTMLHelp]getHelpFileName", Lines::Numbered,
                         [] { mdlHTMLHelp::getHelpFileName(u"ENU"); });
}

TEST_F(GuardedWindowsTest, ShowCHMHelp) {
    expectGuardedByFault("[mdlHTMLHelp]showCHMHelp", Lines::Numbered,
                         [] { mdlHTMLHelp::showCHMHelp(nullptr, u"x.chm"); });
}

TEST_F(GuardedWindowsTest, UnguardedOnesGoOn) {
    SharedFakeLog quiet;
    open(makeFile("a.mdb", 20));
    ASSERT_TRUE(waitLoaded());
    // Cancelled dialogs are failures of their own.
    expectOneFailure("[frmMain]selectDatabase", [this] { form.selectDatabase(); });
    expectOneFailure("[frmMain]mnuExportData_Click", [this] { form.mnuExportData.onClick(); });
    expectOneFailure("[mdlTraces]initMacroTraces", [this] { read({u"no xml"}); });
    expectOneFailure("[Utilities]LaunchApplication",
                     [] { Utilities::LaunchApplication(u"C:\\no such.file"); });
    expectOneFailureByFault("setupTraceGrid", [this] { form.setupTraceGrid(); });
    expectOneFailureByFault("[frmMain]centerDisplay", [] {
        frmMain other;
        other.load();
    });
    expectOneFailureByFault("[frmMain]constructFilters", [this] { form.cmdApplyFilter.onClick(); });
    dialogs.answer = L"C:\\none.mdb";
    expectOneFailureByFault("[frmMain]mnuOpenTraceDatabase_Click",
                            [this] { form.mnuOpenTraceDatabase.onClick(); });
}

TEST_F(GuardedWindowsTest, MacroTracesAndFindGoOnToo) {
    SharedFakeLog quiet;
    open(makeFile("a.mdb", 20));
    ASSERT_TRUE(waitLoaded());
    expectOneFailureByFault("[frmMacroTraces]applyCheckedMacroTraces", [this] {
        read({macroRow(u"Calls", u"Incoming")});
        frmMacroTraces dialog{form.tvUniqueTraces};
        dialog.load();
        dialog.treeviewMacroTrace.node(1).setChecked(true);
        dialog.cmdAdd.onClick();
    });
    lastFindText() = u"it's";
    expectOneFailure("[frmMain]myfindText", [this] { form.myfindText(true); });
    expectOneFailureByFault("[modDatabase]createUniqueTracesArray", modDatabase::openUniqueFilters);
}

TEST_F(GuardedWindowsTest, TheAboutBoxGoesOnWithoutAWord) {
    SharedFakeLog log;
    open(makeFile("a.mdb", 20));
    ASSERT_TRUE(waitLoaded());
    frmAbout about;
    about.load();
    int failures = 0;
    setStepFault([&](std::u16string_view label) {
        if (!label.starts_with(u"[frmAbout]")) return;
        ++failures;
        throw RuntimeError{RuntimeError::kInvalidCall, u"Invalid procedure call"};
    });
    about.mnuLanguageList.front().onClick();
    EXPECT_GT(failures, 10) << "there is no limit";
    about.lblChangeLanguage.click();
    about.cmdOK.click();
    setStepFault({});
    EXPECT_TRUE(about.isLoaded()) << "the button's only step failed";
    for (const char* label : {"[frmAbout]mnuLanguageList_Click",
                              "[frmAbout]lblChangeLanguage_Click", "[frmAbout]cmdOK_Click"}) {
        EXPECT_TRUE(log.messages(label).empty()) << label;
    }
    about.destroy();
}

TEST_F(GuardedWindowsTest, ACancelledDialogKeepsItsNumber) {
    SharedFakeLog log;
    form.selectDatabase();
    EXPECT_EQ(
        log.failures("[frmMain]selectDatabase"),
        std::vector<std::string>{"Err.Number = 32755 Err.Description = Cancel was selected."});
}

TEST_F(GuardedWindowsTest, FiltersAreLogged) {
    SharedFakeLog log;
    open(makeFile("a.mdb", 20));
    ASSERT_TRUE(waitLoaded());
    form.cmdClearAllUniqueTraces.onClick();
    form.cmdApplyFilter.onClick();
    EXPECT_EQ(log.messages("[frmMain]constructFilters"), std::vector<std::string>{"WHERE "});
    ASSERT_TRUE(waitLoaded());
}

}  // namespace

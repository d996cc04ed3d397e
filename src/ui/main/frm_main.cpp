#include "src/ui/main/frm_main.h"

#include "resources/resource_ids.h"
#include "src/db/class_diags.h"
#include "src/db/mod_database.h"
#include "src/i18n/mod_localize.h"
#include "src/log/procedure.h"
#include "src/platform/mdl_html_help.h"
#include "src/platform/user_dialogs.h"
#include "src/text/text.h"
#include "src/ui/about/frm_about.h"
#include "toolkit/forms/application.h"

#include <algorithm>
#include <initializer_list>

using modLocalize::Text;
using modLocalize::wideText;
using namespace forms::literals;
using forms::Twips;

namespace {

constexpr Twips kMinSide = 5000_tw;
constexpr Twips kMargin = 60_tw;
constexpr double kPartOfScreen = 0.8;

/// What caption bar, menu bar and status bar take of the window's height.
constexpr Twips kBarsHeight = 937.5_tw;

/// Lines of text in the box under the grid.
constexpr int kTraceLines = 3;

/// The two buttons above the tree stand one below the other: side by side they are wider than the
/// smallest window in most languages.
constexpr Twips kFilterButtonWidth = 3480_tw;

/// Not localised, like the menu of the rows.
constexpr const wchar_t* kGroupByCaption = L"Drag a column header here to group by that column";

}  // namespace

frmMain::frmMain()
    : LocalizedForm({.className = kClassName,
                     .caption = modLocalize::kProductTitle,
                     .icon = IDI_VIEWER,
                     .takesFiles = true}) {}

void frmMain::build() {
    menu().build({
        {0, mnuFileMenu, L"mnuFileMenu", L"&File"},
        {1, mnuOpenTraceDatabase, L"mnuOpenTraceDatabase", L"&Open Trace Database",
         [this] { mnuOpenTraceDatabase_Click(); }, L"Ctrl+O"},
        {1, mnuExportData, L"mnuExportData", L"Export &Data", [this] { mnuExportData_Click(); },
         L"Ctrl+E"},
        {1, pFileSeperator, L"pFileSeperator", L"-"},
        {1, mnuExit, L"mnuExit", L"E&xit", [this] { mnuExit_Click(); }},
        {0, mnuEdit, L"mnuEdit", L"&Edit"},
        {1, mnuFind, L"mnuFind", L"&Find", [this] { mnuFind_Click(); }, L"Ctrl+F"},
        {1, mnuFindNext, L"mnuFindNext", L"Find &Next", [this] { mnuFindNext_Click(); }, L"F3"},
        {0, mnuHelpMenu, L"mnuHelpMenu", L"&Help"},
        {1, mnuHelp, L"mnuHelp", L"Help", [this] { mnuHelp_Click(); }, L"F1"},
        {1, pHelpSeperator, L"pHelpSeperator", L"-"},
        {1, mnuAbout, L"mnuAbout", L"About", [this] { mnuAbout_Click(); }},
        {0, mnuRightClick, L"mnuRightClick", L"RightClick"},
        {1, mnuAddEditNote, L"mnuAddEditNote", L"Add/Edit Note",
         [this] { mnuAddEditNote_Click(); }},
        {1, mnuHighlightRow, L"mnuHighlightRow", L"Highlight Row"},
    });
    // Reserved for notes on rows, which the database has columns for.
    mnuRightClick.setVisible(false);
    mnuHighlightRow.setVisible(false);
    createControls({
        {sstabMain, {L"sstabMain", L"", kMargin, kMargin, 6000_tw, 4500_tw}},
        {tdbgridData,
         {L"tdbgridData", L"Diagnostic Data", 120_tw, 480_tw, 5760_tw, 3000_tw, 0, &sstabMain, 0}},
        {txtTrace, {L"txtTrace", L"", 120_tw, 3540_tw, 5760_tw, 600_tw, 0, &sstabMain, 0}},
        {cmdApplyFilter,
         {L"cmdApplyFilter", L"Apply Filter", 180_tw, 480_tw, kFilterButtonWidth, 345_tw, 0,
          &sstabMain, 1}},
        {cmdAddMacroTraceToFilter,
         {L"cmdAddMacroTraceToFilter", L"Add Macro Trace to Filter", 180_tw, 885_tw,
          kFilterButtonWidth, 345_tw, 0, &sstabMain, 1}},
        {tvUniqueTraces,
         {L"tvUniqueTraces", L"", 120_tw, 1290_tw, 5760_tw, 2610_tw, 0, &sstabMain, 1}},
        {cmdExpandAll, {L"cmdExpandAll", L"+", 180_tw, 3960_tw, 315_tw, 315_tw, 0, &sstabMain, 1}},
        {cmdCollapseAll,
         {L"cmdCollapseAll", L"-", 540_tw, 3960_tw, 315_tw, 315_tw, 0, &sstabMain, 1}},
        {cmdClearAllUniqueTraces,
         {L"cmdClearAllUniqueTraces", L"Clear All", 960_tw, 3960_tw, 1830_tw, 315_tw, 0, &sstabMain,
          1}},
        {cmdSelectAllUniqueTraces,
         {L"cmdSelectAllUniqueTraces", L"Select All", 2850_tw, 3960_tw, 1770_tw, 315_tw, 0,
          &sstabMain, 1}},
        {statusbarMain, {L"statusbarMain", L"", 0_tw, 0_tw, 6000_tw, 300_tw}},
    });
    tdbgridData.setGroupByCaption(kGroupByCaption);
    findDialog.setNotice = [this](const std::u16string& text) { setNotice(text); };
    sstabMain.onTabClick = [this](int previousTab) { sstabMain_Click(previousTab); };
    tvUniqueTraces.setFont({.name = L"Courier New", .points = 9, .fixedPitch = true});
    tvUniqueTraces.onNodeCheck = [this](forms::TreeNode& node) { tvUniqueTraces_NodeCheck(node); };
    cmdApplyFilter.onClick = [this] { cmdApplyFilter_Click(); };
    cmdAddMacroTraceToFilter.onClick = [this] { cmdAddMacroTraceToFilter_Click(); };
    cmdExpandAll.onClick = [this] { cmdExpandAll_Click(); };
    cmdCollapseAll.onClick = [this] { cmdCollapseAll_Click(); };
    cmdClearAllUniqueTraces.onClick = [this] { cmdClearAllUniqueTraces_Click(); };
    cmdSelectAllUniqueTraces.onClick = [this] { cmdSelectAllUniqueTraces_Click(); };
    txtTrace.onClick = [this] { txtTrace_Click(); };
    tdbgridData.onHeadClick = [this](int column) { tdbgridData_HeadClick(column); };
    tdbgridData.onColResize = [this](int column, bool& cancel) {
        tdbgridData_ColResize(column, cancel);
    };
    tdbgridData.onRowColChange = [this] { tdbgridData_RowColChange(); };
    tdbgridData.onFetchCellTips = [this](int, std::int64_t row, std::wstring&, bool& wrap) {
        tdbgridData_FetchCellTips(row, wrap);
    };
}

void frmMain::Form_Load() {
    modLocalize::applyLanguageFont(*this);
    frmMain_Auto_Init();
    centerDisplay();
    setupTraceGrid();
    sstabMain.setTab(0);
    savedRowHeight_ = tdbgridData.rowHeight();
    tdbgridData.setFocus();
}

void frmMain::frmMain_Auto_Init() {
    localizeCaptions();
    setCaption(wideText(Text::ProductTitle));
    if (recordset_ != nullptr && recordset_->state() != ado::adStateClosed) showPosition();
}

/// Another font has lines of another height, and other headings need other widths. The texts of the
/// tree are the same in every language.
void frmMain::layOutForLanguage() {
    modLocalize::applyLanguageFont(*this);
    Form_Resize();
    if (windowState() == forms::WindowState::minimized) setupTraceGrid();
}

void frmMain::localizeCaptions() {
    sstabMain.setTabCaption(0, wideText(Text::DiagnosticData));
    sstabMain.setTabCaption(1, wideText(Text::Filters));
    cmdClearAllUniqueTraces.setCaption(wideText(Text::ClearAll));
    cmdSelectAllUniqueTraces.setCaption(wideText(Text::SelectAll));
    cmdApplyFilter.setCaption(wideText(Text::ApplyFilter));
    cmdAddMacroTraceToFilter.setCaption(wideText(Text::AddMacroTraceToFilter));
    mnuFileMenu.setCaption(wideText(Text::FileMenu));
    mnuOpenTraceDatabase.setCaption(wideText(Text::OpenDiagnosticDatabase));
    mnuExportData.setCaption(wideText(Text::ExportData));
    mnuExit.setCaption(wideText(Text::Exit));
    mnuEdit.setCaption(wideText(Text::EditMenu));
    mnuFind.setCaption(wideText(Text::Find));
    mnuFindNext.setCaption(wideText(Text::FindNext));
    mnuHelpMenu.setCaption(wideText(Text::HelpMenu));
    mnuHelp.setCaption(wideText(Text::Help));
    mnuAbout.setCaption(wideText(Text::About));
    // What screen readers call them.
    tdbgridData.setCaption(wideText(Text::DiagnosticData));
    txtTrace.setAccessibleName(wideText(Text::DiagnosticHeading));
    tvUniqueTraces.setAccessibleName(wideText(Text::Filters));
    sstabMain.setAccessibleName(wideText(Text::ProductTitle));
    statusbarMain.setAccessibleName(wideText(Text::ProductTitle));
}

void frmMain::centerDisplay() {
    runProcedure(u"[frmMain]centerDisplay", {.timed = true}, [this](Procedure& procedure) {
        procedure.step([this] {
            const Twips width = screenWidth() * kPartOfScreen;
            const Twips height = screenHeight() * kPartOfScreen;
            move({(screenWidth() - width) / 2, (screenHeight() - height) / 2, width, height});
        });
    });
}

void frmMain::Form_Resize() {
    if (windowState() == forms::WindowState::minimized) return;
    if (width() < kMinSide) setWidth(kMinSide);
    if (height() < kMinSide) setHeight(kMinSide);

    // The reserve for the bars is exact for the classic frame; where the system's frame is taller
    // the tabs end above the status bar all the same.
    const Twips room = statusbarMain.top() - kMargin - kMargin;
    const Twips tabHeight = std::min(height() - 120_tw - kBarsHeight, room);
    sstabMain.move({kMargin, kMargin, width() - 240_tw, tabHeight});

    // From here on places are relative to the tabs.
    const Twips linesHeight = textHeight(L"TEST") * kTraceLines;
    const Twips gridTop = sstabMain.tabHeight() + kMargin + kMargin;
    const Twips gridWidth = sstabMain.width() - 240_tw;
    const Twips gridHeight = tabHeight - gridTop - 120_tw - linesHeight;
    tdbgridData.move({120_tw, gridTop, gridWidth, gridHeight});
    txtTrace.move({120_tw, gridTop + gridHeight + kMargin, gridWidth, linesHeight});
    layOutFilters();
    setupTraceGrid();
}

/// The tree's top and the places across of the buttons stay as designed.
void frmMain::layOutFilters() {
    const Twips treeTop = tvUniqueTraces.top();
    const Twips treeHeight = sstabMain.height() - treeTop - cmdExpandAll.height() - 180_tw;
    tvUniqueTraces.move({tvUniqueTraces.left(), treeTop, sstabMain.width() - 240_tw, treeHeight});
    const Twips buttonTop = treeTop + treeHeight + kMargin;
    for (forms::Button* const button :
         {&cmdExpandAll, &cmdCollapseAll, &cmdClearAllUniqueTraces, &cmdSelectAllUniqueTraces}) {
        button->setTop(buttonTop);
    }
}

void frmMain::Form_Unload(bool& /*cancel*/) { shutDown(); }

void frmMain::mnuExit_Click() { shutDown(); }

void frmMain::mnuHelp_Click() {
    mdlHTMLHelp::showCHMHelp(hwnd(),
                             mdlHTMLHelp::getHelpFileName(modLocalize::currentLanguageCode()));
}

void frmMain::mnuAbout_Click() {
    frmAbout about;
    about.layOutMainWindow = [this] { layOutForLanguage(); };
    about.showModal();
}

/// Nothing is closed or saved one by one: files, fetches and windows go with the process.
void frmMain::shutDown() {
    constexpr DWORD kPause = 500;
    mdlHTMLHelp::closeHelp();
    hide();
    ::Sleep(kPause);
    if (endProgram) endProgram();
}

std::u16string frmMain::selectDatabase() {
    std::u16string path;
    runProcedure(u"[frmMain]selectDatabase", {.timed = true}, [&](Procedure& procedure) {
        procedure.step([&] {
            load();
            const auto chosen = userDialogs().openFile(
                hwnd(),
                {.title = wideText(Text::SelectDatabaseFile), .filter = L"Database (*.mdb)|*.mdb"});
            if (!chosen) throw RuntimeError{RuntimeError::kCancelled, u"Cancel was selected."};
            path = fromWide(chosen->path);
        });
    });
    return path;
}

void frmMain::mnuOpenTraceDatabase_Click() {
    const std::u16string path = selectDatabase();
    forms::doEvents();
    if (!path.empty()) openTraceDatabase(path);
}

/// As a file dialog with one file to choose: of several the first counts.
void frmMain::Form_DropFiles(const std::vector<std::wstring>& paths) {
    openTraceDatabase(fromWide(paths.front()));
}

void frmMain::openTraceDatabase(const std::u16string& path) {
    runProcedure(u"[frmMain]mnuOpenTraceDatabase_Click", Limit::None, [&](Procedure& procedure) {
        procedure.step([&] { modDatabase::connectToDB(path); });
        // An upgrade may take a while: the rows before are closed, and are not to stand there
        // empty.
        procedure.step([&] {
            tdbgridData.dataChanged();
            showNoRecord();
        });
        procedure.step([&] {
            ado::Recordset& recordset = diags()->rsDiags();
            if (recordset.state() != ado::adStateClosed) recordset.setSort(u"");
        });
        procedure.step([&] { modDatabase::openRecordsets(); });
        // What was opened and selected in the tree belongs to the database before.
        procedure.step([&] { tvUniqueTraces.clear(); });
        procedure.step([&] { reloadDBGrid(diags()->rsDiags()); });
    });
}

void frmMain::sstabMain_Click(int previousTab) {
    const bool toGrid = previousTab != 0;
    tdbgridData.setVisible(toGrid);
    txtTrace.setVisible(toGrid);
}

/// The text box never keeps the focus: the keys belong to the grid.
void frmMain::txtTrace_Click() { tdbgridData.setFocus(); }

// The main window: a tab with the trace grid and the full text of the current trace, a tab for the
// filters, a menu and a status bar.
//
//   frmMain mainWindow;
//   mainWindow.show();
//   mainWindow.reloadDBGrid(recordset);
//
// The user-interface thread.
#pragma once

#include "engine/ado/recordset.h"
#include "src/db/loading_events.h"
#include "src/i18n/localized_form.h"
#include "src/search/dlg_find.h"
#include "src/ui/main/grid_arrangement.h"
#include "src/ui/main/trace_source.h"
#include "src/ui/status/frm_status.h"
#include "toolkit/forms/buttons.h"
#include "toolkit/forms/menu.h"
#include "toolkit/forms/status_bar.h"
#include "toolkit/forms/tab_strip.h"
#include "toolkit/forms/text_box.h"
#include "toolkit/forms/tree_view.h"
#include "toolkit/grid/grid.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class frmMain : public modLocalize::LocalizedForm, public LoadingEvents {
public:
    /// By which other programs find the window.
    static constexpr const wchar_t* kClassName = L"VorelleDiagnosticViewer.frmMain";

    frmMain();
    ~frmMain() override { destroy(); }

    /// Repeats the find dialog's last search downwards; shows the dialog if `findNext` is false.
    void myfindText(bool findNext);

    /// Asks for a trace database; empty if the user cancelled.
    std::u16string selectDatabase();

    /// Binds the grid to a trace recordset.
    void reloadDBGrid(ado::Recordset& recordset);

    /// Sorts by a column; a second click reverses the order.
    void tdbgridData_HeadClick(int ColIndex);

    /// Shows the status window over this one, or changes its text. During an export the window is
    /// reserved for its progress: neither call has an effect.
    void displayStatus(const std::u16string& text, bool showProgress);
    void hideStatus();

    /// Captions, wrapping and widths of the grid's columns.
    void setupTraceGrid();

    /// Captions of tabs, buttons and menus, the title and the position, in the language in use.
    void frmMain_Auto_Init();

    // What the data side tells.
    void openingBegins() override;
    void openingEnds() override;
    void upgradeBegins() override;
    void upgradeEnds() override;
    void loadBegins() override;
    void loadRefused() override;
    void rowsLoaded(std::uint32_t count) override;
    void loadEnded(const LoadResult& result) override;
    void computingBegins() override;
    void computingEnds() override;

    /// Panels of the status bar that show something, from 1.
    enum Panel : int { kNoticePanel = 1, kPositionPanel = 3, kClockPanel = 5 };

    /// Ends the program. Set by start-up; tests put their own in its place.
    std::function<void()> endProgram;

    forms::TabStrip sstabMain{{L"Trace Data", L"Filters"}};
    grid::Grid tdbgridData;
    forms::TextBox txtTrace{{.multiLine = true, .readOnly = true, .verticalScroll = true}};
    forms::Button cmdApplyFilter;
    forms::Button cmdAddMacroTraceToFilter;
    forms::TreeView tvUniqueTraces{{.checkBoxes = true}};
    forms::Button cmdExpandAll;
    forms::Button cmdCollapseAll;
    forms::Button cmdClearAllUniqueTraces;
    forms::Button cmdSelectAllUniqueTraces;
    forms::StatusBar statusbarMain{{
        {.key = L"keyPanel1", .width = forms::PanelWidth::spring},
        {.key = L"keyPanel2", .twips = forms::Twips{720}},
        {.key = L"", .width = forms::PanelWidth::content, .twips = forms::Twips{2400}},
        {.key = L"keyPanel4", .twips = forms::Twips{720}},
        {.key = L"keyPanel5",
         .width = forms::PanelWidth::content,
         .twips = forms::Twips{1080},
         .kind = forms::PanelKind::clock},
    }};
    frmStatus status;
    dlgFind findDialog;

    forms::MenuItem mnuFileMenu;
    forms::MenuItem mnuOpenTraceDatabase;
    forms::MenuItem mnuExportData;
    forms::MenuItem pFileSeperator;
    forms::MenuItem mnuExit;
    forms::MenuItem mnuEdit;
    forms::MenuItem mnuFind;
    forms::MenuItem mnuFindNext;
    forms::MenuItem mnuHelpMenu;
    forms::MenuItem mnuHelp;
    forms::MenuItem pHelpSeperator;
    forms::MenuItem mnuAbout;
    forms::MenuItem mnuRightClick;
    forms::MenuItem mnuAddEditNote;
    forms::MenuItem mnuHighlightRow;

private:
    void build() override;
    void Form_Load() override;
    void Form_Resize() override;
    void Form_Unload(bool& cancel) override;
    void Form_DropFiles(const std::vector<std::wstring>& paths) override;

    void Auto_Init() override { frmMain_Auto_Init(); }
    void localizeCaptions();
    void layOutForLanguage();
    void centerDisplay();
    void shutDown();

    void mnuOpenTraceDatabase_Click();
    void openTraceDatabase(const std::u16string& path);
    void mnuExit_Click();
    void mnuHelp_Click();
    void mnuAbout_Click();
    void mnuAddEditNote_Click() {}
    void sstabMain_Click(int previousTab);
    void txtTrace_Click();
    void tdbgridData_ColResize(int column, bool& cancel);
    void tdbgridData_RowColChange();
    void showPosition();
    void showNoRecord();
    void showLoadingNotice(const wchar_t* notice);
    void tdbgridData_FetchCellTips(std::int64_t row, bool& wrap);

    void layOutFilters();
    void populateUniqueTracesTree();
    void tvUniqueTraces_NodeCheck(forms::TreeNode& node);
    void cmdSelectAllUniqueTraces_Click();
    void cmdClearAllUniqueTraces_Click();
    void cmdExpandAll_Click();
    void cmdCollapseAll_Click();
    void cmdApplyFilter_Click();
    void cmdAddMacroTraceToFilter_Click();
    std::u16string constructFilters();
    void setAllSelected(bool selected);
    void setAllExpanded(bool expanded);

    void mnuFind_Click();
    void mnuFindNext_Click();
    void mnuExportData_Click();
    bool exportIsRunning() const { return !mnuExportData.enabled(); }
    void setNotice(const std::u16string& text);
    std::wstring askExportPath();
    bool exportTo(const std::wstring& path);

    ado::Recordset* recordset_ = nullptr;
    std::unique_ptr<TraceSource> source_;
    forms::Twips savedRowHeight_;
    std::optional<GridArrangement> arrangement_;  ///< of the columns that were last there
};

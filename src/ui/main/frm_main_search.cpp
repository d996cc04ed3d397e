// The main window's part in searching and exporting.
#include "src/db/class_diags.h"
#include "src/db/mod_database.h"
#include "src/i18n/mod_localize.h"
#include "src/log/procedure.h"
#include "src/platform/running_on_server.h"
#include "src/platform/user_dialogs.h"
#include "src/search/ansi_file.h"
#include "src/search/export.h"
#include "src/search/hourglass.h"
#include "src/search/trace_search.h"
#include "src/text/text.h"
#include "src/ui/main/frm_main.h"
#include "toolkit/forms/application.h"

#include <windows.h>
#include <mmsystem.h>

#include <filesystem>

using modLocalize::text;
using modLocalize::Text;

namespace {

/// Milliseconds between blocks. A server's own work goes first.
constexpr DWORD kPause = 1;
constexpr DWORD kPauseOnServer = 100;

/// Makes pauses of a millisecond last about that long; the system's usual step is some 16.
class FinePauses {
public:
    FinePauses() { ::timeBeginPeriod(1); }
    ~FinePauses() { ::timeEndPeriod(1); }
    FinePauses(const FinePauses&) = delete;
    FinePauses& operator=(const FinePauses&) = delete;
};

/// A dead menu entry until the end of the block.
class Disabled {
public:
    explicit Disabled(forms::MenuItem& item) : item_{item} { item_.setEnabled(false); }
    ~Disabled() { item_.setEnabled(true); }
    Disabled(const Disabled&) = delete;
    Disabled& operator=(const Disabled&) = delete;

private:
    forms::MenuItem& item_;
};

/// The open database would let itself be overwritten, and its records would be lost.
void refuseDatabase(const std::wstring& path) {
    std::error_code ignored;
    if (std::filesystem::equivalent(path, modDatabase::databasePath(), ignored)) {
        throw RuntimeError{RuntimeError::kPermissionDenied, u"Permission denied"};
    }
}

}  // namespace

/// Whoever tells of the end of something long may find the window closed.
void frmMain::setNotice(const std::u16string& text) {
    if (!isLoaded()) return;
    statusbarMain.panel(kNoticePanel).setText(toWide(text));
    statusbarMain.refresh();
}

void frmMain::displayStatus(const std::u16string& text, bool showProgress) {
    if (!exportIsRunning()) status.displayStatus(text, showProgress, isLoaded() ? this : nullptr);
}

void frmMain::hideStatus() {
    if (!exportIsRunning()) status.hideStatus();
}

/// At first the dialog stands over this window, on whatever display that is; then where the user
/// put it.
void frmMain::mnuFind_Click() {
    if (!findDialog.isLoaded()) {
        findDialog.load();
        findDialog.center(this);
    }
    findDialog.show();
    findDialog.comboFindWhat.setFocus();
    findDialog.comboFindWhat.selectText();
}

void frmMain::mnuFindNext_Click() { myfindText(true); }

void frmMain::myfindText(bool findNext) {
    if (!findNext) return mnuFind_Click();
    const std::u16string text = lastFindText();
    if (text.empty()) return;
    const Hourglass hourglass{*this};
    const forms::OnEscape stop{modDatabase::cancelSearch};
    forms::doEvents();
    searchTraces(u"[frmMain]myfindText", diags()->rsDiags(), {.text = text, .stepFirst = true},
                 [this](const std::u16string& notice) { setNotice(notice); });
}

void frmMain::mnuExportData_Click() {
    runProcedure(u"[frmMain]mnuExportData_Click", {.timed = true}, [this](Procedure& procedure) {
        std::wstring path;
        procedure.step([&] { path = askExportPath(); });
        if (path.empty()) return;
        const Disabled once{mnuExportData};
        const std::u16string notice = text(Text::ExportingTo) + fromWide(path);
        procedure.step([&] { setNotice(notice); });
        procedure.step([&] { status.displayStatus(notice, true, this); });
        bool complete = false;
        procedure.step([&] { complete = exportTo(path); });
        procedure.step([&] { status.hideStatus(); });
        // Nothing that failed is called complete.
        procedure.step([&] {
            setNotice(complete ? text(Text::ExportComplete) + fromWide(path) + u")" : u"");
        });
    });
}

std::wstring frmMain::askExportPath() {
    const auto chosen = userDialogs().saveFile(hwnd(), {.filter = L"TXT (*.txt)|*.txt",
                                                        .defaultExtension = L"txt",
                                                        .fileName = L"Diagnostics.txt"});
    if (!chosen) throw RuntimeError{RuntimeError::kCancelled, u"Cancel was selected."};
    return chosen->path;
}

/// False if the window was closed meanwhile. The file is opened last of all: without records to
/// write, the one that is there stays.
bool frmMain::exportTo(const std::wstring& path) {
    ado::Recordset& traces = diags()->rsDiags();
    const auto rows = traces.clone();
    rows->setSort(traces.sort());
    forms::ProgressBar& progress = status.pbarStatus;
    progress.setMax(traces.recordCount());
    progress.setValue(0);
    refuseDatabase(path);
    AnsiFile file{path};
    TraceExport output{*rows, file};
    const FinePauses finePauses;
    while (output.writeBlock()) {
        if (const int position = output.position(); position >= 1) progress.setValue(position);
        ::Sleep(modMain::runningOnServer ? kPauseOnServer : kPause);
        forms::doEvents();
        if (!isLoaded()) return false;
    }
    return true;
}

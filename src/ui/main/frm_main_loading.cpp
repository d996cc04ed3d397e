// What the main window shows while a database is opened and its trace records arrive.
#include "src/i18n/mod_localize.h"
#include "src/ui/main/frm_main.h"

using modLocalize::text;
using modLocalize::Text;

namespace {

constexpr const wchar_t* kLoadingNotice =
    L"Loading diagnostic, data is not sorted by date until completely loaded.";

/// The status bar is rewritten once in so many rows, so that it does not slow the load.
constexpr std::uint32_t kProgressStep = 1000;

}  // namespace

void frmMain::openingBegins() { displayStatus(text(Text::LoadingPleaseWait), false); }

void frmMain::openingEnds() { hideStatus(); }

void frmMain::upgradeBegins() { setMousePointer(forms::MousePointer::hourglass); }

void frmMain::upgradeEnds() { setMousePointer(forms::MousePointer::standard); }

void frmMain::loadBegins() { showLoadingNotice(kLoadingNotice); }

/// Notice and pointer, which a load that was broken off left behind, would stay for ever.
void frmMain::loadRefused() {
    showLoadingNotice(L"");
    setMousePointer(forms::MousePointer::standard);
}

void frmMain::showLoadingNotice(const wchar_t* notice) {
    load();
    statusbarMain.panel(kNoticePanel).setText(notice);
}

void frmMain::rowsLoaded(std::uint32_t count) {
    tdbgridData.rowCountChanged();
    if (count % kProgressStep != 0) return;
    setMousePointer(forms::MousePointer::arrowHourglass);
    load();
    showPosition();
}

/// A load that failed or was broken off ends like a complete one: what arrived is there to use.
void frmMain::loadEnded(const LoadResult& /*result*/) {
    tdbgridData.rowCountChanged();
    load();
    showPosition();
    showLoadingNotice(L"");
    setMousePointer(forms::MousePointer::hourglass);
    tdbgridData_HeadClick(tdbgridData.columnIndex(L"Date"));
    setMousePointer(forms::MousePointer::standard);
}

void frmMain::computingBegins() { setMousePointer(forms::MousePointer::hourglass); }

void frmMain::computingEnds() {
    setMousePointer(forms::MousePointer::standard);
    populateUniqueTracesTree();
}

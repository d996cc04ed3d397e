#include "src/ui/status/frm_status.h"

#include "src/i18n/mod_localize.h"
#include "src/text/text.h"
#include "toolkit/forms/application.h"

using modLocalize::Text;
using modLocalize::wideText;
using namespace forms::literals;

frmStatus::frmStatus()
    : LocalizedForm({.className = L"VorelleDiagnosticViewer.frmStatus",
                     .caption = modLocalize::kProductTitle,
                     .border = forms::BorderStyle::fixedWindow,
                     .clientWidth = 5400_tw,
                     .clientHeight = 1500_tw}) {}

void frmStatus::build() {
    createControls({
        {frameStatus, {L"frameStatus", L"", 120_tw, 60_tw, 5160_tw, 1320_tw}},
        {lblStatus, {L"lblStatus", L"", 180_tw, 300_tw, 4800_tw, 480_tw, 0, &frameStatus}},
        {pbarStatus,
         {L"pbarStatus", L"", 180_tw, 900_tw, 4800_tw, 255_tw, forms::kHidden, &frameStatus}},
    });
}

void frmStatus::Form_Load() {
    inUse_ = false;
    modLocalize::applyLanguageFont(*this);
    frmStatus_Auto_Init();
}

void frmStatus::frmStatus_Auto_Init() {
    frameStatus.setCaption(wideText(Text::ProductTitle));
    pbarStatus.setAccessibleName(wideText(Text::ProductTitle));
    if (!inUse_) lblStatus.setText(wideText(Text::StatusTextGoesHere));
}

/// Closing the window with the mouse only hides it: it belongs to the operation that shows it.
void frmStatus::Form_Unload(bool& cancel) {
    cancel = true;
    hide();
}

void frmStatus::displayStatus(const std::u16string& text, bool showProgress,
                              const forms::Form* owner) {
    load();
    inUse_ = true;
    lblStatus.setText(toWide(text));
    pbarStatus.setVisible(showProgress);
    center(owner);
    // The user may be typing in another window of the program.
    owner != nullptr && owner->visible() ? showInactive(*owner) : show(owner);
    refresh();
    forms::doEvents();
}

void frmStatus::setStatus(const std::u16string& text) {
    inUse_ = true;
    lblStatus.setText(toWide(text));
    lblStatus.refresh();
}

void frmStatus::hideStatus() {
    if (isLoaded()) hide();
}

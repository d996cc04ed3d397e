#include "src/search/dlg_find.h"

#include "resources/resource_ids.h"
#include "src/db/class_diags.h"
#include "src/db/mod_database.h"
#include "src/i18n/mod_localize.h"
#include "src/search/hourglass.h"
#include "src/search/trace_search.h"
#include "src/text/text.h"
#include "toolkit/forms/application.h"

using namespace forms::literals;

namespace {

constexpr int kUp = 0;
constexpr int kDown = 1;

}  // namespace

dlgFind::dlgFind()
    : Form({.className = L"VorelleDiagnosticViewer.dlgFind",
            .caption = L"Find",
            .border = forms::BorderStyle::fixedDialog,
            .clientWidth = 6300_tw,
            .clientHeight = 1560_tw,
            .icon = IDI_VIEWER}) {}

void dlgFind::build() {
    createControls({
        {lblFindWhat, {L"lblFindWhat", L"Find What:", 120_tw, 180_tw, 1140_tw, 255_tw}},
        {comboFindWhat, {L"comboFindWhat", L"", 1320_tw, 120_tw, 3420_tw, 315_tw}},
        {frmDirection, {L"frmDirection", L"Direction", 1320_tw, 600_tw, 3420_tw, 780_tw}},
        {optionDirection[kUp],
         {L"optionDirection0", L"&Up", 240_tw, 300_tw, 1320_tw, 315_tw, 0, &frmDirection}},
        {optionDirection[kDown],
         {L"optionDirection1", L"&Down", 1860_tw, 300_tw, 1320_tw, 315_tw, 0, &frmDirection}},
        {cmdFindNext,
         {L"cmdFindNext", L"Find &Next", 4920_tw, 120_tw, 1260_tw, 375_tw, forms::kDefaultButton}},
        {CancelButton,
         {L"CancelButton", L"Cancel", 4920_tw, 600_tw, 1260_tw, 375_tw, forms::kCancelButton}},
    });
    comboFindWhat.onChange = [this] { comboFindWhat_Change(); };
    comboFindWhat.onClick = [this] { comboFindWhat_Change(); };
    cmdFindNext.onClick = [this] { cmdFindNext_Click(); };
    CancelButton.onClick = [this] { CancelButton_Click(); };
}

/// The captions are the same in every language, but what is searched for may need its font.
void dlgFind::Form_Load() {
    modLocalize::applyLanguageFont(*this);
    comboFindWhat.setAccessibleName(lblFindWhat.caption());
    optionDirection[kDown].setValue(true);
    center();
}

/// Closed by its caption bar the dialog behaves as cancelled.
void dlgFind::Form_Unload(bool& cancel) {
    cancel = true;
    CancelButton_Click();
}

void dlgFind::comboFindWhat_Change() { lastFindText() = fromWide(comboFindWhat.text()); }

void dlgFind::cmdFindNext_Click() {
    myfindText(findNext_);
    findNext_ = true;
}

void dlgFind::CancelButton_Click() {
    findNext_ = false;
    hide();
}

void dlgFind::addFindHistory(const std::u16string& text) {
    const FindHistory::Use use = history_.use(text);
    if (use.added) {
        comboFindWhat.addItem(toWide(text), use.index);
        findNext_ = false;
    }
    comboFindWhat.setListIndex(use.index);
}

void dlgFind::myfindText(const bool& findNext) {
    const std::u16string text = fromWide(comboFindWhat.text());
    if (text.empty()) return;
    addFindHistory(text);
    const Hourglass hourglass{*this};
    const forms::OnEscape stop{modDatabase::cancelSearch};
    forms::doEvents();
    searchTraces(u"[dlgFind]myfindText", diags()->rsDiags(),
                 {.text = text, .backward = optionDirection[kUp].value(), .stepFirst = findNext},
                 setNotice);
}

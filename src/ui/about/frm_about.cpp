#include "src/ui/about/frm_about.h"

#include "resources/resource_ids.h"
#include "src/i18n/language_codes.h"
#include "src/i18n/mod_localize.h"
#include "src/log/procedure.h"
#include "src/platform/program.h"
#include "src/text/text.h"

#include <vector>

using modLocalize::Text;
using modLocalize::wideText;
using namespace forms::literals;

namespace {

/// The log is not for what may go wrong here, with the user looking on.
constexpr Convention kEvent{.quiet = true};

std::u16string versionText() {
    const program::Version version = program::version();
    return toText(version.major) + u"." + toText(version.minor) + u" Build" +
           toText(version.revision);
}

/// In every form that is loaded, also in those that are hidden. The list is a copy, as forms may
/// load others meanwhile.
void relocalizeForms(Procedure& procedure) {
    for (forms::Form* const form : std::vector<forms::Form*>{forms::loadedForms()}) {
        procedure.step([&] { modLocalize::applyLanguageFont(*form); });
        procedure.step([&] {
            auto* const localized = dynamic_cast<modLocalize::LocalizedForm*>(form);
            if (localized != nullptr) localized->Auto_Init();
        });
        procedure.step([&] {
            for (forms::Control* const control : form->controls()) control->refresh();
        });
    }
}

}  // namespace

frmAbout::frmAbout()
    : LocalizedForm({.className = L"VorelleDiagnosticViewer.frmAbout",
                     .caption = L"About",
                     .border = forms::BorderStyle::fixedDialog,
                     .clientWidth = 6300_tw,
                     .clientHeight = 3900_tw}) {}

void frmAbout::build() {
    constexpr forms::Twips kLeft = 1080_tw;
    constexpr forms::Twips kWidth = 5040_tw;
    constexpr forms::Twips kLine = 255_tw;
    menu().build({
        {0, mnuLanguage, L"mnuLanguage", L"Select Language", nullptr, L"", /*visible=*/false},
    });
    mnuLanguageList.clear();
    createControls({
        {pictureProgram, {L"pictureProgram", L"", 240_tw, 240_tw, 600_tw, 600_tw}},
        {lblProduct, {L"lblProduct", L"", kLeft, 225_tw, kWidth, 330_tw}},
        {lblVersionCaption, {L"lblVersionCaption", L"Version:", kLeft, 600_tw, 1080_tw, kLine}},
        {lblVersion, {L"lblVersion", L"", 2220_tw, 600_tw, 3900_tw, kLine}},
        {lblCompany, {L"lblCompany", L"", kLeft, 1080_tw, kWidth, kLine}},
        {lblCity, {L"lblCity", L"", kLeft, 1350_tw, kWidth, kLine}},
        {lblCountry, {L"lblCountry", L"", kLeft, 1620_tw, kWidth, kLine}},
        {lblRights, {L"lblRights", L"", kLeft, 2100_tw, kWidth, 510_tw}},
        {lblTrademark, {L"lblTrademark", L"", kLeft, 2670_tw, kWidth, 510_tw}},
        {lblChangeLanguage,
         {L"lblChangeLanguage", L"Change Language", kLeft, 3435_tw, 2400_tw, kLine}},
        {cmdOK,
         {L"cmdOK", L"OK", 4860_tw, 3360_tw, 1260_tw, 375_tw,
          forms::kDefaultButton | forms::kCancelButton}},
    });
    forms::Font title = forms::messageFont();
    title.points = 12;
    title.bold = true;
    lblProduct.setFont(title);
    pictureProgram.setIcon(IDI_VIEWER);
    lblChangeLanguage.onClick = [this] { lblChangeLanguage_Click(); };
    cmdOK.onClick = [this] { cmdOK_Click(); };
}

void frmAbout::Form_Load() {
    runProcedure(u"[frmAbout]Form_Load", kEvent, [this](Procedure& procedure) {
        procedure.step([this] { modLocalize::applyLanguageFont(*this); });
        procedure.step([this] { frmAbout_Auto_Init(); });
        procedure.step([this] { lblVersion.setText(toWide(versionText())); });
        procedure.step([] { modLocalize::InitalizeLanguages(); });
        procedure.step([this] { listLanguages(); });
        procedure.step([this] { cmdOK.setFocus(); });
    });
}

void frmAbout::frmAbout_Auto_Init() {
    setCaption(wideText(Text::About));
    lblProduct.setText(wideText(Text::ProductTitle));
    lblVersionCaption.setText(wideText(Text::Version));
    lblCompany.setText(wideText(Text::Company));
    lblRights.setText(wideText(Text::AllRightsReserved));
    lblCity.setText(wideText(Text::CompanyCity));
    lblCountry.setText(wideText(Text::CompanyCountry));
    lblTrademark.setText(wideText(Text::Trademark));
    lblChangeLanguage.setText(wideText(Text::ChangeLanguage));
    cmdOK.setCaption(wideText(Text::Ok));
    mnuLanguage.setCaption(wideText(Text::SelectLanguage));
    if (mnuLanguageList.empty()) return;
    if (noneInstalled()) mnuLanguageList.front().setCaption(wideText(Text::NoLanguagesLoaded));
    checkCurrentLanguage();
}

void frmAbout::listLanguages() {
    for (const std::u16string& code : modLocalize::installedLanguages()) addLanguage(code);
    checkCurrentLanguage();
}

/// The empty code stands for no language at all: an entry that only says so.
void frmAbout::addLanguage(const std::u16string& code) {
    const std::size_t index = mnuLanguageList.size();
    forms::MenuItem& item = mnuLanguageList.emplace_back();
    menu().append(
        {1, item, L"mnuLanguageList", L"", [this, index] { mnuLanguageList_Click(index); }});
    item.setEnabled(!code.empty());
    item.setCaption(code.empty() ? wideText(Text::NoLanguagesLoaded)
                                 : toWide(modLocalize::languageNameOfCode(code)));
    if (!code.empty()) item.setTag(toWide(toText(modLocalize::languageOfCode(code))));
}

void frmAbout::checkCurrentLanguage() {
    const std::wstring current = toWide(toText(modLocalize::currentLanguage()));
    for (forms::MenuItem& item : mnuLanguageList) item.setChecked(item.tag() == current);
}

void frmAbout::lblChangeLanguage_Click() {
    runProcedure(u"[frmAbout]lblChangeLanguage_Click", kEvent, [this](Procedure& procedure) {
        procedure.step([this] {
            RECT label{};
            ::GetWindowRect(lblChangeLanguage.hwnd(), &label);
            menu().popUp(mnuLanguage, hwnd(), {label.left, label.bottom});
        });
    });
}

void frmAbout::mnuLanguageList_Click(std::size_t index) {
    runProcedure(u"[frmAbout]mnuLanguageList_Click", kEvent, [&](Procedure& procedure) {
        procedure.step([&] {
            const std::wstring& tag = mnuLanguageList.at(index).tag();
            modLocalize::setCurrentLanguage(static_cast<std::uint16_t>(std::stoul(tag)));
        });
        procedure.step([] { modLocalize::InitalizeLanguages(); });
        relocalizeForms(procedure);
        procedure.step([this] {
            if (layOutMainWindow) layOutMainWindow();
        });
    });
}

void frmAbout::cmdOK_Click() {
    runProcedure(u"[frmAbout]cmdOK_Click", kEvent,
                 [this](Procedure& procedure) { procedure.step([this] { unload(); }); });
}

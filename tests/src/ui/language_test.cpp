// Languages as users meet them: real libraries, the about box, and all forms that are open when
// another language is chosen.
#include "src/db/trace_filter.h"
#include "src/i18n/language_codes.h"
#include "src/ui/about/frm_about.h"
#include "tests/src/log/step_fault.h"
#include "tests/src/ui/language_libraries.h"
#include "tests/src/ui/macro_traces_test.h"
#include "tests/support/language_table.h"

#include <windows.h>
#include <commctrl.h>

#include <array>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>

namespace {

using modLocalize::installedLanguages;
using modLocalize::myLoadResString;
using Codes = std::vector<std::u16string>;

constexpr std::uint16_t kGerman = 1031;
constexpr std::uint16_t kFrench = 1036;
constexpr std::uint16_t kJapanese = 1041;

std::u16string englishText(unsigned id) { return fixture::readLanguageTable("ENU").at(id); }

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

/// What the system itself calls a language.
std::wstring nameBySystem(DWORD language) {
    std::array<wchar_t, 256> name{};
    ::VerLanguageNameW(language, name.data(), static_cast<DWORD>(name.size()));
    return name.data();
}

void choose(const frmAbout& about, std::uint16_t language) {
    const std::wstring tag = std::to_wstring(language);
    for (const forms::MenuItem& item : about.mnuLanguageList) {
        if (item.tag() == tag) return item.onClick();
    }
    FAIL() << "language " << language << " is not in the menu";
}

/// Runs in the loop of the modal about box, which it closes in the end.
std::function<void(frmAbout&)> aboutAction;

void CALLBACK runInAboutBox(HWND, UINT, UINT_PTR timer, DWORD) {
    const HWND window = ::FindWindowW(L"VorelleDiagnosticViewer.frmAbout", nullptr);
    auto* const about = dynamic_cast<frmAbout*>(forms::Form::of(window));
    if (about == nullptr || !about->visible()) return;
    ::KillTimer(nullptr, timer);
    aboutAction(*about);
    about->cmdOK.click();
}

class LanguageTest : public MacroTracesTest {
protected:
    ~LanguageTest() override { about.destroy(); }

    std::vector<std::wstring> languageMenu() const {
        std::vector<std::wstring> captions;
        for (const forms::MenuItem& item : about.mnuLanguageList)
            captions.push_back(item.caption());
        return captions;
    }

    /// Opens the about box from the menu, and closes it after the action.
    void inAboutBox(const std::function<void(frmAbout&)>& action) {
        bool ran = false;
        aboutAction = [&](frmAbout& box) {
            ran = true;
            action(box);
        };
        ::SetTimer(nullptr, 0, 10, &runInAboutBox);
        ::SendMessageW(form.hwnd(), WM_COMMAND, static_cast<WPARAM>(form.mnuAbout.id()), 0);
        EXPECT_TRUE(ran);
        EXPECT_TRUE(::IsWindowEnabled(form.hwnd()));
    }

    void chooseInAboutBox(std::uint16_t language) {
        inAboutBox([&](const frmAbout& box) { choose(box, language); });
    }

    frmAbout about;
};

TEST_F(LanguageTest, WithoutLibrariesTheListIsOneEmptyCodeAndTheMenuSaysSo) {
    const LanguageFolder languages{{}};
    languages.use(kGerman);
    EXPECT_EQ(installedLanguages(), Codes{u""});
    EXPECT_EQ(myLoadResString(1017), u"Apply Filter");
    about.load();
    EXPECT_EQ(languageMenu(), std::vector<std::wstring>{L"No languages loaded"});
    EXPECT_TRUE(dialogs.messages.empty());
}

TEST_F(LanguageTest, ThreeLibrariesAreListedInTheOrderOfTheFolder) {
    const LanguageFolder languages{{"FRA", "DEU", "ENU"}};
    about.load();
    EXPECT_EQ(installedLanguages(), (Codes{u"DEU", u"ENU", u"FRA"}));
    EXPECT_EQ(languageMenu(),
              (std::vector<std::wstring>{nameBySystem(kGerman), nameBySystem(kEnglish),
                                         nameBySystem(kFrench)}));
    EXPECT_EQ(about.mnuLanguageList[2].tag(), L"1036");
}

TEST_F(LanguageTest, TheBuiltLibrariesAreThoseOfTheTables) {
    LanguageFolder::use(kEnglish);
    Codes expected;
    for (const std::string& code : fixture::languageCodes()) {
        expected.emplace_back(code.begin(), code.end());
    }
    EXPECT_EQ(installedLanguages(), expected);
}

TEST_F(LanguageTest, EveryTextOfEveryLibraryIsThatOfItsTable) {
    for (const std::string& code : fixture::languageCodes()) {
        const LanguageFolder languages{{code}};
        languages.use(modLocalize::languageOfCode(std::u16string{code.begin(), code.end()}));
        EXPECT_EQ(modLocalize::currentLanguageCode(), std::u16string(code.begin(), code.end()));
        for (const auto& [id, text] : fixture::readLanguageTable(code)) {
            EXPECT_EQ(myLoadResString(id), text) << code << " " << id;
        }
    }
}

TEST_F(LanguageTest, TextsThatALibraryLacksAreEnglish) {
    const LanguageFolder languages{{}};
    std::filesystem::copy_file(VORELLE_PARTIAL_LIBRARY,
                               languages.path() / "QRXbrandingres_DES.dll");
    languages.use(2055);
    EXPECT_EQ(myLoadResString(1017), u"Filter aawände");
    EXPECT_EQ(myLoadResString(1018), englishText(1018));
    EXPECT_EQ(myLoadResString(1000), englishText(1000));
    EXPECT_EQ(myLoadResString(1057), u"Notiz vo dr Schwyz");
    EXPECT_EQ(myLoadResString(999), u"");
}

TEST_F(LanguageTest, ANameInSmallLettersKeepsItsSpelling) {
    const LanguageFolder languages{{}};
    std::filesystem::copy_file(builtLibrary("DEU"), languages.path() / "qrxbrandingres_deu.dll");
    about.load();
    EXPECT_EQ(installedLanguages(), Codes{u"deu"});
    EXPECT_EQ(languageMenu(), std::vector<std::wstring>{nameBySystem(kGerman)});
    choose(about, kGerman);
    EXPECT_EQ(about.cmdOK.caption(), L"OK");
    EXPECT_EQ(about.lblChangeLanguage.text(), L"Sprache ändern");
}

TEST_F(LanguageTest, BothSpanishLanguagesLookForTheirOwnLibrary) {
    const LanguageFolder languages{{"ESN"}};
    languages.use(3082);
    EXPECT_EQ(myLoadResString(1028), u"Filtros");
    languages.use(1034);
    EXPECT_EQ(modLocalize::currentLanguageCode(), u"ESP");
    EXPECT_EQ(myLoadResString(1028), u"Filters");
}

TEST_F(LanguageTest, AnIdentifierOutsideTheTableHasEnglishTexts) {
    const LanguageFolder languages{{"DEU", "ENU"}};
    languages.use(0xF000);
    EXPECT_EQ(modLocalize::currentLanguageCode(), u"ERROR");
    EXPECT_EQ(myLoadResString(1028), u"Filters");
    EXPECT_TRUE(dialogs.messages.empty());
}

TEST_F(LanguageTest, TheFirstLanguageIsTheUsers) {
    LanguageFolder::use(0);
    EXPECT_EQ(modLocalize::currentLanguage(), ::GetUserDefaultLangID());
    EXPECT_EQ(modLocalize::userLanguageCode(),
              modLocalize::codeOfLanguage(::GetUserDefaultLangID()));
}

TEST_F(LanguageTest, AFileThatIsNoLibraryIsListedAndItsTextsAreEnglish) {
    const LanguageFolder languages{{}};
    std::ofstream{languages.path() / "QRXbrandingres_DEU.dll"} << "no library";
    languages.use(kGerman);
    EXPECT_EQ(installedLanguages(), Codes{u"DEU"});
    EXPECT_EQ(myLoadResString(1028), u"Filters");
    EXPECT_TRUE(dialogs.messages.empty());
}

/// No text is cut off or worse, and the user is told once.
TEST_F(LanguageTest, ALibraryThatWasCutOffIsDoneWithout) {
    const LanguageFolder languages{{}};
    const std::filesystem::path library = languages.path() / "QRXbrandingres_DEU.dll";
    const auto whole = std::filesystem::file_size(builtLibrary("DEU"));
    const fixture::LanguageTable german = fixture::readLanguageTable("DEU");
    const fixture::LanguageTable english = fixture::readLanguageTable("ENU");
    int told = 0;
    for (std::uintmax_t size = whole - 256; size > 256; size -= 256) {
        std::filesystem::copy_file(builtLibrary("DEU"), library,
                                   std::filesystem::copy_options::overwrite_existing);
        std::filesystem::resize_file(library, size);
        dialogs.messages.clear();
        languages.use(kGerman);
        for (const auto& [id, text] : german) {
            const std::u16string loaded = myLoadResString(id);
            EXPECT_TRUE(loaded == text || loaded == english.at(id)) << size << " bytes, " << id;
        }
        for (const forms::MessageRequest& message : dialogs.messages) {
            EXPECT_EQ(message.text,
                      L"Error in InitalizeLanguages: Invalid format in resource file");
            ++told;
        }
        EXPECT_LE(dialogs.messages.size(), 1u) << size;
        languages.use(kEnglish);
    }
    EXPECT_GT(told, 0);
    EXPECT_TRUE(reports.empty()) << "a message box takes the place of the log";
}

TEST_F(LanguageTest, ALibraryWhoseTextsOverrunItIsDoneWithout) {
    const LanguageFolder languages{{"DEU"}};
    const std::filesystem::path library = languages.path() / "QRXbrandingres_DEU.dll";
    std::string bytes = contentOf(library);
    const std::u16string last = u"Notiz";  // the length in front of it leads beyond the file
    const std::size_t found =
        bytes.find(std::string{reinterpret_cast<const char*>(last.data()), 2 * last.size()});
    ASSERT_NE(found, std::string::npos);
    bytes.replace(found - 2, 2, "\xFF\xFF");
    std::ofstream{library, std::ios::binary} << bytes;
    languages.use(kGerman);
    ASSERT_EQ(dialogs.messages.size(), 1u);
    EXPECT_EQ(dialogs.messages[0].text,
              L"Error in InitalizeLanguages: Invalid format in resource file");
    EXPECT_EQ(dialogs.messages[0].buttons, forms::MessageButtons::ok);
    EXPECT_EQ(myLoadResString(1057), u"Note");
    EXPECT_EQ(myLoadResString(1028), u"Filters");
    EXPECT_EQ(installedLanguages(), Codes{u"DEU"}) << "the next steps ran";
}

TEST_F(LanguageTest, ATextThatCannotBeLoadedIsToldInAMessageBoxAndIsEmpty) {
    setStepFault([](std::u16string_view label) {
        if (label != u"[modLocalize]myLoadResString") return;
        throw RuntimeError{RuntimeError::kOutOfMemory, u"Out of memory"};
    });
    EXPECT_EQ(myLoadResString(1028), u"");
    setStepFault({});
    ASSERT_EQ(dialogs.messages.size(), 1u);
    EXPECT_EQ(dialogs.messages[0].text, L"error in myLoadResString: Out of memory");
    EXPECT_EQ(dialogs.messages[0].buttons, forms::MessageButtons::ok);
    EXPECT_TRUE(reports.empty()) << "not in the log";
    EXPECT_EQ(myLoadResString(1028), u"Filters");
}

TEST_F(LanguageTest, FilesOfOtherNamesAreNotListed) {
    const LanguageFolder languages{{"ITA"}};
    std::ofstream{languages.path() / "QRXbrandingre_DEU.dll"} << "x";
    std::ofstream{languages.path() / "xQRXbrandingres_DEU.dll"} << "x";
    std::filesystem::create_directory(languages.path() / "QRXbrandingres_FRA.dll");
    LanguageFolder::use(kEnglish);
    EXPECT_EQ(installedLanguages(), Codes{u"ITA"});
}

TEST_F(LanguageTest, LanguagesThatTheSystemDoesNotKnowAreAnError) {
    EXPECT_EQ(toWide(modLocalize::languageName(kJapanese)), nameBySystem(kJapanese));
    EXPECT_EQ(toWide(modLocalize::languageNameOfCode(u"NOR")), nameBySystem(1044));
    EXPECT_EQ(modLocalize::languageNameOfCode(u"XYZ"), u"(error)");
    EXPECT_EQ(modLocalize::languageNameOfCode(u""), u"(error)");
}

TEST_F(LanguageTest, AFolderThatIsGoneIsToldInAMessageBox) {
    {
        const LanguageFolder languages{{"DEU"}};
        const ServicesInUse gone{
            servicesWith(&Services::languageFolder, u"C:\\there\\is no such folder")};
        languages.use(kGerman);
        EXPECT_EQ(installedLanguages(), Codes{u""});
        EXPECT_EQ(myLoadResString(1028), u"Filters") << "the next steps ran";
    }
    ASSERT_EQ(dialogs.messages.size(), 1u);
    EXPECT_EQ(dialogs.messages[0].text, L"Error in InitalizeLanguages: Path not found");
    EXPECT_EQ(dialogs.messages[0].buttons, forms::MessageButtons::ok);
}

TEST_F(LanguageTest, TheOldLibraryIsReleased) {
    const LanguageFolder languages{{"DEU", "FRA"}};
    languages.use(kGerman);
    languages.use(kFrench);
    EXPECT_EQ(myLoadResString(1018), u"Annuler");
    EXPECT_TRUE(std::filesystem::remove(languages.path() / "QRXbrandingres_DEU.dll"));
    EXPECT_EQ(::GetModuleHandleW(L"QRXbrandingres_FRA.dll"), nullptr) << "loaded as data only";
}

TEST_F(LanguageTest, TheAboutBoxTellsVersionAndMaker) {
    about.load();
    const program::Version version = program::version();
    EXPECT_EQ(about.lblVersion.text(), std::to_wstring(version.major) + L"." +
                                           std::to_wstring(version.minor) + L" Build" +
                                           std::to_wstring(version.revision));
    EXPECT_EQ(about.caption(), L"About");
    EXPECT_EQ(about.lblProduct.text(), L"Vorelle Diagnostic Viewer");
    EXPECT_EQ(about.lblCompany.text(), L"Veltrane Systems");
    EXPECT_EQ(fromWide(about.lblRights.text()), englishText(1023));
    EXPECT_EQ(fromWide(about.lblCity.text()), englishText(1037));
    EXPECT_EQ(fromWide(about.lblCountry.text()), englishText(1047));
    EXPECT_EQ(fromWide(about.lblTrademark.text()), englishText(1048));
    EXPECT_EQ(about.lblChangeLanguage.text(), L"Change Language");
    about.cmdOK.click();
    EXPECT_FALSE(about.isLoaded());
    EXPECT_TRUE(reports.empty());
}

TEST_F(LanguageTest, TheMenuShowsTheAboutBoxModally) {
    form.show();
    EXPECT_EQ(form.mnuAbout.caption(), L"About");
    inAboutBox([this](const frmAbout& box) {
        EXPECT_TRUE(box.isModal());
        EXPECT_FALSE(::IsWindowEnabled(form.hwnd()));
        EXPECT_TRUE(box.cmdOK.hasFocus());
    });
    EXPECT_TRUE(reports.empty());
}

UINT_PTR popupTimer = 0;

/// Chooses the second entry as soon as a menu is open.
void CALLBACK chooseSecond(HWND, UINT, UINT_PTR, DWORD) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    ::GetGUIThreadInfo(::GetCurrentThreadId(), &info);
    if (info.flags & GUI_INMENUMODE) {
        ::KillTimer(nullptr, popupTimer);
        for (const WPARAM key : {VK_DOWN, VK_DOWN, VK_RETURN}) {
            ::PostMessageW(info.hwndMenuOwner, WM_KEYDOWN, key, 1);
        }
    }
}

TEST_F(LanguageTest, ALanguageIsChosenFromThePopUpMenu) {
    const LanguageFolder languages{{"DEU", "FRA"}};
    about.load();
    about.show();
    popupTimer = ::SetTimer(nullptr, 0, 10, &chooseSecond);
    about.lblChangeLanguage.click();
    ::KillTimer(nullptr, popupTimer);
    EXPECT_EQ(modLocalize::currentLanguage(), kFrench);
    EXPECT_EQ(about.caption(), L"À propos");
    EXPECT_FALSE(about.mnuLanguageList[0].checked());
    EXPECT_TRUE(about.mnuLanguageList[1].checked());
}

// --- switching while everything is open ---

class SwitchTest : public LanguageTest {
protected:
    /// All forms loaded, the main window on a database, away from where it starts.
    void SetUp() override {
        open(makeFile("a.mdb", 2000));
        ASSERT_TRUE(waitLoaded());
        read({macroRow(u"A", u"t", u"<DIAG GROUP=\"Alpha\"><FLAG ID=\"1\"/></DIAG>")});
        form.findDialog.load();
        macros.load();
    }
    ~SwitchTest() override { macros.destroy(); }

    std::wstring heading(const wchar_t* field) { return form.tdbgridData.column(field).caption(); }

    std::vector<forms::Form*> allForms() {
        return {&form, &form.status, &form.findDialog, &macros};
    }

    LanguageFolder languages{fixture::languageCodes()};
    frmMacroTraces macros{form.tvUniqueTraces};
};

TEST_F(SwitchTest, EveryOpenFormSpeaksTheNewLanguageAtOnce) {
    inAboutBox([this](const frmAbout& box) {
        choose(box, kGerman);
        EXPECT_EQ(box.caption(), L"Info");
        EXPECT_EQ(box.lblCountry.text(), L"Vereinigte Staaten von Amerika");
        EXPECT_EQ(form.sstabMain.tabCaption(0), L"Diagnosedaten") << "while the box is open";
    });
    EXPECT_EQ(form.sstabMain.tabCaption(1), L"Filter");
    EXPECT_EQ(form.mnuFileMenu.caption(), L"&Datei");
    EXPECT_EQ(form.mnuAbout.caption(), L"Info");
    EXPECT_EQ(form.cmdApplyFilter.caption(), L"Filter anwenden");
    EXPECT_EQ(heading(L"Process"), L"Prozess");
    EXPECT_EQ(heading(L"TraceLevel"), L" Ebene ");
    EXPECT_EQ(panel(3), L"  Zeile 1 von 2000  ");
    EXPECT_EQ(macros.cmdCancel.caption(), L"Abbrechen");
    EXPECT_EQ(macros.caption(), L"Makro-Traces zum Filter hinzufügen");
    EXPECT_EQ(macros.treeviewMacroTrace.node(1).tag(), L"Alpha Ebenen: 1");
    EXPECT_TRUE(reports.empty());
}

TEST_F(SwitchTest, TheTipUnderThePointerSpeaksTheNewLanguage) {
    forms::TreeView& tree = macros.treeviewMacroTrace;
    tree.node(0).setExpanded(true);
    const auto tipOfTheTrace = [&] {
        const LRESULT height = ::SendMessageW(tree.hwnd(), TVM_GETITEMHEIGHT, 0, 0);
        ::SendMessageW(tree.hwnd(), WM_MOUSEMOVE, 0, MAKELPARAM(60, height + height / 2));
        return macros.tooltip()->ToolText(tree);
    };
    EXPECT_EQ(tipOfTheTrace(), L"Alpha Levels: 1");
    chooseInAboutBox(kGerman);
    EXPECT_EQ(tipOfTheTrace(), L"Alpha Ebenen: 1");
}

TEST_F(SwitchTest, EveryCaptionOfTheMainWindowHasItsText) {
    const auto expectTexts = [this] {
        const std::vector<std::pair<unsigned, std::wstring>> captions{
            {1046, form.sstabMain.tabCaption(0)},
            {1028, form.sstabMain.tabCaption(1)},
            {1014, form.cmdAddMacroTraceToFilter.caption()},
            {1021, form.cmdClearAllUniqueTraces.caption()},
            {1039, form.cmdSelectAllUniqueTraces.caption()},
            {1017, form.cmdApplyFilter.caption()},
            {1009, form.mnuFileMenu.caption()},
            {1012, form.mnuOpenTraceDatabase.caption()},
            {1025, form.mnuExportData.caption()},
            {1024, form.mnuExit.caption()},
            {1008, form.mnuEdit.caption()},
            {1010, form.mnuFind.caption()},
            {1029, form.mnuFindNext.caption()},
            {1011, form.mnuHelpMenu.caption()},
            {1031, form.mnuHelp.caption()},
            {1013, form.mnuAbout.caption()},
            {1052, heading(L"Date")},
            {1053, heading(L"Process")},
            {1054, heading(L"Source")},
            {1003, heading(L"TraceNumber")},
            {1055, heading(L"Component")},
            {1001, heading(L"TraceLevel")},
            {1056, heading(L"Trace")}};
        for (const auto& [id, caption] : captions) {
            EXPECT_EQ(fromWide(caption), myLoadResString(id)) << id;
        }
    };
    expectTexts();
    chooseInAboutBox(kGerman);
    expectTexts();
    EXPECT_NE(myLoadResString(1009), englishText(1009));
}

TEST_F(SwitchTest, WhatIsTheSameInEveryLanguageStays) {
    const std::wstring node = form.tvUniqueTraces.node(0).text();
    chooseInAboutBox(kGerman);
    EXPECT_EQ(form.caption(), L"Vorelle Diagnostic Viewer");
    EXPECT_EQ(form.findDialog.caption(), L"Find");
    EXPECT_EQ(form.cmdExpandAll.caption(), L"+");
    EXPECT_EQ(form.cmdCollapseAll.caption(), L"-");
    EXPECT_EQ(form.mnuRightClick.caption(), L"RightClick");
    EXPECT_EQ(form.mnuAddEditNote.caption(), L"Add/Edit Note");
    EXPECT_EQ(form.mnuHighlightRow.caption(), L"Highlight Row");
    EXPECT_EQ(form.tvUniqueTraces.node(0).text(), node);
    EXPECT_EQ(fromWide(form.status.lblStatus.text()), englishText(1042))
        << "an operation's own text";
}

TEST_F(SwitchTest, TheStatusWindowsPlaceholderChangesToo) {
    form.status.destroy();
    form.status.load();
    EXPECT_EQ(fromWide(form.status.lblStatus.text()), englishText(1045));
    chooseInAboutBox(kGerman);
    EXPECT_EQ(form.status.lblStatus.text(), L"Hier erscheint der Statustext...");
}

TEST_F(SwitchTest, JapaneseComesWithItsFontAndTheOwnFontsComeBack) {
    std::map<const forms::Control*, forms::Font> designed;
    for (const forms::Form* one : allForms()) {
        for (const forms::Control* control : one->controls()) designed[control] = control->font();
    }
    inAboutBox([&](const frmAbout& box) {
        choose(box, kJapanese);
        std::vector<forms::Form*> open = allForms();
        open.push_back(forms::Form::of(box.hwnd()));
        for (const forms::Form* one : open) {
            EXPECT_EQ(one->font().charset, 128);
            for (const forms::Control* control : one->controls()) {
                EXPECT_EQ(control->font().charset, 128);
                EXPECT_EQ(control->font().name, L"\uFF2D\uFF33 \uFF30\u30B4\u30B7\u30C3\u30AF");
            }
        }
    });
    for (const auto& [control, font] : designed) {
        EXPECT_EQ(control->font().points, font.points);
    }
    EXPECT_EQ(form.tdbgridData.column(L"Trace").font().charset, 128);
    EXPECT_EQ(form.sstabMain.tabCaption(0), L"診断データ");
    chooseInAboutBox(kEnglish);
    for (const auto& [control, font] : designed) EXPECT_EQ(control->font(), font);
    EXPECT_EQ(form.font(), forms::messageFont());
}

/// They have no texts of their own, but may be the user's language.
TEST_F(SwitchTest, TheOtherEastAsianLanguagesHaveTheirFontsToo) {
    for (const auto& [language, charset] : {std::pair{1042, 129}, {1028, 136}, {2052, 134}}) {
        languages.use(static_cast<std::uint16_t>(language));
        const std::wstring name =
            toWide(modLocalize::fontOfLanguage(static_cast<std::uint16_t>(language))->name);
        for (const forms::Form* one : allForms()) {
            for (const forms::Control* control : one->controls()) {
                EXPECT_EQ(control->font().charset, charset);
                EXPECT_EQ(control->font().name, name);
            }
        }
    }
}

TEST_F(SwitchTest, FormsLoadedLaterHaveTheFontAndTheTexts) {
    languages.use(kJapanese);
    frmMacroTraces later{form.tvUniqueTraces};
    later.load();
    frmAbout laterAbout;
    laterAbout.load();
    frmStatus laterStatus;
    laterStatus.load();
    dlgFind laterFind;
    laterFind.load();
    for (forms::Form* one :
         std::initializer_list<forms::Form*>{&later, &laterAbout, &laterStatus, &laterFind}) {
        for (const forms::Control* control : one->controls()) {
            EXPECT_EQ(control->font().charset, 128);
        }
    }
    EXPECT_EQ(later.cmdCancel.caption(), L"キャンセル");
    EXPECT_EQ(laterAbout.lblChangeLanguage.text(), L"言語の変更");
    EXPECT_EQ(laterStatus.lblStatus.text(), L"ここに状態が表示されます...");
}

/// For the thread's own key state, until the end of the block.
class HeldShift {
public:
    HeldShift() {
        ::GetKeyState(VK_SHIFT);  // brings the state up to date; what is set before is lost
        ::GetKeyboardState(before_.data());
        std::array<BYTE, 256> held = before_;
        held[VK_SHIFT] = 0x80;
        ::SetKeyboardState(held.data());
    }
    ~HeldShift() { ::SetKeyboardState(before_.data()); }
    HeldShift(const HeldShift&) = delete;
    HeldShift& operator=(const HeldShift&) = delete;

private:
    std::array<BYTE, 256> before_{};
};

TEST_F(SwitchTest, GroupsStayAndSpeakTheNewLanguage) {
    grid::Grid& grid = form.tdbgridData;
    grid.setGroupColumns({{grid.columnIndex(L"Process")}});
    grid.setGroupUnfolded(1, true);
    const std::int64_t lines = grid.grouping().groupCount();
    ASSERT_TRUE(grid.groupText(0).starts_with(L"Process: "));
    chooseInAboutBox(kGerman);
    EXPECT_EQ(grid.groupColumns().size(), 1u);
    EXPECT_EQ(grid.grouping().groupCount(), lines);
    EXPECT_FALSE(grid.grouping().group(0).unfolded);
    EXPECT_TRUE(grid.grouping().group(1).unfolded);
    EXPECT_TRUE(grid.groupText(0).starts_with(L"Prozess: "));
}

TEST_F(SwitchTest, TicksSortPositionAndSelectionStay) {
    form.tdbgridData.onHeadClick(form.tdbgridData.columnIndex(L"Process"));
    form.tdbgridData.onHeadClick(form.tdbgridData.columnIndex(L"Process"));
    rows().setAbsolutePosition(1500);
    form.tdbgridData.setFirstRow(1490);
    {
        const HeldShift shift;
        ::SendMessageW(form.tdbgridData.hwnd(), WM_KEYDOWN, VK_UP, 0);
    }
    const std::wstring selectedText = form.tdbgridData.selectedText();
    ASSERT_NE(selectedText.find(L"\r\n"), std::wstring::npos) << "whole rows";
    form.sstabMain.setTab(1);
    forms::TreeView& tree = form.tvUniqueTraces;
    form.cmdExpandAll.onClick();
    tree.firstRoot()->setExpanded(false);
    tree.firstRoot()->setChecked(false);
    tree.onNodeCheck(*tree.firstRoot());
    forms::TreeNode& selected = tree.node(tree.nodeCount() - 1);
    selected.ensureVisible();
    tree.setSelected(&selected);
    const LRESULT firstVisible = ::SendMessageW(tree.hwnd(), TVM_GETNEXTITEM, TVGN_FIRSTVISIBLE, 0);
    const std::wstring key = toWide(plainText(modDatabase::uniqueTraces()[0].qrxIndex));
    const std::int64_t firstRow = form.tdbgridData.firstRow();
    const std::wstring shown = form.txtTrace.text();

    for (const std::uint16_t language : {kJapanese, kGerman, kEnglish}) {
        chooseInAboutBox(language);
        EXPECT_EQ(rows().sort(), u"Process DESC");
        EXPECT_EQ(headingStyle(L"Process"), L"Descending");
        EXPECT_EQ(rows().absolutePosition(), 1499);
        EXPECT_EQ(form.tdbgridData.row(), 1498);
        EXPECT_EQ(form.tdbgridData.selectedText(), selectedText);
        EXPECT_EQ(form.tdbgridData.firstRow(), firstRow);
        EXPECT_EQ(form.txtTrace.text(), shown);
        EXPECT_EQ(form.sstabMain.currentTab(), 1);
        EXPECT_FALSE(tree.firstRoot()->checked());
        EXPECT_FALSE(tree.firstRoot()->expanded());
        EXPECT_TRUE(tree.firstRoot()->next()->checked());
        EXPECT_TRUE(tree.firstRoot()->next()->expanded());
        EXPECT_FALSE(modDatabase::uniqueTraces()[0].selected);
        EXPECT_EQ(tree.selected(), &selected);
        EXPECT_EQ(tree.node(L"Item:0").tag(), key);
    }
    EXPECT_EQ(::SendMessageW(tree.hwnd(), TVM_GETNEXTITEM, TVGN_FIRSTVISIBLE, 0), firstVisible);
    EXPECT_TRUE(reports.empty());
}

}  // namespace

// The about box: the program's name, version, maker and language.
//
//   frmAbout about;
//   about.layOutMainWindow = [this] { layOut(); };
//   about.showModal();
//
// A language chosen from its menu takes effect at once in every form that is loaded. The
// user-interface thread.
#pragma once

#include "src/i18n/localized_form.h"
#include "toolkit/forms/buttons.h"
#include "toolkit/forms/label.h"
#include "toolkit/forms/menu.h"
#include "toolkit/forms/picture.h"

#include <cstddef>
#include <deque>
#include <functional>

class frmAbout : public modLocalize::LocalizedForm {
public:
    frmAbout();
    ~frmAbout() override { destroy(); }

    /// The captions in the language in use.
    void frmAbout_Auto_Init();

    /// What the main window does after all forms have their new captions. Set by the main window.
    std::function<void()> layOutMainWindow;

    forms::Picture pictureProgram;
    forms::Label lblProduct{{.accessKeys = false}};
    forms::Label lblVersionCaption{{.accessKeys = false}};
    forms::Label lblVersion{{.accessKeys = false}};
    forms::Label lblCompany{{.accessKeys = false}};
    forms::Label lblCity{{.accessKeys = false}};
    forms::Label lblCountry{{.accessKeys = false}};
    forms::Label lblRights{{.accessKeys = false}};
    forms::Label lblTrademark{{.accessKeys = false}};
    forms::Label lblChangeLanguage{{.link = true}};
    forms::Button cmdOK;

    forms::MenuItem mnuLanguage;  ///< never shown itself
    /// One item an installed language; its tag is the language's identifier in decimal.
    std::deque<forms::MenuItem> mnuLanguageList;

private:
    void build() override;
    void Form_Load() override;
    void Auto_Init() override { frmAbout_Auto_Init(); }

    void listLanguages();
    void addLanguage(const std::u16string& code);
    void checkCurrentLanguage();
    bool noneInstalled() const { return mnuLanguageList.front().tag().empty(); }

    void lblChangeLanguage_Click();
    void mnuLanguageList_Click(std::size_t index);
    void cmdOK_Click();
};

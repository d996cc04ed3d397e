// The small window shown during long operations.
//
//   status.displayStatus(u"Sorting data please wait...", false, this);
//   sort();
//   status.hideStatus();
//
// The user-interface thread.
#pragma once

#include "src/i18n/localized_form.h"
#include "toolkit/forms/buttons.h"
#include "toolkit/forms/label.h"
#include "toolkit/forms/progress_bar.h"

#include <string>

class frmStatus : public modLocalize::LocalizedForm {
public:
    frmStatus();
    ~frmStatus() override { destroy(); }

    /// Shows the window over `owner` with a text, with or without its progress bar, and processes
    /// pending events so that it is painted at once.
    void displayStatus(const std::u16string& text, bool showProgress, const forms::Form* owner);

    /// Changes the text and repaints it at once, without processing events.
    void setStatus(const std::u16string& text);

    /// Hides the window; it stays loaded.
    void hideStatus();

    /// The captions in the language in use. An operation's text is kept.
    void frmStatus_Auto_Init();

    forms::Frame frameStatus;
    forms::Label lblStatus{{.accessKeys = false}};
    forms::ProgressBar pbarStatus;

private:
    void build() override;
    void Form_Load() override;
    void Form_Unload(bool& cancel) override;
    void Auto_Init() override { frmStatus_Auto_Init(); }

    bool inUse_ = false;  ///< an operation has set a text
};

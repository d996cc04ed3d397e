// The find dialog: a text to search for, earlier texts, and a direction.
//
//   dlgFind findDialog;
//   findDialog.setNotice = [this](const std::u16string& text) { ... };
//   findDialog.show();
//
// Loaded when it is first shown and then only hidden, so that history and direction are kept.
// The user-interface thread.
#pragma once

#include "src/search/find_history.h"
#include "toolkit/forms/buttons.h"
#include "toolkit/forms/combo_box.h"
#include "toolkit/forms/form.h"
#include "toolkit/forms/label.h"

#include <functional>
#include <string>

class dlgFind : public forms::Form {
public:
    dlgFind();
    ~dlgFind() override { destroy(); }

    /// Shows the progress of a search in the status bar. Set by the main window.
    std::function<void(const std::u16string& text)> setNotice;

    /// Searches the trace records for the text in the box; Escape cancels. Does nothing for an
    /// empty text. Takes a reference because updating the history may clear the flag that is
    /// passed.
    void myfindText(const bool& findNext);

    forms::Label lblFindWhat;
    forms::ComboBox comboFindWhat;
    forms::Frame frmDirection;
    forms::OptionButton optionDirection[2];  ///< up, down
    forms::Button cmdFindNext;
    forms::Button CancelButton;

private:
    void build() override;
    void Form_Load() override;
    void Form_Unload(bool& cancel) override;

    void comboFindWhat_Change();
    void cmdFindNext_Click();
    void CancelButton_Click();
    void addFindHistory(const std::u16string& text);

    FindHistory history_;
    bool findNext_ = false;  ///< the next search starts after the current record
};

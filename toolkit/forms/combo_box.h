// ComboBox: an edit field with a drop-down list of suggestions.
//
//   forms::ComboBox comboFindWhat;
//   comboFindWhat.addItem(text, 0);
//   comboFindWhat.onChange = [this] { comboFindWhat_Change(); };
//
// Items are counted from 0. The user-interface thread.
#pragma once

#include "toolkit/forms/control.h"

namespace forms {

struct ComboBoxOptions {
    /// Only texts in the list can be chosen.
    bool listOnly = false;
};

class ComboBox : public Control {
public:
    explicit ComboBox(const ComboBoxOptions& options = {}) : options_(options) {}

    /// Without a position the item goes to the end of the list.
    void addItem(const std::wstring& text, int position = -1);
    void removeItem(int index);
    void clear();
    int listCount() const;
    /// Empty for an index outside the list.
    std::wstring list(int index) const;

    /// -1 if the text was not chosen from the list.
    int listIndex() const;
    /// Chooses an item and sets the text to it. Raises no event.
    void setListIndex(int index);
    /// Selects the whole text, so that typing replaces it.
    void selectText();

    /// The user changed the text.
    std::function<void()> onChange;
    // onClick: the user chose an item; the text is already the item's.

protected:
    Kind kind() const override;
    RECT adjustedBounds(const RECT& wanted) const override;
    bool reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) override;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    ComboBoxOptions options_;
};

}  // namespace forms

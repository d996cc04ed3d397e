// The controls that Windows draws as buttons: Button, CheckBox, OptionButton and Frame.
//
//   forms::Button cmdFind;
//   cmdFind.onClick = [this] { cmdFind_Click(); };
//   optionDown.setValue(true);
//
// The user-interface thread.
#pragma once

#include "toolkit/forms/control.h"

namespace forms {

/// A push button. Clicked by the mouse, by Space and Enter, by its access key, or by click().
class Button : public Control {
public:
    void click();

protected:
    Kind kind() const override;
    bool reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) override;
};

class CheckBox : public Control {
public:
    bool value() const;
    /// Raises no event: onClick is for the user's clicks only.
    void setValue(bool value);

protected:
    Kind kind() const override;
    bool reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) override;
};

/// One choice of several: of the option buttons in a container, one has the value true. Buttons
/// that are created consecutively form a group in which the arrow keys move.
class OptionButton : public Control {
public:
    bool value() const;
    /// Choosing this one deselects the others. Raises no event.
    void setValue(bool value);

    bool joinsGroup() const override { return true; }

protected:
    Kind kind() const override;
    bool reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) override;

private:
    void clearOthers();
    void setCheck(bool checked);
};

/// A captioned box around the controls that name it as their container.
class Frame : public Control {
protected:
    Kind kind() const override;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
};

}  // namespace forms

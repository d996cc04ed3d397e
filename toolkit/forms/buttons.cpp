#include "toolkit/forms/buttons.h"

#include <uxtheme.h>

namespace forms {
namespace {

bool isClick(UINT message, WPARAM wParam) {
    return message == WM_COMMAND && HIWORD(wParam) == BN_CLICKED;
}

}  // namespace

Control::Kind Button::kind() const {
    const DWORD look = (flags() & kDefaultButton) ? DWORD{BS_DEFPUSHBUTTON} : DWORD{BS_PUSHBUTTON};
    return {.className = L"BUTTON", .style = look | WS_TABSTOP | BS_NOTIFY};
}

bool Button::reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    if (isClick(message, wParam)) {
        fire(onClick);
        return true;
    }
    return Control::reflected(message, wParam, lParam, result);
}

void Button::click() { send(BM_CLICK); }

Control::Kind CheckBox::kind() const {
    return {.className = L"BUTTON", .style = BS_AUTOCHECKBOX | BS_MULTILINE | WS_TABSTOP};
}

bool CheckBox::value() const { return send(BM_GETCHECK) == BST_CHECKED; }

void CheckBox::setValue(bool value) { send(BM_SETCHECK, value ? BST_CHECKED : BST_UNCHECKED); }

bool CheckBox::reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    if (isClick(message, wParam)) {
        fire(onClick);
        return true;
    }
    return Control::reflected(message, wParam, lParam, result);
}

Control::Kind OptionButton::kind() const {
    return {.className = L"BUTTON", .style = BS_AUTORADIOBUTTON | BS_MULTILINE | WS_TABSTOP};
}

bool OptionButton::value() const { return send(BM_GETCHECK) == BST_CHECKED; }

// The Tab key stops at the chosen button of a group, or at any when none is chosen.
void OptionButton::setCheck(bool checked) {
    send(BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED);
    setTabStop(checked);
}

void OptionButton::setValue(bool value) {
    setCheck(value);
    if (value) clearOthers();
}

void OptionButton::clearOthers() {
    const Window* parent = from(::GetParent(hwnd()));
    for (Control* control : parent ? childControls(*parent) : std::vector<Control*>()) {
        auto* option = dynamic_cast<OptionButton*>(control);
        if (option && option != this && option->container() == container()) option->setCheck(false);
    }
}

bool OptionButton::reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    if (isClick(message, wParam)) {
        if (value()) clearOthers();
        fire(onClick);
        return true;
    }
    return Control::reflected(message, wParam, lParam, result);
}

Control::Kind Frame::kind() const { return {.className = L"BUTTON", .style = BS_GROUPBOX}; }

LRESULT Frame::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_ERASEBKGND) {
        // The group box leaves its inside to a parent that paints through its children; forms do
        // not.
        ::DrawThemeParentBackground(hwnd(), reinterpret_cast<HDC>(wParam), nullptr);
        return 1;
    }
    return Control::handleMessage(message, wParam, lParam);
}

}  // namespace forms

#include "toolkit/forms/label.h"

namespace forms {

Control::Kind Label::kind() const {
    DWORD style = SS_NOTIFY;
    style |= options_.alignment == Alignment::center  ? DWORD{SS_CENTER}
             : options_.alignment == Alignment::right ? DWORD{SS_RIGHT}
                                                      : DWORD{SS_LEFT};
    if (!options_.accessKeys) {
        style |= SS_NOPREFIX;
    }
    return {.className = L"STATIC", .style = style};
}

void Label::setText(const std::wstring& text) {
    if (text != this->text()) {
        Control::setText(text);
    }
}

LRESULT Label::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    const LRESULT result = Control::handleMessage(message, wParam, lParam);
    if (message == WM_LBUTTONUP) {
        fire(onClick);
    }
    return result;
}

}  // namespace forms

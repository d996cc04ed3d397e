#include "toolkit/forms/label.h"

namespace forms {

Control::Kind Label::kind() const {
    DWORD style = SS_NOTIFY;
    style |= options_.alignment == Alignment::center  ? DWORD{SS_CENTER}
             : options_.alignment == Alignment::right ? DWORD{SS_RIGHT}
                                                      : DWORD{SS_LEFT};
    if (!options_.accessKeys) style |= SS_NOPREFIX;
    if (options_.link) style |= WS_TABSTOP;
    return {.className = L"STATIC", .style = style};
}

void Label::created() {
    if (options_.link && !designedFont().underline) {
        Font underlined = designedFont();
        underlined.underline = true;
        setFont(underlined);
    }
}

void Label::setText(const std::wstring& text) {
    if (text != this->text()) Control::setText(text);
}

LRESULT Label::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    const LRESULT result = options_.link ? handleLinkMessage(message, wParam, lParam)
                                         : Control::handleMessage(message, wParam, lParam);
    if (message == WM_LBUTTONUP) fire(onClick);
    return result;
}

// A label of Windows knows neither keys nor the focus.
LRESULT Label::handleLinkMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_SETCURSOR) {
        ::SetCursor(::LoadCursorW(nullptr, IDC_HAND));
        return TRUE;
    }
    if (message == WM_GETDLGCODE) return DLGC_WANTARROWS;
    const LRESULT result = Control::handleMessage(message, wParam, lParam);
    switch (message) {
        case WM_KEYDOWN:
            if (wParam == VK_DOWN) fire(onClick);
            break;
        // The character, not the key: a menu that the procedure opens would take it for a choice.
        case WM_CHAR:
            if (wParam == L' ') fire(onClick);
            break;
        case WM_PAINT:
            paintFocus();
            break;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            refresh();
            break;
        default:
            break;
    }
    return result;
}

void Label::paintFocus() const {
    if (!hasFocus()) return;
    RECT rect{};
    ::GetClientRect(hwnd(), &rect);
    const HDC dc = ::GetDC(hwnd());
    ::DrawFocusRect(dc, &rect);
    ::ReleaseDC(hwnd(), dc);
}

}  // namespace forms

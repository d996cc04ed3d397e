#include "toolkit/forms/combo_box.h"

namespace forms {

Control::Kind ComboBox::kind() const {
    const DWORD type = options_.listOnly ? DWORD{CBS_DROPDOWNLIST} : DWORD{CBS_DROPDOWN};
    return {.className = L"COMBOBOX", .style = type | CBS_AUTOHSCROLL | WS_VSCROLL | WS_TABSTOP};
}

// The height of the line follows from the font. While the window does not stand yet, its height is
// that of the open list.
RECT ComboBox::adjustedBounds(const RECT& wanted) const {
    RECT closed{};
    ::GetWindowRect(hwnd(), &closed);
    RECT result = wanted;
    result.bottom = result.top + (closed.bottom - closed.top);
    return result;
}

void ComboBox::addItem(const std::wstring& text, int position) {
    send(CB_INSERTSTRING, static_cast<WPARAM>(position), reinterpret_cast<LPARAM>(text.c_str()));
}

void ComboBox::removeItem(int index) { send(CB_DELETESTRING, static_cast<WPARAM>(index)); }

void ComboBox::clear() { send(CB_RESETCONTENT); }

int ComboBox::listCount() const { return static_cast<int>(send(CB_GETCOUNT)); }

std::wstring ComboBox::list(int index) const {
    const LRESULT length = send(CB_GETLBTEXTLEN, static_cast<WPARAM>(index));
    if (length == CB_ERR) return {};
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    send(CB_GETLBTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text.data()));
    text.pop_back();
    return text;
}

int ComboBox::listIndex() const { return static_cast<int>(send(CB_GETCURSEL)); }

void ComboBox::setListIndex(int index) { send(CB_SETCURSEL, static_cast<WPARAM>(index)); }

void ComboBox::selectText() { send(CB_SETEDITSEL, 0, MAKELPARAM(0, -1)); }

bool ComboBox::reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    if (message != WM_COMMAND) return Control::reflected(message, wParam, lParam, result);
    switch (HIWORD(wParam)) {
        case CBN_EDITCHANGE:
            fire(onChange);
            return true;
        case CBN_SELCHANGE:
            // The line still has the old text; setting the choice again puts the new one there.
            setListIndex(listIndex());
            fire(onClick);
            return true;
        case CBN_SETFOCUS:
            fire(onGotFocus);
            return true;
        case CBN_KILLFOCUS:
            fire(onLostFocus);
            return true;
        default:
            return false;
    }
}

LRESULT ComboBox::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    // The focus goes straight on to the line inside; the notifications tell of it once.
    if (message == WM_SETFOCUS || message == WM_KILLFOCUS) {
        return defaultProcedure(message, wParam, lParam);
    }
    return Control::handleMessage(message, wParam, lParam);
}

}  // namespace forms

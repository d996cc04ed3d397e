#include "toolkit/forms/text_box.h"

namespace forms {

Control::Kind TextBox::kind() const {
    DWORD style = WS_TABSTOP;
    if (options_.multiLine) style |= ES_MULTILINE | ES_AUTOVSCROLL | ES_WANTRETURN;
    if (!options_.multiLine || options_.horizontalScroll) style |= ES_AUTOHSCROLL;
    if (options_.readOnly) style |= ES_READONLY;
    if (options_.verticalScroll) style |= WS_VSCROLL;
    if (options_.multiLine && options_.horizontalScroll) style |= WS_HSCROLL;
    return {.className = L"EDIT", .style = style, .exStyle = WS_EX_CLIENTEDGE};
}

void TextBox::created() {
    // The default is 30,000 characters for typing and pasting; this is as much as there is.
    send(EM_SETLIMITTEXT, 0);
}

void TextBox::setReadOnly(bool readOnly) {
    options_.readOnly = readOnly;
    send(EM_SETREADONLY, readOnly);
}

TextBox::Selection TextBox::selection() const {
    DWORD start = 0;
    DWORD end = 0;
    send(EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
    return {static_cast<int>(start), static_cast<int>(end - start)};
}

void TextBox::setSelection(Selection selection) {
    send(EM_SETSEL, static_cast<WPARAM>(selection.start), selection.start + selection.length);
    send(EM_SCROLLCARET);
}

std::wstring TextBox::selectedText() const {
    const Selection chosen = selection();
    return text().substr(static_cast<std::size_t>(chosen.start),
                         static_cast<std::size_t>(chosen.length));
}

bool TextBox::reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    if (message == WM_COMMAND && HIWORD(wParam) == EN_CHANGE) {
        fire(onChange);
        return true;
    }
    if (message == WM_CTLCOLORSTATIC && enabled()) {
        // Read-only text is still text, not part of the form's surface.
        const auto dc = reinterpret_cast<HDC>(wParam);
        ::SetTextColor(dc, ::GetSysColor(COLOR_WINDOWTEXT));
        ::SetBkColor(dc, ::GetSysColor(COLOR_WINDOW));
        result = reinterpret_cast<LRESULT>(::GetSysColorBrush(COLOR_WINDOW));
        return true;
    }
    if (message == WM_CTLCOLORSTATIC) return false;
    return Control::reflected(message, wParam, lParam, result);
}

LRESULT TextBox::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    // A box of several lines takes Escape for the wish to close the dialog that it stands in.
    if (message == WM_KEYDOWN && wParam == VK_ESCAPE && options_.multiLine) return 0;
    const LRESULT result = Control::handleMessage(message, wParam, lParam);
    if (message == WM_LBUTTONUP) fire(onClick);
    return result;
}

}  // namespace forms

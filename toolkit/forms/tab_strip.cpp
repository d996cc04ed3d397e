#include "toolkit/forms/tab_strip.h"

#include <commctrl.h>
#include <uxtheme.h>
#include <vsstyle.h>

#include <stdexcept>
#include <utility>

namespace forms {

Control::Kind TabStrip::kind() const {
    return {.className = WC_TABCONTROLW, .style = WS_TABSTOP | TCS_FOCUSONBUTTONDOWN};
}

void TabStrip::created() {
    current_ = 0;
    showTabs();
}

void TabStrip::setTabs(const std::vector<std::wstring>& captions) {
    captions_ = captions;
    current_ = 0;
    if (isCreated()) {
        showTabs();
        applyVisibility();
    }
}

void TabStrip::showTabs() {
    send(TCM_DELETEALLITEMS);
    for (int tab = 0; tab < tabCount(); ++tab) {
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = captions_[index(tab)].data();
        send(TCM_INSERTITEMW, static_cast<WPARAM>(tab), reinterpret_cast<LPARAM>(&item));
    }
    send(TCM_SETCURSEL, static_cast<WPARAM>(current_));
}

void TabStrip::setTabCaption(int tab, const std::wstring& caption) {
    captions_.at(index(tab)) = caption;
    if (isCreated()) {
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = captions_[index(tab)].data();
        send(TCM_SETITEMW, static_cast<WPARAM>(tab), reinterpret_cast<LPARAM>(&item));
        // The control forgets to erase what a shorter caption leaves beside the last tab.
        ::InvalidateRect(hwnd(), nullptr, TRUE);
    }
}

void TabStrip::setTab(int tab) {
    if (tab < 0 || tab >= tabCount()) throw std::out_of_range("no such tab");
    if (isCreated()) send(TCM_SETCURSEL, static_cast<WPARAM>(tab));
    switchTo(tab);
}

void TabStrip::switchTo(int tab) {
    if (tab == current_) return;
    const Control* focused = nullptr;
    for (const Control* control : contained()) {
        if (control->tab() == current_ && control->hasFocus()) focused = control;
    }
    const int previous = std::exchange(current_, tab);
    if (isCreated()) {
        applyVisibility();
        keepFocusSeen(focused);
    }
    if (const auto procedure = onTabClick) procedure(previous);
}

// Windows leaves the focus on a window that gets hidden; the keyboard would be lost.
void TabStrip::keepFocusSeen(const Control* focused) {
    if (!focused) return;
    for (Control* control : contained()) {
        if (control->isShown() && control->enabled() && control->tabStop()) {
            control->setFocus();
            return;
        }
    }
    setFocus();
}

bool TabStrip::formKey(int key, unsigned shift) {
    if (!(shift & kCtrl) || (shift & kAlt) || tabCount() == 0) return false;
    const bool tabKey = key == VK_TAB;
    if (!tabKey && (shift & kShift)) return false;
    const bool back = key == VK_PRIOR || (tabKey && (shift & kShift));
    if (!tabKey && key != VK_PRIOR && key != VK_NEXT) return false;
    setTab((current_ + (back ? tabCount() - 1 : 1)) % tabCount());
    return true;
}

Twips TabStrip::tabHeight() const {
    RECT rect{};
    send(TCM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&rect));
    return toTwips(Pixels(static_cast<int>(rect.bottom)), dpi());
}

bool TabStrip::reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    if (message == WM_NOTIFY && reinterpret_cast<const NMHDR*>(lParam)->code == TCN_SELCHANGE) {
        switchTo(static_cast<int>(send(TCM_GETCURSEL)));
        return true;
    }
    return Control::reflected(message, wParam, lParam, result);
}

// The inside, in the form's coordinates.
RECT TabStrip::page() const {
    RECT rect = pixelBounds();
    send(TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&rect));
    return rect;
}

void TabStrip::paintBackground(HDC dc) {
    const HTHEME theme = ::OpenThemeData(hwnd(), L"TAB");
    if (theme) {
        const RECT rect = page();
        ::DrawThemeBackground(theme, dc, TABP_BODY, 0, &rect, nullptr);
        ::CloseThemeData(theme);
    }
}

}  // namespace forms

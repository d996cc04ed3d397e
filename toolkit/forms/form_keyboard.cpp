// The part of Form that deals with the focus and the keyboard.
#include "toolkit/forms/form.h"

#include <algorithm>

namespace forms {

LRESULT Form::handleFocusMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_ACTIVATE) {
        handleActivate(LOWORD(wParam) != WA_INACTIVE);
    } else if (message == WM_SETFOCUS) {
        restoreFocus();
    } else if (LOWORD(lParam)) {
        // What the dialog procedure asks for when it finds the access key of a label: first the
        // focus to the label, then to the control behind it.
        ::SetFocus(reinterpret_cast<HWND>(wParam));
    } else {
        moveFocus(::GetFocus(), wParam != 0);
    }
    return 0;
}

void Form::handleActivate(bool active) {
    if (!active) {
        const HWND focus = ::GetFocus();
        if (focus && ::IsChild(hwnd(), focus)) lastFocus_ = focus;
        return;
    }
    // A minimised window keeps the focus itself; it passes it on when it is restored.
    if (!::IsIconic(hwnd())) ::SetFocus(hwnd());
    if (ready_) Form_Activate();
}

void Form::restoreFocus() {
    if (lastFocus_ && ::IsChild(hwnd(), lastFocus_) && ::IsWindowVisible(lastFocus_) &&
        ::IsWindowEnabled(lastFocus_)) {
        ::SetFocus(lastFocus_);
    } else {
        moveFocus(nullptr, false);
    }
}

bool Form::translateMessage(MSG& message) {
    if (!::IsWindowEnabled(hwnd())) return false;
    if (const HACCEL accelerators = menu_.accelerators()) {
        if (::TranslateAcceleratorW(hwnd(), accelerators, &message)) return true;
    }
    if (message.message == WM_KEYDOWN && translateKey(message)) return true;
    // Enter and Escape that no button took belong to the control with the focus; the dialog
    // procedure would swallow them.
    if (message.message == WM_KEYDOWN &&
        (message.wParam == VK_RETURN || message.wParam == VK_ESCAPE)) {
        return false;
    }
    return ::IsDialogMessageW(hwnd(), &message) != FALSE;
}

bool Form::translateKey(const MSG& message) {
    const int key = static_cast<int>(message.wParam);
    const unsigned shift = shiftState();
    for (Control* control : controls()) {
        if (control->isShown() && control->formKey(key, shift)) return true;
    }
    const LRESULT wants = ::SendMessageW(message.hwnd, WM_GETDLGCODE, message.wParam,
                                         reinterpret_cast<LPARAM>(&message));
    switch (key) {
        case VK_TAB:
            return !(shift & (kCtrl | kAlt)) && !(wants & DLGC_WANTTAB) &&
                   moveFocus(message.hwnd, (shift & kShift) != 0);
        case VK_RETURN:
            return !(wants & DLGC_WANTALLKEYS) && pressButton(kDefaultButton, message.hwnd);
        case VK_ESCAPE:
            return pressButton(kCancelButton, message.hwnd);
        default:
            return false;
    }
}

// To the next control that takes the focus by the Tab key, behind or before the one that has it.
bool Form::moveFocus(HWND focus, bool backwards) {
    std::vector<Control*> stops = controls();
    std::erase_if(stops, [focus](const Control* c) {
        const bool hasFocus = focus && (c->hwnd() == focus || ::IsChild(c->hwnd(), focus));
        return !hasFocus && !(c->tabStop() && c->enabled() && c->isShown());
    });
    if (stops.empty()) return false;
    if (backwards) std::reverse(stops.begin(), stops.end());
    auto current = std::find_if(stops.begin(), stops.end(), [focus](const Control* c) {
        return focus && (c->hwnd() == focus || ::IsChild(c->hwnd(), focus));
    });
    Control* next = stops.front();
    if (current != stops.end() && ++current != stops.end()) next = *current;
    showFocus();
    next->setFocus();
    // As in every dialog: a text box reached by the keyboard is selected as a whole.
    if (::SendMessageW(next->hwnd(), WM_GETDLGCODE, 0, 0) & DLGC_HASSETSEL) {
        ::SendMessageW(next->hwnd(), EM_SETSEL, 0, -1);
    }
    return true;
}

// Windows hides the focus rectangle until it sees the keyboard used; here it is always seen.
void Form::showFocus() { send(WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS), 0); }

// Enter presses the button that has the focus, else the one marked as default. That one does not
// get the focus, as BM_CLICK would give it: who searches by Enter goes on typing where he was.
bool Form::pressButton(unsigned flag, HWND focus) {
    const HWND combo = ::GetParent(focus);
    if (::SendMessageW(focus, CB_GETDROPPEDSTATE, 0, 0) ||
        (combo != hwnd() && ::SendMessageW(combo, CB_GETDROPPEDSTATE, 0, 0))) {
        return false;
    }
    if (flag == kDefaultButton && (::SendMessageW(focus, WM_GETDLGCODE, 0, 0) &
                                   (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON))) {
        ::SendMessageW(focus, BM_CLICK, 0, 0);
        return true;
    }
    for (const Control* control : controls()) {
        if ((control->flags() & flag) && control->isShown() && control->enabled()) {
            const HWND button = control->hwnd();
            ::SendMessageW(::GetParent(button), WM_COMMAND,
                           MAKEWPARAM(::GetDlgCtrlID(button), BN_CLICKED),
                           reinterpret_cast<LPARAM>(button));
            return true;
        }
    }
    return false;
}

}  // namespace forms

// What keys do in the grid.
#include "toolkit/forms/application.h"
#include "toolkit/grid/clipboard.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/model/navigation.h"
#include "toolkit/grid/model/selected_text.h"

#include <windows.h>

#include <new>
#include <optional>

namespace grid {
namespace {

std::optional<Motion> motionOf(int key, bool ctrl) {
    switch (key) {
        case VK_LEFT:
            return Motion::left;
        case VK_RIGHT:
            return Motion::right;
        case VK_UP:
            return Motion::up;
        case VK_DOWN:
            return Motion::down;
        case VK_PRIOR:
            return Motion::pageUp;
        case VK_NEXT:
            return Motion::pageDown;
        case VK_HOME:
            return ctrl ? Motion::firstRow : Motion::rowStart;
        case VK_END:
            return ctrl ? Motion::lastRow : Motion::rowEnd;
        default:
            return std::nullopt;
    }
}

// The key of the number pad that types a character; 0 if none does.
int padKeyOf(wchar_t character) {
    switch (character) {
        case L'+':
            return VK_ADD;
        case L'-':
            return VK_SUBTRACT;
        case L'*':
            return VK_MULTIPLY;
        case L'/':
            return VK_DIVIDE;
        default:
            return 0;
    }
}

}  // namespace

// Arrows and characters are the grid's; Tab, Enter and Escape stay the form's, but for the Escape
// that ends a drag.
LRESULT Grid::onGetDialogCode(const MSG* message) const {
    const bool escape = message && message->message == WM_KEYDOWN && message->wParam == VK_ESCAPE;
    return DLGC_WANTARROWS | DLGC_WANTCHARS | (escape && drag_.active() ? DLGC_WANTMESSAGE : 0);
}

void Grid::onKeyDown(int key) {
    tip_.hide();
    if (key == VK_ESCAPE) {
        endDrag(false);
        return;
    }
    const unsigned shift = forms::shiftState();
    const bool ctrl = (shift & forms::kCtrl) != 0;
    if (drag_.active() || (shift & forms::kAlt) != 0) return;
    if (ctrl && (key == 'C' || key == VK_INSERT)) {
        copy();
    } else if (ctrl && key == 'A') {
        selectAll();
    } else if (shift != 0 || !onGroupKey(key)) {
        if (const auto motion = motionOf(key, ctrl)) {
            moveCurrent(navigate(geometry_, selection_.current(), *motion),
                        (shift & forms::kShift) != 0 ? Selecting::range : Selecting::one);
            scroll([this](Geometry& geometry) { geometry.scrollColumnIntoView(col()); });
        }
    }
}

// Each keyboard has plus, minus, star and slash on keys of its own, some with Shift. Where the key
// itself was understood already, the character finds nothing left to do.
void Grid::onChar(wchar_t character) {
    const int key = padKeyOf(character);
    if (key != 0 && !drag_.active()) onGroupKey(key);
}

void Grid::copy() {
    const HCURSOR pointer = ::SetCursor(::LoadCursorW(nullptr, IDC_WAIT));
    bool copied = false;
    try {
        forms::SteppedWork work;
        std::wstring text;
        const SelectedText selected(cursor_, groups_, geometry_, selection_,
                                    [this](int group) { return groupText(group); });
        copied = selected.append(text, [&] { return work.goesOn(); }) && isCreated() &&
                 putOnClipboard(hwnd(), text);
    } catch (const std::bad_alloc&) {
        // More rows than there is room for: what is on the clipboard stays, as when Escape ends it.
    }
    ::SetCursor(pointer);
    if (!copied) ::MessageBeep(MB_ICONWARNING);
}

}  // namespace grid

#include "toolkit/grid/cell_tip.h"

#include "toolkit/grid/drawing.h"
#include "toolkit/grid/model/text_units.h"

#include <windows.h>
#include <commctrl.h>

#include <algorithm>

namespace grid {
namespace {

// More would not fit on a screen, and takes the tooltip long to lay out.
constexpr std::size_t kMaxTipLength = 4000;
constexpr int kWidthAt96 = 480;
constexpr int kMarginAt96 = 2;

TOOLINFOW toolOf(HWND owner) {
    TOOLINFOW tool{};
    // The size without lpReserved is the one that every version of the control accepts.
    tool.cbSize = static_cast<UINT>(offsetof(TOOLINFOW, lpReserved));
    tool.uFlags = TTF_TRACK | TTF_ABSOLUTE | TTF_TRANSPARENT;
    tool.hwnd = owner;
    tool.uId = 1;
    return tool;
}

LPARAM asParameter(TOOLINFOW& tool) { return reinterpret_cast<LPARAM>(&tool); }

Rect workArea(const Rect& place) {
    RECT rect = toRect(place);
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    ::GetMonitorInfoW(::MonitorFromRect(&rect, MONITOR_DEFAULTTONEAREST), &monitor);
    return fromRect(monitor.rcWork);
}

}  // namespace

void CellTip::setOn(bool on) {
    on_ = on;
    hide();
}

bool CellTip::rest(Cell cell) {
    if (!on_ || cell == cell_) return false;
    cell_ = cell;
    return true;
}

void CellTip::leave(Cell cell) {
    if (cell != cell_) hide();
}

bool CellTip::make(HWND owner) {
    if (window_ && owner_ == owner) return true;
    destroyWindow();
    window_ = ::CreateWindowExW(WS_EX_TOPMOST | WS_EX_TRANSPARENT, TOOLTIPS_CLASSW, nullptr,
                                WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP, 0, 0, 0, 0, owner, nullptr,
                                ::GetModuleHandleW(nullptr), nullptr);
    owner_ = owner;
    if (!window_) return false;
    TOOLINFOW tool = toolOf(owner);
    wchar_t empty[] = L"";
    tool.lpszText = empty;
    ::SendMessageW(window_, TTM_ADDTOOLW, 0, asParameter(tool));
    return true;
}

void CellTip::show(HWND owner, const Rect& cellOnScreen, const std::wstring& text, bool wrap,
                   HFONT font, forms::Dpi dpi) {
    if (!make(owner)) return;
    text_ = text.substr(0, unitBorder(text, 0, std::min(text.size(), kMaxTipLength)));
    if (text_.size() < text.size()) text_ += L'\x2026';
    Rect work = workArea(cellOnScreen);
    int wanted = std::max(forms::scaled(kWidthAt96, dpi).value, cellOnScreen.width());
    int width = std::min(wanted, work.width() * 3 / 4);
    ::SendMessageW(window_, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    ::SendMessageW(window_, TTM_SETMAXTIPWIDTH, 0, wrap ? width : -1);
    int margin = forms::scaled(kMarginAt96, dpi).value;
    RECT margins{margin, margin, margin, margin};
    ::SendMessageW(window_, TTM_SETMARGIN, 0, reinterpret_cast<LPARAM>(&margins));
    TOOLINFOW tool = toolOf(owner);
    tool.lpszText = text_.data();
    ::SendMessageW(window_, TTM_UPDATETIPTEXTW, 0, asParameter(tool));
    ::SendMessageW(window_, TTM_TRACKPOSITION, 0,
                   MAKELPARAM(cellOnScreen.left, cellOnScreen.bottom));
    ::SendMessageW(window_, TTM_TRACKACTIVATE, TRUE, asParameter(tool));
    keepOnScreen(cellOnScreen);
    shown_ = true;
}

// Only a tooltip on show knows its size.
void CellTip::keepOnScreen(const Rect& cellOnScreen) const {
    RECT window{};
    ::GetWindowRect(window_, &window);
    const Rect tip = fromRect(window);
    const Rect work = workArea(cellOnScreen);
    int x = std::max(std::min(tip.left, work.right - tip.width()), work.left);
    // The system may have pushed the tip up over its cell already.
    const bool fitsBelow = cellOnScreen.bottom + tip.height() <= work.bottom;
    int y = fitsBelow ? tip.top : std::max(cellOnScreen.top - tip.height(), work.top);
    if (x != tip.left || y != tip.top) {
        ::SendMessageW(window_, TTM_TRACKPOSITION, 0, MAKELPARAM(x, y));
    }
}

void CellTip::hide() {
    cell_ = {};
    if (shown_) {
        shown_ = false;
        TOOLINFOW tool = toolOf(owner_);
        ::SendMessageW(window_, TTM_TRACKACTIVATE, FALSE, asParameter(tool));
    }
}

void CellTip::destroy() {
    hide();
    destroyWindow();
}

void CellTip::destroyWindow() {
    shown_ = false;
    if (window_) {
        ::DestroyWindow(window_);
        window_ = nullptr;
    }
}

}  // namespace grid

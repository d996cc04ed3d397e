#include "toolkit/grid/grid.h"

#include "toolkit/grid/messages.h"

#include <windows.h>
#include <windowsx.h>

#include <algorithm>

namespace grid {
namespace {

// The room above and below a row's text, and in a heading, in pixels at 96 dots per inch.
constexpr int kRowPadding = 4;
constexpr int kHeadingPadding = 9;
constexpr int kSelectorWidth = 18;
// The room above and below the chips in the group area, and between them.
constexpr int kGroupAreaGap = 6;
constexpr int kBorderReach = 4;

Point pointOf(LPARAM lParam) { return {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}; }

}  // namespace

Grid::~Grid() {
    // The window's last messages still find all parts of the grid.
    destroy();
}

forms::Control::Kind Grid::kind() const {
    Kind kind;
    kind.className = kWindowClass;
    kind.style = WS_TABSTOP | WS_BORDER | WS_VSCROLL | WS_HSCROLL | WS_CLIPCHILDREN;
    kind.own = true;
    return kind;
}

void Grid::created() {
    theme_.open(hwnd());
    bars_.attach(hwnd());
    repaint_.attach(hwnd());
    updateMeasures();
    bars_.update();
}

// What belongs to the window goes with it; the grid may be created again.
void Grid::onDestroy() {
    events_.close();
    endDrag(true);
    tip_.destroy();
    theme_.close();
    buffer_.release();
    regrouping_.cancel(hwnd());
    bars_.attach(nullptr);
    repaint_.attach(nullptr);
}

void Grid::fontChanged() { updateMeasures(); }

void Grid::dpiChanged() {
    updateMeasures();
    bars_.update();
}

LRESULT Grid::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_PAINT:
            onPaint();
            return 0;
        case WM_PRINTCLIENT: {
            HDC dc = reinterpret_cast<HDC>(wParam);
            paintTo(dc, dc, {0, 0, geometry_.viewWidth(), geometry_.viewHeight()});
            return 0;
        }
        case WM_ERASEBKGND:
            return 1;
        case WM_NCPAINT:
            defaultProcedure(message, wParam, lParam);
            paintFrame();
            return 0;
        case WM_SIZE:
            onSize(LOWORD(lParam), HIWORD(lParam));
            break;
        case WM_VSCROLL:
            onVScroll(LOWORD(wParam));
            return 0;
        case WM_HSCROLL:
            onHScroll(LOWORD(wParam));
            return 0;
        case WM_MOUSEWHEEL:
            if (GET_KEYSTATE_WPARAM(wParam) & MK_SHIFT) {
                onSidewaysWheel(GET_WHEEL_DELTA_WPARAM(wParam));
            } else {
                onWheel(GET_WHEEL_DELTA_WPARAM(wParam));
            }
            return 0;
        case WM_MOUSEHWHEEL:
            // A tilt to the right is positive, a turn towards the user, which moves on, negative.
            onSidewaysWheel(-GET_WHEEL_DELTA_WPARAM(wParam));
            return TRUE;
        case WM_TIMER:
            onTimer(wParam);
            return 0;
        case WM_GETDLGCODE:
            return onGetDialogCode(reinterpret_cast<const MSG*>(lParam));
        case WM_KEYDOWN:
            onKeyDown(static_cast<int>(wParam));
            break;
        case WM_CHAR:
            onChar(static_cast<wchar_t>(wParam));
            break;
        case WM_LBUTTONDOWN:
            onLeftDown(pointOf(lParam));
            break;
        case WM_MOUSEMOVE:
            onMouseMoved(pointOf(lParam));
            break;
        case WM_LBUTTONUP:
            onLeftUp(pointOf(lParam));
            break;
        case WM_LBUTTONDBLCLK:
            onLeftDouble(pointOf(lParam));
            break;
        case WM_CAPTURECHANGED:
            endDrag(true);
            break;
        case WM_MOUSELEAVE:
            onMouseLeave();
            break;
        case WM_MOUSEHOVER:
            onMouseHover(pointOf(lParam));
            break;
        case WM_SETCURSOR:
            if (onSetCursor(LOWORD(lParam))) return TRUE;
            break;
        case WM_CONTEXTMENU:
            // There is no menu here, and none of a parent's either.
            return 0;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            onFocusChanged();
            break;
        case WM_THEMECHANGED:
        case WM_SYSCOLORCHANGE:
        case WM_SETTINGCHANGE:
            onSystemChanged();
            break;
        case WM_DESTROY:
            onDestroy();
            break;
        case GM_GETPAINTEDROWS:
            return static_cast<LRESULT>(paintedRows_);
        default:
            break;
    }
    return Control::handleMessage(message, wParam, lParam);
}

void Grid::onSize(int width, int height) {
    RowIndex oldY = geometry_.scrollY();
    int oldX = geometry_.scrollX();
    geometry_.setView(width, height);
    placeColumns();
    // Windows asks for what a larger window uncovers; a clamped position moves all the rest.
    if (geometry_.scrollY() != oldY || geometry_.scrollX() != oldX) repaint_.all();
    tip_.hide();
    bars_.update();
}

void Grid::updateMeasures() {
    fonts_.clear(dpi());
    tip_.destroy();
    const int line = fonts_.get(font()).lineHeight();
    const auto scaled = [this](int pixels) { return forms::scaled(pixels, dpi()).value; };
    Measures measures;
    measures.headingHeight = line + scaled(kHeadingPadding);
    measures.groupAreaGap = scaled(kGroupAreaGap);
    measures.groupAreaHeight =
        groupByCaption_.empty() ? 0 : measures.headingHeight + 2 * measures.groupAreaGap;
    measures.selectorWidth = recordSelectors_ ? scaled(kSelectorWidth) : 0;
    measures.rowHeight = rowHeight_ ? std::max(forms::toPixels(*rowHeight_, dpi()).value, 1)
                                    : line + scaled(kRowPadding) + Padding::forDpi(dpi()).line;
    measures.borderReach = scaled(kBorderReach);
    geometry_.setMeasures(measures);
    columnsMoved();
    repaint_.all();
}

forms::Twips Grid::rowHeight() const {
    return rowHeight_ ? *rowHeight_
                      : forms::toTwips(forms::Pixels(geometry_.measures().rowHeight), dpi());
}

void Grid::setRowHeight(forms::Twips height) {
    rowHeight_ = height;
    updateMeasures();
}

void Grid::setRecordSelectors(bool show) {
    recordSelectors_ = show;
    updateMeasures();
}

void Grid::setStyle(const std::wstring& name, const Style& style) {
    styles_.set(name, style);
    repaint_.all();
}

void Grid::onFocusChanged() {
    tip_.hide();
    repaint_.row(selection_.current().row);
    events_.focusMoved();
}

// Fonts come from the owner; the theme and the colours are asked for anew.
void Grid::onSystemChanged() {
    theme_.open(hwnd());
    repaint_.all();
}

forms::AccessibleObject* Grid::makeAccessible() { return events_.makeObject(); }

}  // namespace grid

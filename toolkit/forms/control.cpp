#include "toolkit/forms/control.h"

#include "toolkit/forms/accessible_object.h"

#include <uxtheme.h>
#include <windowsx.h>

#include <algorithm>

namespace forms {
namespace {

// Windows keeps the order of making in the control's identifier; the order of the windows
// themselves changes when a container is put behind its controls.
constexpr int kFirstControlId = 100;

int controlId(HWND handle) { return static_cast<int>(::GetWindowLongPtrW(handle, GWLP_ID)); }

int nextControlId(const Window& parent) {
    int highest = kFirstControlId - 1;
    for (HWND child = ::GetWindow(parent.hwnd(), GW_CHILD); child;
         child = ::GetWindow(child, GW_HWNDNEXT)) {
        highest = std::max(highest, controlId(child));
    }
    return highest + 1;
}

bool hasStyle(HWND handle, DWORD style) {
    return (static_cast<DWORD>(::GetWindowLongPtrW(handle, GWL_STYLE)) & style) != 0;
}

}  // namespace

void Control::fire(const std::function<void()>& event) {
    // A copy: the procedure may replace or destroy the event that it runs for.
    if (const auto procedure = event) procedure();
}

unsigned shiftState() {
    return (::GetKeyState(VK_SHIFT) < 0 ? kShift : 0) |
           (::GetKeyState(VK_CONTROL) < 0 ? kCtrl : 0) | (::GetKeyState(VK_MENU) < 0 ? kAlt : 0);
}

std::vector<Control*> childControls(const Window& parent) {
    std::vector<Control*> controls;
    for (HWND child = ::GetWindow(parent.hwnd(), GW_CHILD); child;
         child = ::GetWindow(child, GW_HWNDNEXT)) {
        if (auto* control = dynamic_cast<Control*>(Window::from(child))) {
            controls.push_back(control);
        }
    }
    std::sort(controls.begin(), controls.end(), [](const Control* a, const Control* b) {
        return controlId(a->hwnd()) < controlId(b->hwnd());
    });
    return controls;
}

Control::~Control() {
    // Losing the focus is no event any more: who would hear it may be half destroyed.
    onGotFocus = nullptr;
    onLostFocus = nullptr;
    for (Control* control : contained()) {
        control->container_ = nullptr;
    }
    destroy();
}

// Windows takes a group to last from one control with WS_GROUP to the next. Option buttons of the
// same container are one group, every other control is one by itself.
bool Control::startsGroup(const Window& parent) const {
    if (!joinsGroup()) return true;
    const std::vector<Control*> earlier = childControls(parent);
    return earlier.empty() || !earlier.back()->joinsGroup() ||
           earlier.back()->container_ != container_;
}

void Control::create(Window& parent, const ControlPlace& place, const Font& inherited) {
    name_ = place.name;
    flags_ = place.flags;
    container_ = place.container;
    tab_ = place.tab;
    setInitialBounds({place.left, place.top, place.width, place.height});
    visible_ = (flags_ & kHidden) == 0;

    const Kind kind = this->kind();
    Creation creation;
    creation.className = kind.className;
    creation.classStyle = kind.classStyle;
    creation.text = place.caption;
    creation.style = kind.style | WS_CHILD | WS_CLIPSIBLINGS;
    if (flags_ & kNoTabStop) creation.style &= ~DWORD{WS_TABSTOP};
    if (flags_ & kDisabled) creation.style |= WS_DISABLED;
    if (startsGroup(parent)) creation.style |= WS_GROUP;
    creation.exStyle = kind.exStyle;
    creation.parent = parent.hwnd();
    creation.id = nextControlId(parent);
    kind.own ? createOwn(creation) : createStandard(creation);

    if (container_) container_->placeBehindContained();
    if (!fontSet_) designedFont_ = inherited;
    font_ = inFace(designedFont_, face_);
    setWindowFont();
    applyBounds();
    created();
    applyVisibility();
}

// Among overlapping windows the upper one is painted last and gets the mouse, and a new window
// comes below all others. So the containers of a new control go to the bottom once more, the
// outermost first and each other one right above its own container.
void Control::placeBehindContained() {
    HWND above = HWND_BOTTOM;
    if (container_) {
        container_->placeBehindContained();
        above = ::GetWindow(container_->hwnd(), GW_HWNDPREV);
    }
    if (above != hwnd()) {
        ::SetWindowPos(hwnd(), above, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    }
}

std::vector<Control*> Control::contained() const {
    std::vector<Control*> controls;
    if (isCreated()) {
        if (const Window* parent = from(::GetParent(hwnd()))) controls = childControls(*parent);
    }
    std::erase_if(controls, [this](const Control* c) { return c->container_ != this; });
    return controls;
}

Dpi Control::dpi() const {
    const Window* parent = isCreated() ? from(::GetParent(hwnd())) : nullptr;
    return parent ? parent->dpi() : Window::dpi();
}

POINT Control::origin() const {
    if (!container_ || !container_->isCreated()) return {0, 0};
    const RECT rect = container_->pixelBounds();
    return {rect.left, rect.top};
}

void Control::applyBounds() {
    PlacedWindow::applyBounds();
    for (Control* control : contained()) {
        control->applyBounds();
    }
}

std::wstring Control::text() const { return isCreated() ? windowText(hwnd()) : std::wstring(); }

void Control::setText(const std::wstring& text) {
    send(WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

bool Control::isShown() const {
    return visible_ && (!container_ || (container_->showsTab(tab_) && container_->isShown()));
}

bool Control::showsTab(int) const { return true; }

void Control::paintBackground(HDC) {}

bool Control::formKey(int, unsigned) { return false; }

bool Control::reflected(UINT message, WPARAM wParam, LPARAM, LRESULT& result) {
    if (message != WM_CTLCOLORSTATIC && message != WM_CTLCOLORBTN) return false;
    const auto dc = reinterpret_cast<HDC>(wParam);
    ::DrawThemeParentBackground(hwnd(), dc, nullptr);
    ::SetBkMode(dc, TRANSPARENT);
    ::SetTextColor(dc, ::GetSysColor(COLOR_BTNTEXT));
    result = reinterpret_cast<LRESULT>(::GetStockObject(NULL_BRUSH));
    return true;
}

void Control::setVisible(bool visible) {
    visible_ = visible;
    if (isCreated()) applyVisibility();
}

void Control::applyVisibility() {
    const bool shown = isShown();
    if (hasStyle(hwnd(), WS_VISIBLE) != shown) ::ShowWindow(hwnd(), shown ? SW_SHOWNA : SW_HIDE);
    for (Control* control : contained()) {
        control->applyVisibility();
    }
}

bool Control::enabled() const { return ::IsWindowEnabled(hwnd()) != FALSE; }

void Control::setEnabled(bool enabled) { ::EnableWindow(hwnd(), enabled); }

bool Control::tabStop() const { return hasStyle(hwnd(), WS_TABSTOP); }

void Control::setTabStop(bool stop) {
    const LONG_PTR style = ::GetWindowLongPtrW(hwnd(), GWL_STYLE);
    const LONG_PTR bit = WS_TABSTOP;
    ::SetWindowLongPtrW(hwnd(), GWL_STYLE, stop ? style | bit : style & ~bit);
}

void Control::setFont(const Font& font) {
    designedFont_ = font;
    fontSet_ = true;
    useFont();
}

void Control::setFace(const std::optional<FontFace>& face) {
    face_ = face;
    if (font_ != inFace(designedFont_, face_)) useFont();
}

void Control::useFont() {
    font_ = inFace(designedFont_, face_);
    if (isCreated()) setWindowFont();
}

void Control::setWindowFont() {
    // The old handle must outlive the message that makes the window let go of it.
    GdiFont next(font_, dpi());
    send(WM_SETFONT, reinterpret_cast<WPARAM>(next.handle()), TRUE);
    gdiFont_ = std::move(next);
    fontChanged();
}

void Control::applyDpi() {
    setWindowFont();
    applyBounds();
    dpiChanged();
}

void Control::setFocus() { ::SetFocus(hwnd()); }

bool Control::hasFocus() const {
    const HWND focus = ::GetFocus();
    return isCreated() && focus && (focus == hwnd() || ::IsChild(hwnd(), focus));
}

void Control::refresh() {
    ::RedrawWindow(hwnd(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
}

namespace {

MouseButton buttonOf(UINT message, WPARAM wParam) {
    switch (message) {
        case WM_LBUTTONDOWN:
        case WM_LBUTTONUP:
            return MouseButton::left;
        case WM_RBUTTONDOWN:
        case WM_RBUTTONUP:
            return MouseButton::right;
        case WM_MBUTTONDOWN:
        case WM_MBUTTONUP:
            return MouseButton::middle;
        default:
            return (wParam & MK_LBUTTON)   ? MouseButton::left
                   : (wParam & MK_RBUTTON) ? MouseButton::right
                                           : MouseButton::none;
    }
}

}  // namespace

void Control::fireMouse(const std::function<void(const MouseEvent&)>& event, UINT message,
                        WPARAM wParam, LPARAM lParam) const {
    if (const auto procedure = event) {
        procedure({buttonOf(message, wParam), shiftState(),
                   toTwips(Pixels(GET_X_LPARAM(lParam)), dpi()),
                   toTwips(Pixels(GET_Y_LPARAM(lParam)), dpi())});
    }
}

AccessibleObject* Control::makeAccessible() {
    return accessibleName_.empty() ? nullptr : makeNamedAccessible(hwnd(), accessibleName_);
}

LRESULT Control::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_SETFOCUS:
            fire(onGotFocus);
            break;
        case WM_KILLFOCUS:
            fire(onLostFocus);
            break;
        case WM_KEYDOWN:
            if (const auto procedure = onKeyDown) procedure(static_cast<int>(wParam), shiftState());
            break;
        case WM_LBUTTONDOWN:
        case WM_RBUTTONDOWN:
        case WM_MBUTTONDOWN:
            fireMouse(onMouseDown, message, wParam, lParam);
            break;
        case WM_LBUTTONUP:
        case WM_RBUTTONUP:
        case WM_MBUTTONUP:
            fireMouse(onMouseUp, message, wParam, lParam);
            break;
        case WM_MOUSEMOVE:
            fireMouse(onMouseMove, message, wParam, lParam);
            break;
        case WM_LBUTTONDBLCLK:
            fire(onDoubleClick);
            break;
        case WM_GETOBJECT:
            if (const LRESULT answer =
                    answerObject(wParam, lParam, [this] { return makeAccessible(); })) {
                return answer;
            }
            break;
        default:
            break;
    }
    return Window::handleMessage(message, wParam, lParam);
}

}  // namespace forms

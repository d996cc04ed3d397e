#include "toolkit/forms/form.h"

#include "toolkit/forms/application.h"

#include <algorithm>
#include <utility>

namespace forms {
namespace {

std::vector<Form*>& formList() {
    static std::vector<Form*> forms;
    return forms;
}

DWORD styleOf(BorderStyle border) {
    switch (border) {
        case BorderStyle::fixedDialog:
            return WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | WS_CLIPCHILDREN;
        case BorderStyle::fixedWindow:
            return WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX | WS_CLIPCHILDREN;
        default:
            return WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN;
    }
}

DWORD exStyleOf(BorderStyle border) {
    const DWORD dialog = border == BorderStyle::fixedDialog ? DWORD{WS_EX_DLGMODALFRAME} : 0;
    return dialog | WS_EX_CONTROLPARENT;
}

LPCWSTR cursorOf(MousePointer pointer) {
    switch (pointer) {
        case MousePointer::cross:
            return IDC_CROSS;
        case MousePointer::iBeam:
            return IDC_IBEAM;
        case MousePointer::sizeWestEast:
            return IDC_SIZEWE;
        case MousePointer::hourglass:
            return IDC_WAIT;
        case MousePointer::noDrop:
            return IDC_NO;
        case MousePointer::arrowHourglass:
            return IDC_APPSTARTING;
        default:
            return IDC_ARROW;
    }
}

LONG widthOf(const RECT& rect) { return rect.right - rect.left; }

LONG heightOf(const RECT& rect) { return rect.bottom - rect.top; }

}  // namespace

const std::vector<Form*>& loadedForms() { return formList(); }

Form::Form(const FormOptions& options)
    : options_(options),
      dpi_(Dpi(::GetDpiForSystem())),
      designedFont_(messageFont()),
      font_(designedFont_) {}

Form::~Form() { destroy(); }

Form* Form::of(HWND handle) {
    return handle ? dynamic_cast<Form*>(Window::from(::GetAncestor(handle, GA_ROOT))) : nullptr;
}

void Form::load() {
    if (isLoaded()) return;
    createFormWindow();
    formList().push_back(this);
    build();
    if (!menu_.empty()) menu_.attach(hwnd());
    setClientSize(options_.clientWidth, options_.clientHeight);
    Form_Load();
    ready_ = true;
}

void Form::createFormWindow() {
    Creation creation;
    creation.className = options_.className;
    creation.text = options_.caption;
    creation.style = styleOf(options_.border);
    creation.exStyle = exStyleOf(options_.border);
    creation.bounds = {0, 0, 100, 100};
    createOwn(creation);
    dpi_ = Window::dpi();
    if (options_.icon) setIcon(options_.icon);
    if (options_.takesFiles) ::DragAcceptFiles(hwnd(), TRUE);
}

bool Form::unload() {
    if (!isLoaded()) return true;
    bool cancel = false;
    Form_Unload(cancel);
    if (!cancel) {
        // Before the window goes: it is then that Windows looks for the next one to activate.
        endModal();
        destroy();
    }
    return !cancel;
}

void Form::show(const Form* owner) {
    load();
    setOwner(owner);
    if (!visible()) {
        // Laid out first: nobody is to see the controls where they were designed.
        Form_Resize();
        ::ShowWindow(hwnd(), SW_SHOW);
    }
    ::SetForegroundWindow(hwnd());
}

void Form::showInactive(const Form& owner) {
    load();
    setOwner(&owner);
    if (!visible()) {
        Form_Resize();
        ::SetWindowPos(hwnd(), HWND_TOP, 0, 0, 0, 0,
                       SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_SHOWWINDOW);
    }
}

void Form::setOwner(const Form* owner) {
    ::SetWindowLongPtrW(hwnd(), GWLP_HWNDPARENT,
                        reinterpret_cast<LONG_PTR>(owner ? owner->hwnd() : nullptr));
}

void Form::hide() {
    if (isLoaded()) {
        // The owner must be able to take the focus at the moment when this window gives it up.
        endModal();
        ::ShowWindow(hwnd(), SW_HIDE);
    }
}

void Form::showModal(const Form* owner) {
    load();
    if (!owner) owner = Form::of(::GetActiveWindow());
    modal_ = true;
    for (const Form* form : formList()) {
        if (form != this && ::IsWindowEnabled(form->hwnd())) {
            ::EnableWindow(form->hwnd(), FALSE);
            disabled_.push_back(form->hwnd());
        }
    }
    center(owner);
    show(owner == this ? nullptr : owner);
    runModalLoop();
}

void Form::runModalLoop() {
    wakePosted();
    MSG message{};
    while (modal_) {
        const BOOL fetched = ::GetMessageW(&message, nullptr, 0, 0);
        if (fetched <= 0) {
            endModal();
            ::PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        dispatchMessage(message);
    }
}

void Form::endModal() {
    if (!std::exchange(modal_, false)) return;
    for (const HWND form : std::exchange(disabled_, {})) {
        ::EnableWindow(form, TRUE);
    }
    // Wakes the loop when it was another thread's sent message that brought us here.
    ::PostThreadMessageW(::GetCurrentThreadId(), WM_NULL, 0, 0);
}

bool Form::visible() const { return isLoaded() && ::IsWindowVisible(hwnd()); }

std::wstring Form::caption() const { return isLoaded() ? windowText(hwnd()) : std::wstring(); }

void Form::setCaption(const std::wstring& caption) { ::SetWindowTextW(hwnd(), caption.c_str()); }

void Form::setIcon(int resource) {
    const HINSTANCE program = ::GetModuleHandleW(nullptr);
    const auto load = [&](int metric) {
        const int size = ::GetSystemMetricsForDpi(metric, dpi_.value);
        return reinterpret_cast<LPARAM>(
            ::LoadImageW(program, MAKEINTRESOURCEW(resource), IMAGE_ICON, size, size, LR_SHARED));
    };
    send(WM_SETICON, ICON_BIG, load(SM_CXICON));
    send(WM_SETICON, ICON_SMALL, load(SM_CXSMICON));
}

WindowState Form::windowState() const {
    if (::IsIconic(hwnd())) return WindowState::minimized;
    return ::IsZoomed(hwnd()) ? WindowState::maximized : WindowState::normal;
}

void Form::setWindowState(WindowState state) {
    const int command = state == WindowState::minimized   ? SW_MINIMIZE
                        : state == WindowState::maximized ? SW_MAXIMIZE
                                                          : SW_RESTORE;
    ::ShowWindow(hwnd(), command);
}

void Form::setMousePointer(MousePointer pointer) {
    mousePointer_ = pointer;
    // The pointer changes at once, not with the next move of the mouse.
    POINT at{};
    ::GetCursorPos(&at);
    const HWND under = ::WindowFromPoint(at);
    if (isLoaded() && under && ::GetAncestor(under, GA_ROOT) == hwnd()) {
        ::SendMessageW(under, WM_SETCURSOR, reinterpret_cast<WPARAM>(under),
                       MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
    }
}

// The files may be dropped on a window that waits for another one, which cannot take them then.
void Form::handleDrop(HDROP drop) {
    std::vector<std::wstring> paths(::DragQueryFileW(drop, 0xFFFFFFFF, nullptr, 0));
    for (UINT i = 0; i < paths.size(); ++i) {
        std::wstring& path = paths[i];
        path.resize(::DragQueryFileW(drop, i, nullptr, 0) + std::size_t{1});
        path.resize(::DragQueryFileW(drop, i, path.data(), static_cast<UINT>(path.size())));
    }
    ::DragFinish(drop);
    if (!paths.empty() && ::IsWindowEnabled(hwnd())) Form_DropFiles(paths);
}

bool Form::handleSetCursor(LPARAM lParam) const {
    if (LOWORD(lParam) != HTCLIENT || mousePointer_ == MousePointer::standard) return false;
    ::SetCursor(::LoadCursorW(nullptr, cursorOf(mousePointer_)));
    return true;
}

void Form::setFont(const Font& font) {
    const Font previous = std::exchange(designedFont_, font);
    font_ = inFace(font, face_);
    for (Control* control : controls()) {
        if (control->designedFont() == previous) control->setFont(font);
    }
}

void Form::setFace(const std::optional<FontFace>& face) {
    face_ = face;
    font_ = inFace(designedFont_, face);
    for (Control* control : controls()) {
        control->setFace(face);
    }
}

Twips Form::textHeight(const std::wstring&) const {
    return toTwips(GdiFont(font_, dpi_).lineHeight(), dpi_);
}

Twips Form::textWidth(const std::wstring& text) const {
    return toTwips(GdiFont(font_, dpi_).textWidth(text), dpi_);
}

std::vector<Control*> Form::controls() const {
    return isLoaded() ? childControls(*this) : std::vector<Control*>();
}

Control* Form::control(const std::wstring& name) const {
    for (Control* candidate : controls()) {
        if (candidate->name() == name) return candidate;
    }
    return nullptr;
}

void Form::createControls(const std::vector<ControlSpec>& specs) {
    for (const ControlSpec& spec : specs) {
        spec.control.setFace(face_);
        spec.control.create(*this, spec.place, designedFont_);
    }
}

void Form::refresh() {
    ::RedrawWindow(hwnd(), nullptr, nullptr,
                   RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
}

LRESULT Form::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CLOSE:
        case WM_DESTROY:
        case WM_SIZE:
        case WM_DPICHANGED:
            return handleFrameMessage(message, wParam, lParam);
        case WM_ACTIVATE:
        case WM_SETFOCUS:
        case WM_NEXTDLGCTL:
            return handleFocusMessage(message, wParam, lParam);
        case WM_ERASEBKGND:
        case WM_PRINTCLIENT:
            paintBackground(reinterpret_cast<HDC>(wParam));
            return 1;
        case WM_SETCURSOR:
            if (handleSetCursor(lParam)) return TRUE;
            break;
        case WM_CONTEXTMENU:
            if (handleContextMenu(wParam, lParam)) return 0;
            break;
        case WM_DROPFILES:
            handleDrop(reinterpret_cast<HDROP>(wParam));
            return 0;
        case WM_COMMAND:
            if (lParam == 0 && menu_.command(LOWORD(wParam))) return 0;
            break;
        case WM_SETTINGCHANGE:
        case WM_THEMECHANGED:
        case WM_SYSCOLORCHANGE:
            passToControls(message, wParam, lParam);
            break;
        default:
            break;
    }
    return Window::handleMessage(message, wParam, lParam);
}

LRESULT Form::handleFrameMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CLOSE:
            unload();
            return 0;
        case WM_SIZE:
            handleSize(wParam);
            return 0;
        case WM_DPICHANGED:
            handleDpiChanged(Dpi(LOWORD(wParam)), *reinterpret_cast<const RECT*>(lParam));
            return 0;
        default:
            handleDestroy();
            return 0;
    }
}

void Form::handleDestroy() {
    endModal();
    // Windows would destroy the menu with the window.
    menu_.detach();
    lastFocus_ = nullptr;
    ready_ = false;
    std::erase(formList(), this);
}

void Form::passToControls(UINT message, WPARAM wParam, LPARAM lParam) {
    for (const Control* control : controls()) {
        ::SendMessageW(control->hwnd(), message, wParam, lParam);
    }
    refresh();
}

bool Form::handleContextMenu(WPARAM wParam, LPARAM lParam) {
    POINT at{static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))};
    if (at.x == -1 && at.y == -1) {
        // From the keyboard: at the control that has the focus.
        RECT rect{};
        ::GetWindowRect(reinterpret_cast<HWND>(wParam), &rect);
        at = {rect.left, rect.top};
    }
    RECT client{};
    ::GetClientRect(hwnd(), &client);
    ::MapWindowPoints(hwnd(), nullptr, reinterpret_cast<POINT*>(&client), 2);
    if (!::PtInRect(&client, at)) {
        return false;  // The caption's own menu.
    }
    Form_ContextMenu(at);
    return true;
}

void Form::handleSize(WPARAM kind) {
    if (kind != SIZE_MINIMIZED) {
        for (Control* control : controls()) {
            control->parentResized();
        }
    }
    if (ready_) Form_Resize();
}

void Form::handleDpiChanged(Dpi dpi, const RECT& suggested) {
    dpi_ = dpi;
    if (options_.icon) setIcon(options_.icon);
    // First the controls, then the frame: Form_Resize, which the frame brings, finds them in their
    // new size.
    for (Control* control : controls()) {
        control->applyDpi();
    }
    ::SetWindowPos(hwnd(), nullptr, suggested.left, suggested.top, widthOf(suggested),
                   heightOf(suggested), SWP_NOZORDER | SWP_NOACTIVATE);
    ::RedrawWindow(hwnd(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void Form::paintBackground(HDC dc) {
    RECT rect{};
    ::GetClipBox(dc, &rect);
    ::FillRect(dc, &rect, ::GetSysColorBrush(COLOR_BTNFACE));
    for (Control* control : controls()) {
        if (control->isShown()) control->paintBackground(dc);
    }
}

}  // namespace forms

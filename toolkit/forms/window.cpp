#include "toolkit/forms/window.h"

#include <system_error>
#include <unordered_map>
#include <utility>

namespace forms {
namespace {

// Every window of ours. A table of our own is faster by far than a property of the window or the
// common controls' subclassing, which both cost some 0.1 ms a message on some systems: ten thousand
// nodes of a tree are added by as many messages. Never freed, since windows may be among the last
// things that a program destroys.
std::unordered_map<HWND, Window*>& windowTable() {
    static auto* table = new std::unordered_map<HWND, Window*>;
    return *table;
}

UnexpectedErrorHandler& currentErrorHandler() {
    static UnexpectedErrorHandler handler;
    return handler;
}

void writeToDebugger(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const std::exception& e) {
        ::OutputDebugStringA("Unexpected error: ");
        ::OutputDebugStringA(e.what());
        ::OutputDebugStringA("\n");
    } catch (...) {
        ::OutputDebugStringA("Unexpected error of unknown type\n");
    }
}

// The control that a notification came from, or null when the message is no notification.
HWND senderOf(UINT message, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND:
        case WM_HSCROLL:
        case WM_VSCROLL:
        case WM_CTLCOLORBTN:
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORLISTBOX:
        case WM_CTLCOLORSTATIC:
            return reinterpret_cast<HWND>(lParam);
        case WM_NOTIFY:
            return reinterpret_cast<const NMHDR*>(lParam)->hwndFrom;
        case WM_DRAWITEM: {
            const auto* item = reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
            return item->CtlType == ODT_MENU ? nullptr : item->hwndItem;
        }
        default:
            return nullptr;
    }
}

}  // namespace

UnexpectedErrorHandler setUnexpectedErrorHandler(UnexpectedErrorHandler handler) {
    return std::exchange(currentErrorHandler(), std::move(handler));
}

void reportUnexpectedError(const std::exception_ptr& error) noexcept {
    try {
        // A copy, since the handler may set another one.
        const UnexpectedErrorHandler handler = currentErrorHandler();
        if (handler) {
            handler(error);
        } else {
            writeToDebugger(error);
        }
    } catch (...) {
        ::OutputDebugStringA("The handler of unexpected errors failed itself\n");
    }
}

void throwLastError(const char* call) {
    throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), call);
}

std::wstring windowText(HWND handle) {
    const auto length = static_cast<std::size_t>(::SendMessageW(handle, WM_GETTEXTLENGTH, 0, 0));
    std::wstring text(length + 1, L'\0');
    const LRESULT copied = ::SendMessageW(handle, WM_GETTEXT, static_cast<WPARAM>(text.size()),
                                          reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(copied));
    return text;
}

Window::~Window() { destroy(); }

Window* Window::from(HWND handle) {
    const auto found = windowTable().find(handle);
    return found == windowTable().end() ? nullptr : found->second;
}

void Window::destroy() {
    if (hwnd_) ::DestroyWindow(hwnd_);
}

Dpi Window::dpi() const { return Dpi(hwnd_ ? ::GetDpiForWindow(hwnd_) : ::GetDpiForSystem()); }

void Window::registerClass(const Creation& creation) {
    WNDCLASSEXW definition{};
    definition.cbSize = sizeof definition;
    definition.hInstance = ::GetModuleHandleW(nullptr);
    if (::GetClassInfoExW(definition.hInstance, creation.className, &definition)) return;
    definition.style = creation.classStyle;
    definition.lpfnWndProc = &Window::procedure;
    definition.hIcon = creation.icon;
    definition.hIconSm = creation.smallIcon;
    definition.hCursor = ::LoadCursorW(nullptr, IDC_ARROW);
    definition.lpszClassName = creation.className;
    if (!::RegisterClassExW(&definition)) throwLastError("RegisterClassExW");
}

namespace {

HWND makeWindow(const wchar_t* className, const wchar_t* text, DWORD style, DWORD exStyle,
                const RECT& bounds, HWND parent, int id, void* owner) {
    // For a top-level window the same argument is a menu, which forms set later.
    const HMENU idOrMenu =
        (style & WS_CHILD) ? reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)) : nullptr;
    return ::CreateWindowExW(exStyle, className, text, style, bounds.left, bounds.top,
                             bounds.right - bounds.left, bounds.bottom - bounds.top, parent,
                             idOrMenu, ::GetModuleHandleW(nullptr), owner);
}

}  // namespace

void Window::createOwn(const Creation& creation) {
    registerClass(creation);
    controlProcedure_ = nullptr;
    if (!makeWindow(creation.className, creation.text, creation.style, creation.exStyle,
                    creation.bounds, creation.parent, creation.id, this)) {
        throwLastError("CreateWindowExW");
    }
}

void Window::createStandard(const Creation& creation) {
    const HWND handle =
        makeWindow(creation.className, creation.text, creation.style, creation.exStyle,
                   creation.bounds, creation.parent, creation.id, nullptr);
    if (!handle) throwLastError("CreateWindowExW");
    attach(handle);
    controlProcedure_ = reinterpret_cast<WNDPROC>(
        ::SetWindowLongPtrW(handle, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Window::procedure)));
}

void Window::attach(HWND handle) {
    hwnd_ = handle;
    windowTable()[handle] = this;
}

void Window::detach() {
    windowTable().erase(hwnd_);
    hwnd_ = nullptr;
}

LRESULT CALLBACK Window::procedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        const auto* creation = reinterpret_cast<const CREATESTRUCTW*>(lParam);
        static_cast<Window*>(creation->lpCreateParams)->attach(handle);
    }
    Window* window = from(handle);
    return window ? window->dispatch(message, wParam, lParam)
                  : ::DefWindowProcW(handle, message, wParam, lParam);
}

LRESULT Window::dispatch(UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    const HWND handle = hwnd_;
    LRESULT result = 0;
    try {
        result = handleMessage(message, wParam, lParam);
    } catch (...) {
        // A region left invalid would bring the same failing WM_PAINT again and again.
        if (message == WM_PAINT) ::ValidateRect(handle, nullptr);
        unexpectedError(std::current_exception());
    }
    // Until WM_NCDESTROY the object lives; after any other message it may be gone.
    if (message == WM_NCDESTROY) detach();
    return result;
}

LRESULT Window::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT result = 0;
    if (reflect(message, wParam, lParam, result)) return result;
    return defaultProcedure(message, wParam, lParam);
}

bool Window::reflect(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    Window* sender = from(senderOf(message, lParam));
    return sender && sender != this && sender->reflected(message, wParam, lParam, result);
}

bool Window::reflected(UINT, WPARAM, LPARAM, LRESULT&) { return false; }

LRESULT Window::defaultProcedure(UINT message, WPARAM wParam, LPARAM lParam) {
    return controlProcedure_ ? ::CallWindowProcW(controlProcedure_, hwnd_, message, wParam, lParam)
                             : ::DefWindowProcW(hwnd_, message, wParam, lParam);
}

void Window::unexpectedError(const std::exception_ptr& error) noexcept {
    reportUnexpectedError(error);
}

LRESULT Window::send(UINT message, WPARAM wParam, LPARAM lParam) const {
    return ::SendMessageW(hwnd_, message, wParam, lParam);
}

}  // namespace forms

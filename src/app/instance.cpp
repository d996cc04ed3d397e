#include "src/app/instance.h"

#include "src/i18n/mod_localize.h"

#include <string>

namespace {

constexpr const wchar_t* kLockName = L"Local\\VorelleDiagnosticViewer.Instance";
constexpr const wchar_t* kWindowClass = L"VorelleDiagnosticViewer.Instance";
constexpr const wchar_t* kUnwantedTitle = L"unwanted instance";

HWND createInstanceWindow() {
    const HINSTANCE program = ::GetModuleHandleW(nullptr);
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = ::DefWindowProcW;
    windowClass.hInstance = program;
    windowClass.lpszClassName = kWindowClass;
    ::RegisterClassW(&windowClass);
    return ::CreateWindowExW(WS_EX_TOOLWINDOW, kWindowClass, modLocalize::kProductTitle, WS_POPUP,
                             0, 0, 0, 0, nullptr, nullptr, program, nullptr);
}

bool hasClass(HWND window, const wchar_t* name) {
    wchar_t found[64] = L"";
    ::GetClassNameW(window, found, static_cast<int>(std::size(found)));
    return std::wstring{found} == name;
}

DWORD processOf(HWND window) {
    DWORD process = 0;
    ::GetWindowThreadProcessId(window, &process);
    return process;
}

/// From one window on, up or down the order of windows on the screen.
HWND nextOf(HWND from, UINT direction, const wchar_t* windowClass) {
    const DWORD process = processOf(from);
    HWND window = ::GetWindow(from, direction);
    while (window != nullptr && !(processOf(window) == process && hasClass(window, windowClass))) {
        window = ::GetWindow(window, direction);
    }
    return window;
}

bool showsAnything(HWND window) {
    return ::IsWindowVisible(window) || ::IsWindowVisible(::GetLastActivePopup(window));
}

/// A window that is hidden belongs to a viewer that is still loading, or is just ending.
bool endsSoon(HWND window) {
    constexpr DWORD kPatience = 1000;
    const HANDLE process = ::OpenProcess(SYNCHRONIZE, FALSE, processOf(window));
    if (process == nullptr) return !::IsWindow(window);
    const bool ended = ::WaitForSingleObject(process, kPatience) == WAIT_OBJECT_0;
    ::CloseHandle(process);
    return ended;
}

/// A program that hangs must not take this one with it, so nothing here waits for an answer.
void raise(HWND window) {
    const HWND front = ::GetLastActivePopup(window);
    if (::IsIconic(window)) ::ShowWindowAsync(window, SW_RESTORE);
    ::SetForegroundWindow(front != nullptr ? front : window);
}

}  // namespace

// The window comes before the lock: who finds the lock taken finds the window too.
Instance::Instance() : window_{createInstanceWindow()} {
    lock_ = ::CreateMutexW(nullptr, FALSE, kLockName);
    const DWORD code = ::GetLastError();
    // A lock of the same user with more rights cannot be opened.
    isSecond_ = code == ERROR_ALREADY_EXISTS || (lock_ == nullptr && code == ERROR_ACCESS_DENIED);
}

Instance::~Instance() {
    if (lock_ != nullptr) ::CloseHandle(lock_);
    if (window_ != nullptr) ::DestroyWindow(window_);
}

bool Instance::raiseFirst(const wchar_t* mainWindowClass) {
    ::SetWindowTextW(window_, kUnwantedTitle);
    const HWND first = ::FindWindowW(kWindowClass, modLocalize::kProductTitle);
    if (first == nullptr) return false;
    HWND window = nextOf(first, GW_HWNDPREV, mainWindowClass);
    if (window == nullptr) window = nextOf(first, GW_HWNDNEXT, mainWindowClass);
    if (window == nullptr) return true;
    if (!showsAnything(window) && endsSoon(window)) {
        ::SetWindowTextW(window_, modLocalize::kProductTitle);  // this one is the first now
        return false;
    }
    raise(window);
    return true;
}

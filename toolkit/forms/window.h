// Window: the owner of one window handle.
//
// A class derived from Window receives the messages of its window in the virtual member
// handleMessage. The window is either of a window class of ours (createOwn) or a subclassed
// standard control (createStandard).
//
//   class Ruler : public forms::Window {
//       LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
//   };
//
// The notifications that a control sends its parent (WM_COMMAND, WM_NOTIFY, colours, scroll bars)
// are reflected to the control itself, to its member reflected.
//
// No exception leaves a window procedure: Windows would drop it or end the program. It is caught
// there and passed to unexpectedError, which calls the program's handler.
//
// One thread: the one that created the window.
#pragma once

#include "toolkit/forms/units.h"

#include <windows.h>

#include <exception>
#include <functional>
#include <string>

namespace forms {

/// Called for every exception that leaves a message handler, an event procedure or a posted
/// function. The handler must not throw.
using UnexpectedErrorHandler = std::function<void(std::exception_ptr)>;

/// Returns the previous handler. Without one the error is written to the debugger's output.
UnexpectedErrorHandler setUnexpectedErrorHandler(UnexpectedErrorHandler handler);
void reportUnexpectedError(const std::exception_ptr& error) noexcept;

/// Throws std::system_error with the code of GetLastError. `call` names what failed.
[[noreturn]] void throwLastError(const char* call);

class Window {
public:
    /// Destroys the window. A derived class that handles the last messages calls destroy in its own
    /// destructor.
    virtual ~Window();

    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    /// The Window that owns the handle, or null for a foreign window.
    static Window* from(HWND handle);

    HWND hwnd() const { return hwnd_; }
    bool isCreated() const { return hwnd_ != nullptr; }
    void destroy();

    /// The dots per inch that the window is laid out for.
    virtual Dpi dpi() const;

protected:
    /// How a window of our own class, or a standard control, is created. Bounds are pixels in the
    /// parent (or on the screen).
    struct Creation {
        const wchar_t* className = L"";
        const wchar_t* text = L"";
        DWORD style = 0;
        DWORD exStyle = 0;
        RECT bounds{0, 0, 0, 0};
        HWND parent = nullptr;
        int id = 0;
        /// The rest is for our own classes and takes effect when the class is first used.
        UINT classStyle = CS_DBLCLKS;
        HICON icon = nullptr;
        HICON smallIcon = nullptr;
    };

    Window() = default;

    /// Both throw std::system_error if Windows fails. Our own classes have no background brush: the
    /// window paints everything itself.
    void createOwn(const Creation& creation);
    void createStandard(const Creation& creation);

    /// Every message of the window. A derived class passes what it does not handle to its base
    /// class; this one reflects notifications to the controls and passes the rest to
    /// defaultProcedure.
    virtual LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam);

    /// What Windows or the standard control itself does with the message. Only inside
    /// handleMessage.
    LRESULT defaultProcedure(UINT message, WPARAM wParam, LPARAM lParam);

    /// A message that this control's window sent to its parent. True when handled; the parent then
    /// answers with `result`.
    virtual bool reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);

    /// An exception that left handleMessage.
    virtual void unexpectedError(const std::exception_ptr& error) noexcept;

    /// Sends a message to the window itself; a shorthand for wrappers of controls.
    LRESULT send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;

private:
    static LRESULT CALLBACK procedure(HWND, UINT, WPARAM, LPARAM);
    static void registerClass(const Creation& creation);

    void attach(HWND handle);
    void detach();
    LRESULT dispatch(UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    bool reflect(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);

    HWND hwnd_ = nullptr;
    // The original procedure of a subclassed standard control.
    WNDPROC controlProcedure_ = nullptr;
};

/// The text of a window of any program part, whatever its length.
std::wstring windowText(HWND handle);

}  // namespace forms

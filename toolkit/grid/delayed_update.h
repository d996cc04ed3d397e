// DelayedUpdate: work that a window does a little later, once for all requests until then.
//
//   DelayedUpdate bars{kBarTimer, 50};
//   bars.request(hwnd());
//   if (message == WM_TIMER && wParam == kBarTimer) bars.cancel(hwnd());
//
// The user-interface thread.
#pragma once

#include <windows.h>

namespace grid {

class DelayedUpdate {
public:
    /// `timer` is the number of a timer that the window uses for nothing else.
    DelayedUpdate(UINT_PTR timer, UINT milliseconds) : timer_(timer), milliseconds_(milliseconds) {}

    /// WM_TIMER comes once the time has passed, and again until cancel. Further requests do not put
    /// it off. Without a window nothing is done.
    void request(HWND window);
    void cancel(HWND window);
    bool due() const { return due_; }

private:
    UINT_PTR timer_;
    UINT milliseconds_;
    bool due_ = false;
};

}  // namespace grid

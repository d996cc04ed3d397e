#include "toolkit/grid/delayed_update.h"

namespace grid {

void DelayedUpdate::request(HWND window) {
    if (window && !due_) {
        due_ = true;
        ::SetTimer(window, timer_, milliseconds_, nullptr);
    }
}

void DelayedUpdate::cancel(HWND window) {
    if (window && due_) ::KillTimer(window, timer_);
    due_ = false;
}

}  // namespace grid

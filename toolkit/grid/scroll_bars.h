// ScrollBars: the scroll bars of a grid's window.
//
//   ScrollBars bars(geometry);
//   bars.attach(hwnd());
//   bars.update();
//   if (auto y = bars.verticalTarget(LOWORD(wParam))) geometry.scrollToY(*y);
//
// The bars show what the geometry says and never change it. The user-interface thread.
#pragma once

#include "toolkit/grid/delayed_update.h"
#include "toolkit/grid/model/geometry.h"
#include "toolkit/grid/timers.h"

#include <windows.h>

#include <optional>

namespace grid {

class ScrollBars {
public:
    explicit ScrollBars(const Geometry& geometry) : geometry_(geometry) {}

    /// Null when the window goes; until then, and before the first call, nothing is done.
    void attach(HWND window);

    void update();
    /// Updates after a short delay: while rows keep arriving the bars follow a few times a second.
    /// They wait until the user lets go of the thumb, which would otherwise jump away under the
    /// mouse.
    void updateSoon();
    /// For WM_TIMER with kBarTimer. Returns whether the bars were updated.
    bool onTimer();

    /// The position that a code of WM_VSCROLL or WM_HSCROLL leads to, if it leads anywhere. `line`
    /// is what an arrow scrolls by, in pixels.
    std::optional<RowIndex> verticalTarget(int code);
    std::optional<int> horizontalTarget(int code, int line) const;

private:
    void setVertical() const;
    void setHorizontal() const;
    void set(int bar, int maximum, int page, int position) const;
    int trackPosition(int bar) const;

    const Geometry& geometry_;
    HWND window_ = nullptr;
    DelayedUpdate soon_{kBarTimer, 50};
    bool updating_ = false;
    bool thumbHeld_ = false;
};

}  // namespace grid

// GridWindow: a shown window with a grid in it, driven by the messages that a user causes.
//
//   GridWindow window(1'000'000);
//   window.key(VK_NEXT);
//   EXPECT_EQ(window.grid.row(), ...);
//
// The thread of the test.
#pragma once

#include "tests/toolkit/grid/snapshot.h"
#include "tests/toolkit/grid/trace_source.h"
#include "toolkit/forms/window.h"
#include "toolkit/grid/grid.h"

#include <windows.h>

#include <functional>

namespace grid {

// A top-level window whose dots per inch the test decides.
class HostWindow : public forms::Window {
public:
    explicit HostWindow(forms::Dpi dpi);
    forms::Dpi dpi() const override { return dpi_; }
    void setDpi(forms::Dpi dpi) { dpi_ = dpi; }

private:
    forms::Dpi dpi_;
};

class GridWindow {
public:
    // The grid is 800 by 500 pixels, has the focus, is set up as for trace lines and has painted.
    explicit GridWindow(std::int64_t rows, forms::Dpi dpi = forms::Dpi(96));
    ~GridWindow();

    using Seen = std::function<void(const MSG&)>;

    // Handles what is in the message queue, paints included, and shows each message to `seen`.
    static void pump(const Seen& seen = {});
    // Pumps until the condition holds; false after a minute.
    static bool waitFor(const std::function<bool()>& condition, const Seen& seen = {});
    // Pumps until the grid's timer has run out that often.
    bool waitForTimer(UINT_PTR timer, int times);

    void key(int virtualKey);
    // Client coordinates, pixels.
    void press(Point point);
    void move(Point point, bool held = false);
    void release(Point point);
    void click(Point point);
    void doubleClick(Point point);
    void hover(Point point);
    void wheel(int delta, int keys = 0);
    void scrollBar(int bar, int code);
    // Drags the thumb to a position of the bar's range.
    void trackThumb(int bar, int position);
    SCROLLINFO bar(int bar) const;

    Point middleOf(Cell cell) const;
    Point middleOfHeading(int column) const;
    Point borderOf(int column) const;

    // How many cells are painted while the action and what follows from it run.
    std::int64_t cellsPaintedBy(const std::function<void()>& action);

    // What is on the screen is what painting everything anew gives.
    bool looksAsPaintedAnew();

    HostWindow host;
    TraceSource source;
    Grid grid;

private:
    void setUpColumns();
    LRESULT send(UINT message, WPARAM wParam, LPARAM lParam) const;
};

}  // namespace grid

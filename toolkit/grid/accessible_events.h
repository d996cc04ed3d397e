// AccessibleEvents: what a grid tells screen readers by itself.
//
//   AccessibleEvents events(dataGrid);
//   LRESULT answer = forms::answerObject(wParam, lParam, [&] { return events.makeObject(); });
//   events.focusMoved();
//
// A grid that no screen reader has asked for its object pays nothing. The user-interface thread.
#pragma once

#include "toolkit/forms/accessible_object.h"
#include "toolkit/grid/grid_accessible.h"

#include <memory>

namespace grid {

class AccessibleEvents {
public:
    explicit AccessibleEvents(Grid& grid) : grid_(grid) {}

    /// The object for the whole grid, with one reference for the caller.
    forms::AccessibleObject* makeObject();
    /// The window goes; the objects that were given out say so from then on.
    void close();

    void focusMoved() const;
    void groupFolded(int group) const;
    void rowsChanged() const;

private:
    void tell(DWORD event, LONG child) const;

    Grid& grid_;
    std::shared_ptr<GridLink> link_;
};

}  // namespace grid

#include "toolkit/grid/accessible_events.h"

#include "toolkit/grid/grid.h"

namespace grid {

forms::AccessibleObject* AccessibleEvents::makeObject() {
    if (!link_) link_ = std::make_shared<GridLink>(GridLink{&grid_});
    return new GridAccessible(link_, {});
}

void AccessibleEvents::close() {
    if (link_) link_->grid = nullptr;
    link_.reset();
}

void AccessibleEvents::tell(DWORD event, LONG child) const {
    ::NotifyWinEvent(event, grid_.hwnd(), OBJID_CLIENT, child);
}

void AccessibleEvents::focusMoved() const {
    if (!link_ || !grid_.hasFocus()) return;
    const LONG child = GridAccessible::childOf(grid_, grid_.selection().current());
    tell(EVENT_OBJECT_FOCUS, child);
    tell(EVENT_OBJECT_SELECTION, child);
}

void AccessibleEvents::groupFolded(int group) const {
    if (!link_) return;
    const RowIndex view = grid_.grouping().viewOfGroup(group);
    const LONG child = GridAccessible::childOf(grid_, {view, kNoColumn});
    if (child != CHILDID_SELF) tell(EVENT_OBJECT_STATECHANGE, child);
}

void AccessibleEvents::rowsChanged() const {
    if (link_) tell(EVENT_OBJECT_REORDER, CHILDID_SELF);
}

}  // namespace grid

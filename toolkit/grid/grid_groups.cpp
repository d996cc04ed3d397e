// Rows in groups: made, folded and unfolded.
#include "toolkit/grid/cell_measures.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/model/trimmed.h"

#include <algorithm>
#include <utility>

namespace grid {
namespace {

// From so many rows on the user may notice the time that grouping takes: for a million some tens of
// milliseconds.
constexpr RowIndex kNoticeableRows = 100'000;

// Shows the hourglass to the end of the block.
class WaitPointer {
public:
    explicit WaitPointer(bool show)
        : before_(show ? ::SetCursor(::LoadCursorW(nullptr, IDC_WAIT)) : nullptr) {}
    ~WaitPointer() {
        if (before_) ::SetCursor(before_);
    }
    WaitPointer(const WaitPointer&) = delete;
    WaitPointer& operator=(const WaitPointer&) = delete;

private:
    HCURSOR before_;
};

}  // namespace

void Grid::setGroupByCaption(const std::wstring& caption) {
    groupByCaption_ = caption;
    updateMeasures();
}

void Grid::setGroupColumns(std::vector<GroupColumn> columns) {
    for (const GroupColumn& group : columns) {
        column(group.column);
    }
    groups_.setColumns(std::move(columns));
    columnsMoved();
    regroup();
    const Cell current = selection_.current();
    if (current.column != kNoColumn && !geometry_.columns().visible(current.column)) {
        setCol(std::max(geometry_.columns().firstVisible(), 0));
    }
}

// The chips follow their captions, whose language may change.
void Grid::placeGroupChips() {
    const Scene now = scene();
    std::vector<int> widths;
    for (const GroupColumn& group : groupColumns()) {
        widths.push_back(chipWidth(now, column(group.column)));
    }
    geometry_.setGroupChips(std::move(widths));
    repaint_.part(geometry_.groupArea().strip());
}

// Groups all rows there are by now. A source that cannot say how leaves them ungrouped.
void Grid::regroup() {
    regrouping_.cancel(hwnd());
    try {
        groupRows();
    } catch (...) {
        groups_.clear();
        columnsMoved();
        takeView();
        throw;
    }
    takeView();
}

void Grid::groupRows() {
    if (groupColumns().empty()) {
        groups_.clear();
        return;
    }
    const WaitPointer wait(approxCount() >= kNoticeableRows);
    groups_.group(*dataSource());
}

// The rows stand elsewhere in the view, the current one too.
void Grid::takeView() {
    viewRowsChanged();
    const RowIndex now = cursor_.look(rowsKnown());
    selection_.moveTo({grouping().viewOf(now), selection_.current().column});
    scrollCurrentIntoView();
}

// Rows stand elsewhere in the view, or there are more or fewer of them.
void Grid::viewRowsChanged() {
    tip_.hide();
    geometry_.setRowCount(groups_.active() ? grouping().viewCount() : approxCount());
    repaint_.rowsFrom(geometry_.firstRow());
    bars_.update();
    events_.rowsChanged();
}

void Grid::setGroupUnfolded(int group, bool unfolded) {
    if (grouping().group(group).unfolded == unfolded) return;
    const int focused = focusedGroup();
    groups_.setUnfolded(group, unfolded, *dataSource());
    focusNear(focused, row());
    viewRowsChanged();
    events_.groupFolded(group);
}

void Grid::setAllGroupsUnfolded(bool unfolded) {
    if (!groups_.active()) return;
    const int focused = focusedGroup();
    groups_.setAllUnfolded(unfolded);
    viewRowsChanged();
    focusNear(focused, cursor_.look(rowsKnown()));
    scrollCurrentIntoView();
}

// The focus stays with its group, or goes to the one that swallowed it; without a group it is the
// row's.
void Grid::focusNear(int group, RowIndex row) {
    const RowIndex view = group == kNoGroup ? grouping().viewOf(row) : groups_.viewNear(group);
    selection_.moveTo({view, selection_.current().column});
}

std::wstring Grid::groupText(int group) const {
    const auto level = static_cast<std::size_t>(grouping().group(group).level);
    const Column& by = *columns_[static_cast<std::size_t>(groupColumns()[level].column)];
    return groups_.text(group, trimmed(by.caption()), *dataSource());
}

// The group whose row has the focus.
int Grid::focusedGroup() const { return groups_.groupAt(selection_.current().row); }

// The keys of trees. On a row of the source they mean the group around it, where the row itself
// has no use for them.
bool Grid::onGroupKey(int key) {
    if (!groups_.active()) return false;
    const int focused = focusedGroup();
    const int around = focused != kNoGroup ? focused : grouping().groupOf(row());
    switch (key) {
        case VK_MULTIPLY:
            setAllGroupsUnfolded(true);
            return true;
        case VK_DIVIDE:
            setAllGroupsUnfolded(false);
            return true;
        case VK_ADD:
        case VK_OEM_PLUS:
        case VK_SUBTRACT:
        case VK_OEM_MINUS:
            if (around != kNoGroup) {
                setGroupUnfolded(around, key == VK_ADD || key == VK_OEM_PLUS);
                scrollCurrentIntoView();
            }
            return true;
        case VK_SPACE:
            if (focused != kNoGroup) setGroupUnfolded(focused, !grouping().group(focused).unfolded);
            return focused != kNoGroup;
        case VK_RIGHT:
        case VK_LEFT:
            if (focused != kNoGroup) foldOrStep(focused, key == VK_RIGHT);
            return focused != kNoGroup;
        default:
            return false;
    }
}

// Folds or unfolds the group that has the focus; where that is done already, goes on to the first
// row within it or back to the group around it.
void Grid::foldOrStep(int group, bool unfold) {
    if (grouping().group(group).unfolded != unfold) {
        setGroupUnfolded(group, unfold);
        return;
    }
    const RowIndex here = selection_.current().row;
    const int parent = grouping().group(group).parent;
    const RowIndex back = parent == kNoGroup ? here : grouping().viewOfGroup(parent);
    moveCurrent({unfold ? here + 1 : back, col()});
}

// Whether the row is a group's. Its glyph folds at a click, the whole row at a double click.
bool Grid::onGroupClick(RowIndex view, Point point, bool doubleClick) {
    const int group = groups_.groupAt(view);
    if (group == kNoGroup) return false;
    const Grouping::Group clicked = grouping().group(group);
    const bool onGlyph =
        Painter::groupGlyph(geometry_, Padding::forDpi(dpi()), view, clicked.level).contains(point);
    moveCurrent({view, col()},
                (forms::shiftState() & forms::kShift) != 0 ? Selecting::range : Selecting::one);
    if (onGlyph != doubleClick) setGroupUnfolded(group, !clicked.unfolded);
    return true;
}

}  // namespace grid

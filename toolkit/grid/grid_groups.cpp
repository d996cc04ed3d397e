// Rows in groups: made, folded and unfolded.
#include "toolkit/grid/drawing.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/model/trimmed.h"
#include "toolkit/grid/timers.h"

#include <algorithm>
#include <utility>

namespace grid {
namespace {

// How long rows that keep arriving wait for being grouped. Grouping a million takes some tens of
// milliseconds.
constexpr UINT kRegroupMilliseconds = 500;

// From so many rows on the user may notice the time that grouping takes.
constexpr RowIndex kNoticeableRows = 100'000;

}  // namespace

void Grid::setGroupByCaption(const std::wstring& caption) {
    groupByCaption_ = caption;
    updateMeasures();
}

void Grid::setGroupColumns(std::vector<GroupColumn> columns) {
    for (const GroupColumn& group : columns) {
        column(group.column);
    }
    const auto [oldEnd, newEnd] =
        std::mismatch(groupColumns_.begin(), groupColumns_.end(), columns.begin(), columns.end(),
                      [](const auto& a, const auto& b) { return a.column == b.column; });
    const auto kept = static_cast<std::size_t>(newEnd - columns.begin());
    std::erase_if(toggledGroups_, [&](const auto& path) { return path.size() > kept; });
    unfoldedAtFirst_ = unfoldedAtFirst_ && kept > 0;
    groupColumns_ = std::move(columns);
    columnsMoved();
    regroup();
    Cell current = selection_.current();
    if (current.column != kNoColumn && !geometry_.columns().visible(current.column)) {
        setCol(std::max(geometry_.columns().firstVisible(), 0));
    }
}

int Grid::groupLevelOf(int column) const {
    auto found = std::find_if(groupColumns_.begin(), groupColumns_.end(),
                              [&](const GroupColumn& group) { return group.column == column; });
    return found == groupColumns_.end() ? kNoLevel
                                        : static_cast<int>(found - groupColumns_.begin());
}

void Grid::reverseGroup(int level) {
    std::vector<GroupColumn> columns = groupColumns_;
    bool& descending = columns[static_cast<std::size_t>(level)].descending;
    descending = !descending;
    setGroupColumns(std::move(columns));
}

// The chips follow their captions, whose language may change.
void Grid::placeGroupChips() {
    const Padding padding = Padding::forDpi(dpi());
    const int picture = padding.side + 2 * padding.picture - 1;
    std::vector<int> widths;
    for (const GroupColumn& group : groupColumns_) {
        const Column& of = column(group.column);
        const Style& style = styles_.style(of.headingStyle());
        const int own = style.picture == HeadingPicture::none ? picture : 0;
        widths.push_back(headingWidth(of) + own + 2 * padding.side + padding.line);
    }
    geometry_.setGroupChips(std::move(widths));
    invalidate(geometry_.groupArea().strip());
}

// Groups all rows there are by now. A source that cannot say how leaves them ungrouped.
void Grid::regroup() {
    if (regroupDue_) {
        regroupDue_ = false;
        ::KillTimer(hwnd(), kRegroupTimer);
    }
    try {
        grouping_ = madeGrouping();
        restoreFolding();
    } catch (...) {
        grouping_ = {};
        groupColumns_.clear();
        columnsMoved();
        takeView();
        throw;
    }
    takeView();
}

Grouping Grid::madeGrouping() const {
    if (groupColumns_.empty()) return {};
    const RowIndex count = approxCount();
    const HCURSOR pointer =
        count >= kNoticeableRows ? ::SetCursor(::LoadCursorW(nullptr, IDC_WAIT)) : nullptr;
    std::vector<Grouping::Level> levels;
    for (const GroupColumn& group : groupColumns_) {
        levels.push_back({source_->valueRanks(group.column), group.descending});
        levels.back().ranks.resize(static_cast<std::size_t>(count));
    }
    Grouping made(count, levels);
    if (pointer) ::SetCursor(pointer);
    return made;
}

// The rows stand elsewhere in the view, the current one too.
void Grid::takeView() {
    viewRowsChanged();
    selection_.moveTo({grouping_.viewOf(currentOfSource()), selection_.current().column});
    scroll([&](Geometry& geometry) { geometry.scrollRowIntoView(selection_.current().row); });
}

// While rows keep arriving they are grouped a few times a second at most.
void Grid::regroupSoon() {
    if (isCreated() && !regroupDue_) {
        regroupDue_ = true;
        ::SetTimer(hwnd(), kRegroupTimer, kRegroupMilliseconds, nullptr);
    }
}

// Rows stand elsewhere in the view, or there are more or fewer of them.
void Grid::viewRowsChanged() {
    hideTip();
    geometry_.setRowCount(grouping_.active() ? grouping_.viewCount() : approxCount());
    invalidateRowsFrom(geometry_.firstRow());
    updateScrollBars();
    reportRows();
}

// Groups made anew know their former selves by the values on their paths.
void Grid::restoreFolding() {
    if (unfoldedAtFirst_) grouping_.setAllUnfolded(true);
    if (toggledGroups_.empty()) return;
    std::vector<int> toggled;
    for (int group = 0; group < grouping_.groupCount(); ++group) {
        if (toggledGroups_.count(groupPath(group)) != 0) toggled.push_back(group);
    }
    grouping_.setUnfolded(toggled, !unfoldedAtFirst_);
}

std::vector<std::wstring> Grid::groupPath(int group) const {
    std::vector<std::wstring> path(static_cast<std::size_t>(grouping_.group(group).level) + 1);
    const RowIndex row = grouping_.firstRowOf(group);
    for (std::size_t level = 0; level < path.size(); ++level) {
        source_->cellText(row, groupColumns_[level].column, path[level]);
    }
    return path;
}

void Grid::markUnfolded(int group, bool unfolded) {
    if (unfolded == unfoldedAtFirst_) {
        toggledGroups_.erase(groupPath(group));
    } else {
        toggledGroups_.insert(groupPath(group));
    }
}

void Grid::setGroupUnfolded(int group, bool unfolded) {
    if (grouping_.group(group).unfolded == unfolded) return;
    const int focused = focusedGroup();
    markUnfolded(group, unfolded);
    grouping_.setUnfolded({group}, unfolded);
    // The focus stays with its group, or goes to the one that swallowed it.
    RowIndex view = focused == kNoGroup ? kNoRow : grouping_.viewOfGroup(focused);
    if (view == kNoRow) {
        view = focused == kNoGroup ? grouping_.viewOf(sourceRow_) : grouping_.viewOfGroup(group);
    }
    selection_.moveTo({view, selection_.current().column});
    viewRowsChanged();
    reportGroup(group);
}

void Grid::setAllGroupsUnfolded(bool unfolded) {
    if (!grouping_.active()) return;
    const int focused = focusedGroup();
    unfoldedAtFirst_ = unfolded;
    toggledGroups_.clear();
    grouping_.setAllUnfolded(unfolded);
    viewRowsChanged();
    // The focus stays with its group, or goes to the one that swallowed it.
    RowIndex view = kNoRow;
    for (int group = focused; group != kNoGroup && view == kNoRow;
         group = grouping_.group(group).parent) {
        view = grouping_.viewOfGroup(group);
    }
    if (focused == kNoGroup) view = grouping_.viewOf(currentOfSource());
    selection_.moveTo({view, selection_.current().column});
    scroll([&](Geometry& geometry) { geometry.scrollRowIntoView(view); });
}

// A row that the owner goes to is to be seen.
void Grid::reveal(RowIndex row) {
    bool folded = false;
    for (int group = grouping_.groupOf(row); group != kNoGroup;
         group = grouping_.group(group).parent) {
        if (!grouping_.group(group).unfolded) {
            markUnfolded(group, true);
            folded = true;
        }
    }
    if (folded) {
        grouping_.reveal(row);
        viewRowsChanged();
    }
}

std::wstring Grid::groupText(int group) const {
    const auto level = static_cast<std::size_t>(grouping_.group(group).level);
    const GroupColumn& by = groupColumns_[level];
    std::wstring value;
    source_->cellText(grouping_.firstRowOf(group), by.column, value);
    const Column& column = *columns_[static_cast<std::size_t>(by.column)];
    return trimmed(column.caption()) + L": " + value + L"  (" +
           std::to_wstring(grouping_.group(group).rowCount) + L")";
}

// The group whose row has the focus.
int Grid::focusedGroup() const {
    const RowIndex view = selection_.current().row;
    if (!grouping_.active() || view < 0 || view >= grouping_.viewCount()) return kNoGroup;
    return grouping_.at(view).group;
}

// The keys of trees. On a row of the source they mean the group around it, where the row itself
// has no use for them.
bool Grid::onGroupKey(int key) {
    if (!grouping_.active()) return false;
    const int focused = focusedGroup();
    const int around = focused != kNoGroup ? focused : grouping_.groupOf(sourceRow_);
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
                scroll([&](Geometry& geometry) {
                    geometry.scrollRowIntoView(selection_.current().row);
                });
            }
            return true;
        case VK_SPACE:
            if (focused != kNoGroup) setGroupUnfolded(focused, !grouping_.group(focused).unfolded);
            return focused != kNoGroup;
        case VK_RIGHT:
        case VK_LEFT: {
            if (focused == kNoGroup) return false;
            const bool unfold = key == VK_RIGHT;
            if (grouping_.group(focused).unfolded != unfold) {
                setGroupUnfolded(focused, unfold);
            } else {
                const int parent = grouping_.group(focused).parent;
                const RowIndex next = unfold               ? selection_.current().row + 1
                                      : parent != kNoGroup ? grouping_.viewOfGroup(parent)
                                                           : selection_.current().row;
                moveCurrent({next, col()});
            }
            return true;
        }
        default:
            return false;
    }
}

// Whether the row is a group's. Its glyph folds at a click, the whole row at a double click.
bool Grid::onGroupClick(RowIndex view, Point point, bool doubleClick) {
    const int group = grouping_.active() ? grouping_.at(view).group : kNoGroup;
    if (group == kNoGroup) return false;
    const Grouping::Group& clicked = grouping_.group(group);
    const bool onGlyph =
        Painter::groupGlyph(geometry_, Padding::forDpi(dpi()), view, clicked.level).contains(point);
    moveCurrent({view, col()},
                (forms::shiftState() & forms::kShift) != 0 ? Selecting::range : Selecting::one);
    if (onGlyph != doubleClick) setGroupUnfolded(group, !clicked.unfolded);
    return true;
}

}  // namespace grid

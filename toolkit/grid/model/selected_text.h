// SelectedText: the selected rows of a grid as text, for the clipboard.
//
//   SelectedText copy(cursor, groups, geometry, selection, [&](int group) { return groupText(group); });
//   bool whole = copy.append(text, [] { return true; });
//
// Tabs stand between the columns on view, CR LF at the end of each row. A field with a tab, a line
// break or a quote stands in quotes, doubled within, as spreadsheets read it. Where no whole row is
// selected the text is that of the current cell, as it is.
//
// One thread.
#pragma once

#include "toolkit/grid/model/geometry.h"
#include "toolkit/grid/model/group_view.h"
#include "toolkit/grid/model/selection.h"
#include "toolkit/grid/model/source_cursor.h"

#include <functional>
#include <string>

namespace grid {

class SelectedText {
public:
    /// All of it is asked anew for every row: it may change between two rows.
    SelectedText(const SourceCursor& cursor, const GroupView& groups, const Geometry& geometry,
                 const Selection& selection, std::function<std::wstring(int group)> groupText);

    /// Asks `goesOn` after every row, and returns false when that broke it off.
    bool append(std::wstring& text, const std::function<bool()>& goesOn) const;

private:
    void appendRow(RowIndex view, std::wstring& text) const;

    const SourceCursor& cursor_;
    const GroupView& groups_;
    const Geometry& geometry_;
    const Selection& selection_;
    std::function<std::wstring(int group)> groupText_;
};

}  // namespace grid

#include "src/ui/main/grid_arrangement.h"

#include <algorithm>
#include <utility>

GridArrangement::GridArrangement(grid::Grid& grid) {
    for (int place = 0; place < grid.columnCount(); ++place) {
        fields_.push_back(grid.column(grid.columnAtPlace(place)).dataField());
    }
    for (const grid::GroupColumn& group : grid.groupColumns()) {
        groups_.push_back({grid.column(group.column).dataField(), group.descending});
    }
}

void GridArrangement::applyTo(grid::Grid& grid) const {
    int place = 0;
    for (const std::wstring& field : fields_) {
        const int column = grid.columnIndex(field);
        if (column >= 0) grid.moveColumn(column, place++);
    }
    for (int column = 0; column < grid.columnCount(); ++column) {
        const std::wstring& field = grid.column(column).dataField();
        if (std::find(fields_.begin(), fields_.end(), field) != fields_.end()) continue;
        const grid::ColumnLayout& layout = grid.geometry().columns();
        grid.moveColumn(column, column == 0 ? 0 : layout.place(column - 1) + 1);
    }
    std::vector<grid::GroupColumn> groups;
    for (const Group& group : groups_) {
        const int column = grid.columnIndex(group.field);
        if (column >= 0) groups.push_back({column, group.descending});
    }
    if (!groups.empty()) grid.setGroupColumns(std::move(groups));
}

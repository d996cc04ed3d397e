// How the user arranged the columns of a grid: their order, and those by which the rows are
// grouped. It outlives the grid's columns, which are recreated with every source.
//
//   const GridArrangement arrangement{tdbgridData};
//   tdbgridData.setDataSource(&other);
//   arrangement.applyTo(tdbgridData);
//
// The user-interface thread.
#pragma once

#include "toolkit/grid/grid.h"

#include <string>
#include <vector>

class GridArrangement {
public:
    explicit GridArrangement(grid::Grid& grid);

    /// Fields that the grid no longer has are ignored; a new one is placed after the field that
    /// precedes it in the source, wherever that is.
    void applyTo(grid::Grid& grid) const;

private:
    struct Group {
        std::wstring field;
        bool descending;
    };

    std::vector<std::wstring> fields_;  ///< by place
    std::vector<Group> groups_;
};

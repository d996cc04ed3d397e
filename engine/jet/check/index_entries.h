// Checks of the entries of an index against the rows of its table.
//
//   EntryCheck entries{context, definition, index, rows, name};
//   entries.add(key, row, leaf);    // in the order of the index
//   entries.finish();
//
// One thread, that of the check.
#pragma once

#include "engine/jet/check/index_keys.h"
#include "engine/jet/index_page.h"

namespace jet::checking {

class EntryCheck {
public:
    /// All must stay alive.
    EntryCheck(Context& context, const TableDefinition& definition, const PhysicalIndex& index,
               const LiveRows& rows, std::string name);

    void add(Bytes key, RowId row, PageNumber leaf);

    /// Reports rows without entry. Requires: all entries were added.
    void finish();

private:
    void checkRow(Bytes key, RowId row, PageNumber leaf);
    void checkUnique(Bytes key, RowId row);

    Context& context_;
    const TableDefinition& definition_;
    const PhysicalIndex& index_;
    const LiveRows& rows_;
    std::string name_;
    RowKeys keys_;
    std::vector<bool> seen_;  ///< by place in rows_
    Key nullKey_;             ///< of rows whose key columns are all null
    Key lastKey_;
    std::uint64_t distinct_ = 0;
};

}  // namespace jet::checking

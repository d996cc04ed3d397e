// The rows of a table that is being checked: where they are, and a walk over those that can be
// read.
//
//   const LiveRows rows = collectRows(context, definition, pages);
//   forEachRow(context, definition, rows, [&](std::size_t place, RowId row, Bytes record) { ... });
//
// One thread, that of the check.
#pragma once

#include "engine/jet/bytes.h"
#include "engine/jet/check/context.h"
#include "engine/jet/data_page.h"
#include "engine/jet/table_definition.h"

namespace jet::checking {

struct LiveRows {
    std::vector<RowId> ids;   ///< ascending; where an index points to
    std::vector<bool> sound;  ///< of the same length: the record is readable and sound
    bool complete = true;     ///< no page of the table was skipped

    /// The place of a row in ids; nothing if there is no such row.
    std::optional<std::size_t> find(RowId row) const {
        const auto found = std::lower_bound(ids.begin(), ids.end(), row);
        if (found == ids.end() || *found != row) return std::nullopt;
        return static_cast<std::size_t>(found - ids.begin());
    }
};

/// Claims the data pages of a table, which ascend; checks them and the pointers of
/// moved rows.
LiveRows collectRows(Context& context, const TableDefinition& definition,
                     const std::vector<PageNumber>& pages);

/// Calls `visit` with the place in `rows`, the id and the record's bytes of each sound row.
template <typename Visit>
void forEachRow(Context& context, const TableDefinition& definition, const LiveRows& rows,
                Visit visit) {
    PageReader homes = context.reader();
    PageReader moved = context.reader();
    std::optional<DataPage> page;
    for (std::size_t place = 0; place < rows.ids.size(); ++place) {
        const RowId row = rows.ids[place];
        if (!rows.sound[place]) continue;
        if (!page || page->number() != row.page()) page.emplace(homes.page(row.page()), row.page());
        const auto slot = page->slot(row.slot());
        if (!slot) continue;
        visit(
            place, row,
            slot->pointer ? followPointer(moved, slot->bytes, raw(definition.page)) : slot->bytes);
    }
}

}  // namespace jet::checking

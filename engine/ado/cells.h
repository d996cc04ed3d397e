// The cells of a view, by position and field: what grids and exports read, wherever the current
// record is.
//
//   ado::RowSet set{query};
//   const ado::Cells cells{set, order};
//   if (cells.text(7, 0, ado::ValueFormatter{}, text)) show(text);
//
// One thread: the owner's. Set and order must outlive it.
#pragma once

#include "engine/ado/row_set.h"
#include "engine/ado/sort_order.h"

#include <string>
#include <string_view>
#include <vector>

namespace ado {

class Cells {
public:
    Cells(RowSet& set, const RowOrder& order) : set_{set}, order_{order} {}

    /// Null if there is no such row or field, or if the row is deleted; Unreadable if it is damaged.
    jet::Value value(std::uint32_t position, std::size_t field) const;

    /// Sets `out` to the text form; false, and an empty text, if there is no such row.
    bool text(std::uint32_t position, std::size_t field, const ValueFormatter& formatter,
              std::u16string& out) const;

    /// For each position the rank of its value among the distinct values of the field, from 0, Null
    /// first. Throws jet::Error for failures of the storage.
    std::vector<std::uint32_t> ranks(std::size_t field) const;

    /// Appends the texts of all fields of a row. Requires: there is such a row.
    /// Throws jet::Error for failures of the storage.
    void appendLine(std::uint32_t position, const ValueFormatter& formatter,
                    std::u16string_view delimiter, std::u16string_view nullText,
                    std::u16string& out) const;

private:
    bool contains(std::uint32_t position, std::size_t field) const;

    RowSet& set_;
    const RowOrder& order_;
};

}  // namespace ado

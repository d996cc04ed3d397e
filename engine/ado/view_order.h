// The order in which one view shows the rows of a set: its sort string and the resulting order.
//
//   ado::ViewOrder order;
//   ado::RowSet set{query};
//   order.sort(set, u"Date ASC, [Process] DESC");
//   use(set.rows().value(order.rowAt(0), 0));  // of the first row shown
//
// One thread: the owner's.
#pragma once

#include "engine/ado/row_set.h"
#include "engine/ado/sort_order.h"

#include <string>
#include <string_view>

namespace ado {

class ViewOrder {
public:
    /// As given; empty for the order of the fetch.
    const std::u16string& sortString() const { return sort_; }

    /// Rows that arrived after the sort follow the sorted ones, in the order of the fetch.
    const RowOrder& rows() const { return rows_; }
    std::uint32_t rowAt(std::uint32_t position) const { return rows_.rowAt(position); }

    /// Throws Error: 3265 for an unknown column, 3001; jet::Error; and keeps the old order.
    void sort(RowSet& set, std::u16string_view sort);

    /// Sorts in the rows that arrived after the sort; false if there was nothing to do. If the
    /// storage fails the order is unchanged, and no rows are lost.
    bool sortAgain(RowSet& set);

    /// Memory used by the order.
    std::size_t byteCount() const;

private:
    std::u16string sort_;
    std::vector<SortColumn> columns_;
    RowOrder rows_;
};

}  // namespace ado

// The order in which one view shows the rows of a set: its sort string and what came of it.
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

    /// Rows that came after the sort follow the sorted ones, in the order of the fetch.
    const RowOrder& rows() const { return rows_; }
    std::uint32_t rowAt(std::uint32_t position) const { return rows_.rowAt(position); }

    /// Throws Error: 3265 for an unknown column, 3001; jet::Error. The old order stays then.
    void sort(RowSet& set, std::u16string_view sort);

    /// Sorts the rows that came after the sort among the others; false if there was nothing to do.
    /// A storage that fails leaves the order as it is: the rows are there all the same.
    bool sortAgain(RowSet& set);

    /// Memory that the order takes.
    std::size_t byteCount() const;

private:
    std::u16string sort_;
    std::vector<SortColumn> columns_;
    RowOrder rows_;
};

}  // namespace ado

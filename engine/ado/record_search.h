// The search for the next row that satisfies a criterion, in the order of a view.
//
//   auto set = std::make_shared<ado::RowSet>(query);
//   ado::FindCriterion wanted{u"Trace Like '*timeout*'", set->columns()};
//   ado::RecordSearch search{set, order, connection};
//   if (const auto found = search.find(wanted, 0, ado::adSearchForward)) show(*found);
//
// One thread: the owner's. A search for a text runs wherever the connection's runner puts it.
#pragma once

#include "engine/ado/connection.h"
#include "engine/ado/find_criterion.h"
#include "engine/ado/row_set.h"
#include "engine/ado/text_matches.h"

#include <memory>
#include <optional>

namespace ado {

class RecordSearch {
public:
    RecordSearch(std::shared_ptr<RowSet> set, RowOrder order, Connection& connection)
        : set_{std::move(set)}, order_{std::move(order)}, connection_{connection} {}

    /// The first position from `position` on, upwards or downwards, whose row satisfies the
    /// criterion; -1 or the number of rows if there is none. Nothing if the connection cancelled
    /// it. The owner's recordsets may have been closed when it returns.
    /// Requires: a position of a row. Throws jet::Error for failures of the storage.
    std::optional<std::int64_t> find(FindCriterion& wanted, std::int64_t position, int direction);

private:
    std::optional<std::int64_t> findText(TextMatches& matches, std::int64_t position,
                                         int direction);
    std::int64_t findRow(FindCriterion& wanted, std::int64_t position, int direction);

    std::shared_ptr<RowSet> set_;
    RowOrder order_;
    Connection& connection_;
};

}  // namespace ado

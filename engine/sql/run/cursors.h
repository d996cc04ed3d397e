// The cursors that run a plan, innermost first: rows of a scan, sorted rows, groups; then, around
// one of these, DISTINCT and TOP.
//
//   std::unique_ptr<sql::Cursor> cursor = sql::openCursor(plan);
//
// A cursor belongs to one thread and does its work when the first row is asked for.
#pragma once

#include "engine/jet/table.h"
#include "engine/sql/bind/plan.h"
#include "engine/sql/run/query.h"

namespace sql {

using PlanPtr = std::shared_ptr<const Plan>;

std::unique_ptr<Cursor> openCursor(const PlanPtr& plan);

/// In storage order.
std::unique_ptr<Cursor> openScan(const PlanPtr& plan);

/// In the plan's order: only keys and row ids are kept, the rows are read again.
std::unique_ptr<Cursor> openSortedScan(const PlanPtr& plan);

/// The rows of a stored query in the plan's order.
std::unique_ptr<Cursor> openSortedQuery(const PlanPtr& plan);

/// One row per group, in the plan's order or by the group's values.
std::unique_ptr<Cursor> openGroups(const PlanPtr& plan);

/// Without rows that equal an earlier one.
std::unique_ptr<Cursor> openDistinct(const PlanPtr& plan, std::unique_ptr<Cursor> rows);

/// The first `count` rows.
std::unique_ptr<Cursor> openTop(std::uint64_t count, std::unique_ptr<Cursor> rows);

/// The rows of a table or of a stored query that satisfy a plan's condition, to be evaluated.
/// Damaged rows are left out and counted, damaged fields are counted.
class FilteredScan {
public:
    explicit FilteredScan(const Plan& plan);

    /// Moves to the next row and calls `use()`; false at the end.
    template <typename Use>
    bool nextThat(Use use) {
        while (advance()) {
            if (!accept()) continue;
            use();
            if (scan_ && !row_.lost.empty()) scan_->loseFields(row_.lost);
            return true;
        }
        return false;
    }

    Row& row() { return row_; }

    /// Requires: the rows are those of a table.
    jet::RowId rowId() const { return scan_->rowId(); }
    jet::Losses losses() const;

private:
    bool advance();
    bool accept();

    // Neither scan nor query if no row can satisfy the condition.
    std::optional<jet::TableScan> scan_;
    std::unique_ptr<RowFilter> filter_;
    std::unique_ptr<Cursor> query_;
    ExpressionPtr condition_;  ///< for the rows of the query; may be null
    Row row_;
};

/// Appends the sort key of a row in the plan's order.
void appendOrderKeys(const Plan& plan, Row& row, OrderKey& key);

/// Evaluates the plan's outputs, which are as many as `values`.
void project(const Plan& plan, Row& row, std::vector<jet::Value>& values);

}  // namespace sql

// The rows of one query with everything that a recordset and its clones share: the orders they have
// been sorted into, the latest search for a text, and the views that show them.
//
//   ado::RowSet set{sql::Query::prepare(database, u"SELECT * FROM People")};
//   if (set.scanned() != nullptr) ado::Fetch{set.query(), set.scanned(), {}}.runHere();
//   show(set.rows().count());
//
// One thread: the owner's. A fetch may add rows from its own.
#pragma once

#include "engine/ado/scanned_rows.h"
#include "engine/ado/sort_order.h"
#include "engine/ado/views.h"

#include <memory>

namespace ado {

class FindCriterion;
class TextMatches;

class RowSet {
public:
    /// Rows of a table are filled by a fetch; any other query is run to its end.
    /// Throws jet::Error, sql::Error{TypeMismatch}.
    explicit RowSet(std::shared_ptr<const sql::Query> query);
    ~RowSet();
    RowSet(const RowSet&) = delete;
    RowSet& operator=(const RowSet&) = delete;

    const std::shared_ptr<const sql::Query>& query() const { return query_; }
    const std::vector<sql::OutputColumn>& columns() const { return query_->columns(); }

    Rows& rows() const { return *rows_; }

    /// The rows that a fetch fills; null if all rows are in memory already.
    const std::shared_ptr<ScannedRows>& scanned() const { return scanned_; }

    /// The table's row count; 0 if all rows are in memory already.
    std::uint32_t expectedRows() const;

    OrderCache& orders() { return orders_; }
    Views& views() { return views_; }

    /// The cached results of searches with the criterion's pattern, which a search extends. Null if
    /// the criterion does not search the texts of a table.
    std::shared_ptr<TextMatches> textMatches(const FindCriterion& criterion);

    /// To be called when texts may have changed.
    void forgetTextMatches() { textMatches_.reset(); }

    /// What could not be read: by the fetch, as reported to it, and later when fields were read.
    jet::Losses losses() const;
    void setLosses(jet::Losses losses) { losses_ = std::move(losses); }

private:
    std::shared_ptr<const sql::Query> query_;
    std::shared_ptr<ScannedRows> scanned_;  ///< null, or the same rows as rows_
    std::shared_ptr<Rows> rows_;
    OrderCache orders_;
    Views views_;
    std::shared_ptr<TextMatches> textMatches_;  ///< of the latest search for a text; may be null
    jet::Losses losses_;
};

}  // namespace ado

#include "engine/sql/run/filter.h"

#include "engine/sql/run/byte_map.h"

#include <algorithm>

namespace sql {

namespace {

/// One of the conditions joined by AND, and what is known about it.
class Term {
public:
    explicit Term(ExpressionPtr condition) : condition_{std::move(condition)} {
        const auto columns = columnsOf(*condition_);
        if (columns.size() == 1 && !columns.front()->isLongValue()) column_ = columns.front();
    }

    bool holds(Row& row) {
        if (!column_) return decide(row);
        const jet::StoredField field = row.record->field(*column_);
        if (field.null) return remembered(ofNull_, row);
        if (column_->type == jet::ColumnType::Boolean)
            return remembered(ofTruth_[field.truth], row);
        if (const std::uint32_t* verdict = byValue_.find(field.bytes)) return *verdict != 0;
        const bool verdict = decide(row);
        byValue_.insert(field.bytes, verdict ? 1 : 0);
        return verdict;
    }

private:
    bool decide(Row& row) const { return truth(condition_->evaluate(row)) == true; }

    bool remembered(std::optional<bool>& verdict, Row& row) const {
        if (!verdict) verdict = decide(row);
        return *verdict;
    }

    ExpressionPtr condition_;
    const jet::Column* column_ = nullptr;  ///< the only one that counts; null: do not remember
    std::optional<bool> ofNull_;
    std::optional<bool> ofTruth_[2];
    ByteMap byValue_;
};

void splitTerms(const ExpressionPtr& condition, std::vector<Term>& terms) {
    if (!condition->isConjunction()) {
        terms.emplace_back(condition);
        return;
    }
    for (const ExpressionPtr& operand : condition->operands()) splitTerms(operand, terms);
}

class TermFilter final : public RowFilter {
public:
    TermFilter(const ExpressionPtr& condition, std::shared_ptr<const jet::Table> table)
        : table_{std::move(table)} {
        splitTerms(condition, terms_);
    }

    bool matches(const jet::Record& record, jet::PageReader& pages) override {
        row_.record = &record;
        row_.pages = &pages;
        return std::all_of(terms_.begin(), terms_.end(),
                           [this](Term& term) { return term.holds(row_); });
    }

private:
    std::shared_ptr<const jet::Table> table_;  ///< owns the columns
    std::vector<Term> terms_;
    Row row_;
};

}  // namespace

std::unique_ptr<RowFilter> makeRowFilter(const ExpressionPtr& condition,
                                         std::shared_ptr<const jet::Table> table) {
    return std::make_unique<TermFilter>(condition, std::move(table));
}

}  // namespace sql

#include "engine/sql/run/filter.h"

#include "engine/sql/run/byte_map.h"
#include "engine/sql/run/stored_key.h"

#include <algorithm>

namespace sql {

namespace {

/// One of the conditions joined by AND, and what is known about it.
class Term {
public:
    explicit Term(ExpressionPtr condition)
        : condition_{std::move(condition)}, columns_{columnsOf(*condition_)} {
        if (!haveStoredKeys(columns_)) columns_.clear();
    }

    bool holds(Row& row) {
        if (columns_.empty()) return decide(row);
        if (columns_.size() > 1) return holdsForSeveral(row);
        try {
            return holdsFor(row.record->field(*columns_.front()), row);
        } catch (const jet::Error& error) {
            if (!jet::isDamage(error)) throw;
            return decide(row);
        }
    }

private:
    bool holdsFor(const jet::StoredField& field, Row& row) {
        if (field.null) return remembered(ofNull_, row);
        if (columns_.front()->type == jet::ColumnType::Boolean)
            return remembered(ofTruth_[field.truth], row);
        return rememberedOf(field.bytes, row);
    }

    bool holdsForSeveral(Row& row) {
        if (byValue_.full()) return decide(row);  // too many kinds for a look-up to pay
        // Deciding may do without a damaged field.
        return makeStoredKey(*row.record, columns_, key_) ? rememberedOf(key_, row) : decide(row);
    }

    bool rememberedOf(jet::Bytes stored, Row& row) {
        if (const std::uint32_t* verdict = byValue_.find(stored)) return *verdict != 0;
        const bool verdict = decide(row);
        byValue_.insert(stored, verdict ? 1 : 0);
        return verdict;
    }

    bool decide(Row& row) const { return truth(condition_->evaluate(row)) == true; }

    bool remembered(std::optional<bool>& verdict, Row& row) const {
        if (!verdict) verdict = decide(row);
        return *verdict;
    }

    ExpressionPtr condition_;
    Columns columns_;  ///< all that it reads; empty: do not remember
    std::optional<bool> ofNull_;
    std::optional<bool> ofTruth_[2];
    ByteMap byValue_;  ///< by the stored content of the columns
    OrderKey key_;
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
        row_.lost.clear();
        return std::all_of(terms_.begin(), terms_.end(),
                           [this](Term& term) { return term.holds(row_); });
    }

    std::vector<jet::LostField>& lost() override { return row_.lost; }

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

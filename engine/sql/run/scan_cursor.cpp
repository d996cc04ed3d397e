#include "engine/sql/run/cursors.h"
#include "engine/sql/run/filter.h"
#include "engine/sql/run/key_store.h"

#include <algorithm>

namespace sql {

FilteredScan::FilteredScan(const Plan& plan) {
    if (plan.alwaysEmpty) return;
    if (plan.query) {
        query_ = openCursor(plan.query);
        condition_ = plan.condition;
        return;
    }
    scan_.emplace(*plan.table);
    if (plan.condition) filter_ = makeRowFilter(plan.condition, plan.table);
}

bool FilteredScan::advance() { return scan_ ? scan_->next() : query_ && query_->next(); }

jet::Losses FilteredScan::losses() const {
    if (query_) return query_->losses();
    return scan_ ? scan_->losses() : jet::Losses{};
}

bool FilteredScan::accept() {
    if (query_) {
        row_.group = &query_->row();
        return !condition_ || truth(condition_->evaluate(row_)) == true;
    }
    row_.record = &scan_->record();
    row_.pages = &scan_->pages();
    if (!filter_) return true;
    const bool accepted = filter_->matches(*row_.record, *row_.pages);
    if (!filter_->lost().empty()) scan_->loseFields(filter_->lost());
    return accepted;
}

void appendOrderKeys(const Plan& plan, Row& row, OrderKey& key) {
    for (const OrderTerm& term : plan.order) {
        appendOrderKey(term.expression->evaluate(row), term.expression->type().type, term.ascending,
                       key);
    }
}

void project(const Plan& plan, Row& row, std::vector<jet::Value>& values) {
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = plan.outputs[i]->evaluate(row);
}

namespace {

class ScanCursor final : public Cursor {
public:
    explicit ScanCursor(PlanPtr plan) : plan_{std::move(plan)}, values_(plan_->outputs.size()) {}

    bool next() override {
        if (!scan_) scan_.emplace(*plan_);
        return scan_->nextThat([this] { project(*plan_, scan_->row(), values_); });
    }

    const std::vector<jet::Value>& row() const override { return values_; }
    jet::Losses losses() const override { return scan_ ? scan_->losses() : jet::Losses{}; }

private:
    PlanPtr plan_;
    std::optional<FilteredScan> scan_;
    std::vector<jet::Value> values_;
};

class SortedCursor final : public Cursor {
public:
    explicit SortedCursor(PlanPtr plan)
        : plan_{std::move(plan)},
          values_(plan_->outputs.size()),
          records_{plan_->table->pageReader()},
          longValues_{plan_->table->pageReader()} {}

    bool next() override {
        if (!sorted_) sort();
        while (at_ < order_.size()) {
            if (read(rowIds_[order_[at_++]])) return true;
            lose(jet::Loss::Kind::Rows, rowIds_[order_[at_ - 1]],
                 "It cannot be read a second time.");
        }
        return false;
    }

    const std::vector<jet::Value>& row() const override { return values_; }
    jet::Losses losses() const override { return losses_; }

private:
    void sort() {
        sorted_ = true;
        KeyStore keys;
        FilteredScan scan{*plan_};
        while (scan.nextThat([&] { addKey(scan, keys); })) {
        }
        losses_ = scan.losses();
        order_ = keys.sorted(plan_->distinct ? std::nullopt : plan_->top);
    }

    void addKey(FilteredScan& scan, KeyStore& keys) {
        keys.dropKey();  // what a damaged row left behind
        appendOrderKeys(*plan_, scan.row(), keys.bytes());
        keys.finishKey();
        rowIds_.push_back(scan.rowId());
    }

    void lose(jet::Loss::Kind kind, jet::RowId id, std::string why) {
        jet::Loss loss{kind, id.page(), static_cast<int>(id.slot()), std::move(why)};
        plan_->table->database().noteLoss(loss);
        losses_.add(std::move(loss));
    }

    /// Another program may have taken the row away since it was sorted.
    bool read(jet::RowId id) {
        jet::Record record;
        if (!plan_->table->find(records_, id, record)) return false;
        Row row;
        row.record = &record;
        row.pages = &longValues_;
        project(*plan_, row, values_);
        if (longValues_.hasDoubts()) {
            const jet::Losses doubts = longValues_.takeDoubts();
            plan_->table->database().noteDoubts(doubts);
            losses_ += doubts;
        }
        for (jet::LostField& field : row.lost) {
            if (!field.column->unreadable.empty() || isOrderedBy(*field.column)) continue;
            lose(jet::Loss::Kind::Values, id, std::move(field.why));
        }
        return true;
    }

    /// What the order is made of was read, and lost, before.
    bool isOrderedBy(const jet::Column& column) const {
        return std::ranges::any_of(plan_->order, [&](const OrderTerm& term) {
            const auto columns = columnsOf(*term.expression);
            return std::ranges::find(columns, &column) != columns.end();
        });
    }

    PlanPtr plan_;
    std::vector<jet::Value> values_;
    jet::PageReader records_;
    jet::PageReader longValues_;
    bool sorted_ = false;
    std::vector<jet::RowId> rowIds_;  ///< in storage order
    std::vector<std::size_t> order_;  ///< places in rowIds_
    std::size_t at_ = 0;
    jet::Losses losses_;
};

class SortedQueryCursor final : public Cursor {
public:
    explicit SortedQueryCursor(PlanPtr plan) : plan_{std::move(plan)} {}

    bool next() override {
        if (!sorted_) sort();
        if (at_ == order_.size()) return false;
        ++at_;
        return true;
    }

    const std::vector<jet::Value>& row() const override { return rows_[order_[at_ - 1]]; }
    jet::Losses losses() const override { return losses_; }

private:
    void sort() {
        sorted_ = true;
        KeyStore keys;
        FilteredScan scan{*plan_};
        while (scan.nextThat([&] { add(scan.row(), keys); })) {
        }
        losses_ = scan.losses();
        order_ = keys.sorted(plan_->distinct ? std::nullopt : plan_->top);
    }

    void add(Row& row, KeyStore& keys) {
        appendOrderKeys(*plan_, row, keys.bytes());
        keys.finishKey();
        rows_.emplace_back(plan_->outputs.size());
        project(*plan_, row, rows_.back());
    }

    PlanPtr plan_;
    bool sorted_ = false;
    std::vector<std::vector<jet::Value>> rows_;
    std::vector<std::size_t> order_;  ///< places in rows_
    std::size_t at_ = 0;
    jet::Losses losses_;
};

}  // namespace

std::unique_ptr<Cursor> openSortedQuery(const PlanPtr& plan) {
    return std::make_unique<SortedQueryCursor>(plan);
}

std::unique_ptr<Cursor> openScan(const PlanPtr& plan) { return std::make_unique<ScanCursor>(plan); }

std::unique_ptr<Cursor> openSortedScan(const PlanPtr& plan) {
    return std::make_unique<SortedCursor>(plan);
}

}  // namespace sql

// DISTINCT and TOP, and which cursors a plan needs.
#include "engine/sql/run/cursors.h"

#include <string>
#include <unordered_set>

namespace sql {

namespace {

class DistinctCursor final : public Cursor {
public:
    DistinctCursor(PlanPtr plan, std::unique_ptr<Cursor> rows)
        : plan_{std::move(plan)}, rows_{std::move(rows)} {}

    bool next() override {
        while (rows_->next()) {
            if (isNew()) return true;
        }
        return false;
    }

    const std::vector<jet::Value>& row() const override { return rows_->row(); }
    jet::Losses losses() const override { return rows_->losses(); }

private:
    bool isNew() {
        key_.clear();
        const auto& values = rows_->row();
        for (std::size_t i = 0; i < values.size(); ++i) {
            appendOrderKey(values[i], plan_->columns[i].type, true, key_);
        }
        return seen_.emplace(key_.begin(), key_.end()).second;
    }

    PlanPtr plan_;
    std::unique_ptr<Cursor> rows_;
    std::unordered_set<std::string> seen_;
    OrderKey key_;
};

class TopCursor final : public Cursor {
public:
    TopCursor(std::uint64_t count, std::unique_ptr<Cursor> rows)
        : left_{count}, rows_{std::move(rows)} {}

    bool next() override {
        if (left_ == 0) return false;
        --left_;
        return rows_->next();
    }

    const std::vector<jet::Value>& row() const override { return rows_->row(); }
    jet::Losses losses() const override { return rows_->losses(); }

private:
    std::uint64_t left_;
    std::unique_ptr<Cursor> rows_;
};

std::unique_ptr<Cursor> openRows(const PlanPtr& plan) {
    if (plan->grouped) return openGroups(plan);
    if (plan->order.empty()) return openScan(plan);
    return plan->query ? openSortedQuery(plan) : openSortedScan(plan);
}

}  // namespace

std::unique_ptr<Cursor> openDistinct(const PlanPtr& plan, std::unique_ptr<Cursor> rows) {
    return std::make_unique<DistinctCursor>(plan, std::move(rows));
}

std::unique_ptr<Cursor> openTop(std::uint64_t count, std::unique_ptr<Cursor> rows) {
    return std::make_unique<TopCursor>(count, std::move(rows));
}

std::unique_ptr<Cursor> openCursor(const PlanPtr& plan) {
    auto cursor = openRows(plan);
    if (plan->distinct) cursor = openDistinct(plan, std::move(cursor));
    // Where there is an order, sorting has cut off the rest, ties aside.
    const bool cutOff = !plan->order.empty() && !plan->distinct;
    if (plan->top && !cutOff) cursor = openTop(*plan->top, std::move(cursor));
    return cursor;
}

}  // namespace sql

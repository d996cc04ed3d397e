#include "engine/sql/run/byte_map.h"
#include "engine/sql/run/cursors.h"
#include "engine/sql/run/key_store.h"
#include "engine/sql/run/stored_key.h"

#include <algorithm>
#include <string>
#include <unordered_map>

namespace sql {

namespace {

/// Gathers the rows of a scan in groups.
class Grouping {
public:
    explicit Grouping(const Plan& plan) : plan_{plan} {
        for (const ExpressionPtr& key : plan.groupKeys) collectColumns(*key, keyColumns_);
        rawKeys_ = plan.table && haveStoredKeys(keyColumns_);
        // Without GROUP BY all rows are one group, also if there are none.
        if (plan.groupKeys.empty()) newGroup({});
    }

    void add(Row& row) {
        arguments_.clear();
        for (const Aggregate& aggregate : plan_.aggregates) {
            arguments_.push_back(aggregate.argument ? aggregate.argument->evaluate(row)
                                                    : jet::Value{});
        }
        Group& group = groups_[groupOf(row)];
        for (std::size_t i = 0; i < arguments_.size(); ++i) {
            if (!plan_.aggregates[i].argument) {
                group.accumulators[i].addRow();
            } else if (!jet::isNull(arguments_[i])) {
                group.accumulators[i].add(arguments_[i]);
            }
        }
    }

    std::size_t size() const { return groups_.size(); }

    /// The group's key values, then its aggregates.
    std::vector<jet::Value> values(std::size_t place) const {
        const Group& group = groups_[place];
        std::vector<jet::Value> all = group.keys;
        for (const Accumulator& accumulator : group.accumulators) {
            all.push_back(accumulator.result());
        }
        return all;
    }

private:
    struct Group {
        std::vector<jet::Value> keys;
        std::vector<Accumulator> accumulators;
    };

    /// Rows stored alike belong to one group, so that few keys need be made.
    std::size_t groupOf(Row& row) {
        if (plan_.groupKeys.empty()) return 0;
        if (!rawKeys_) return groupByValue(row);
        if (!makeStoredKey(*row.record, keyColumns_, rawKey_)) return groupByValue(row);
        if (const std::uint32_t* place = byRawKey_.find(rawKey_)) return *place;
        const std::size_t place = groupByValue(row);
        byRawKey_.insert(rawKey_, static_cast<std::uint32_t>(place));
        return place;
    }

    std::size_t groupByValue(Row& row) {
        std::vector<jet::Value> keys;
        key_.clear();
        for (const ExpressionPtr& key : plan_.groupKeys) {
            keys.push_back(key->evaluate(row));
            appendOrderKey(keys.back(), key->type().type, true, key_);
        }
        const auto [at, added] = byKey_.try_emplace({key_.begin(), key_.end()}, groups_.size());
        if (added) newGroup(std::move(keys));
        return at->second;
    }

    void newGroup(std::vector<jet::Value> keys) {
        Group group{std::move(keys), {}};
        for (const Aggregate& aggregate : plan_.aggregates) {
            group.accumulators.emplace_back(aggregate);
        }
        groups_.push_back(std::move(group));
    }

    const Plan& plan_;
    Columns keyColumns_;    ///< what the keys are made of
    bool rawKeys_ = false;  ///< all of them have their bytes in the record
    std::vector<Group> groups_;
    std::unordered_map<std::string, std::size_t> byKey_;
    ByteMap byRawKey_;
    OrderKey rawKey_;
    OrderKey key_;
    std::vector<jet::Value> arguments_;
};

class GroupCursor final : public Cursor {
public:
    explicit GroupCursor(PlanPtr plan) : plan_{std::move(plan)}, values_(plan_->outputs.size()) {}

    bool next() override {
        if (!grouping_) run();
        if (at_ == order_.size()) return false;
        const auto group = grouping_->values(order_[at_++]);
        Row row;
        row.group = &group;
        for (std::size_t i = 0; i < values_.size(); ++i) {
            values_[i] = plan_->outputs[i]->evaluate(row);
        }
        return true;
    }

    const std::vector<jet::Value>& row() const override { return values_; }
    jet::Losses losses() const override { return losses_; }

private:
    void run() {
        grouping_.emplace(*plan_);
        FilteredScan scan{*plan_};
        while (scan.nextThat([&] { grouping_->add(scan.row()); })) {
        }
        losses_ = scan.losses();
        KeyStore keys;
        for (std::size_t place = 0; place < grouping_->size(); ++place) addKey(place, keys);
        order_ = keys.sorted(plan_->distinct ? std::nullopt : plan_->top);
    }

    void addKey(std::size_t place, KeyStore& keys) const {
        const auto group = grouping_->values(place);
        Row row;
        row.group = &group;
        appendOrderKeys(*plan_, row, keys.bytes());
        if (plan_->order.empty()) {
            for (std::size_t i = 0; i < plan_->groupKeys.size(); ++i) {
                appendOrderKey(group[i], plan_->groupKeys[i]->type().type, true, keys.bytes());
            }
        }
        keys.finishKey();
    }

    PlanPtr plan_;
    std::optional<Grouping> grouping_;
    std::vector<std::size_t> order_;  ///< places of groups
    std::size_t at_ = 0;
    std::vector<jet::Value> values_;
    jet::Losses losses_;
};

}  // namespace

std::unique_ptr<Cursor> openGroups(const PlanPtr& plan) {
    return std::make_unique<GroupCursor>(plan);
}

}  // namespace sql

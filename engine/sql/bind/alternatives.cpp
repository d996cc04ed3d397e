#include "engine/sql/bind/alternatives.h"

#include "engine/jet/collation.h"
#include "engine/sql/values/error.h"

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace sql {

namespace {

constexpr ExpressionType kTruth{Domain::Number, jet::ColumnType::Boolean};

struct KeyHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view key) const {
        return std::hash<std::string_view>{}(key);
    }
};

std::string_view asView(const OrderKey& key) {
    return {reinterpret_cast<const char*>(key.data()), key.size()};
}

/// Texts by their collation keys, all other values in order.
class Alternatives final : public Expression {
public:
    Alternatives(ExpressionPtr operand, std::vector<jet::Value> values)
        : Expression{kTruth, {std::move(operand)}} {
        hasNull_ = std::erase_if(values, jet::isNull) > 0;
        for (jet::Value& value : values) {
            if (const auto* text = std::get_if<std::u16string>(&value)) {
                if (keys_.insert(jet::textKey(*text)).second) values_.push_back(std::move(value));
            } else {
                values_.push_back(std::move(value));
            }
        }
        if (!keys_.empty()) return;
        std::sort(values_.begin(), values_.end(),
                  [](const jet::Value& a, const jet::Value& b) { return compareValues(a, b) < 0; });
    }

    jet::Value evaluate(Row& row) const override {
        const jet::Value value = operands().front()->evaluate(row);
        if (jet::isNull(value)) return {};
        if (contains(value, row.scratch)) return true;
        return hasNull_ ? jet::Value{} : jet::Value{false};
    }

    std::vector<jet::Value> values() const {
        std::vector<jet::Value> all = values_;
        if (hasNull_) all.emplace_back();
        return all;
    }

private:
    bool contains(const jet::Value& value, OrderKey& scratch) const {
        if (const auto* text = std::get_if<std::u16string>(&value)) {
            scratch.clear();
            jet::appendTextKey(*text, true, scratch);
            return keys_.contains(asView(scratch));
        }
        const auto at = std::lower_bound(
            values_.begin(), values_.end(), value,
            [](const jet::Value& a, const jet::Value& b) { return compareValues(a, b) < 0; });
        return at != values_.end() && compareValues(*at, value) == 0;
    }

    std::unordered_set<std::string, KeyHash, std::equal_to<>> keys_;
    std::vector<jet::Value> values_;  ///< without null; in order unless they are texts
    bool hasNull_ = false;
};

/// A list of which some alternatives depend on the row.
class In final : public Expression {
public:
    explicit In(Expressions operands) : Expression{kTruth, std::move(operands)} {}

    jet::Value evaluate(Row& row) const override {
        const jet::Value value = operands().front()->evaluate(row);
        if (jet::isNull(value)) return {};
        bool unknown = false;
        for (std::size_t i = 1; i < operands().size(); ++i) {
            const jet::Value other = operands()[i]->evaluate(row);
            if (jet::isNull(other)) {
                unknown = true;
            } else if (compareValues(value, other) == 0) {
                return true;
            }
        }
        return unknown ? jet::Value{} : jet::Value{false};
    }
};

void requireComparable(Domain left, Domain right) {
    if (comparable(left, right)) return;
    throw Error{Fault::TypeMismatch, "Data type mismatch in criteria expression."};
}

}  // namespace

ExpressionPtr makeAlternatives(ExpressionPtr operand, std::vector<jet::Value> values) {
    for (const jet::Value& value : values) requireComparable(operand->domain(), domainOf(value));
    return folded(std::make_shared<Alternatives>(std::move(operand), std::move(values)));
}

ExpressionPtr makeIn(ExpressionPtr operand, Expressions alternatives) {
    std::vector<jet::Value> values;
    for (const ExpressionPtr& alternative : alternatives) {
        requireComparable(operand->domain(), alternative->domain());
        if (alternative->constant()) values.push_back(*alternative->constant());
    }
    if (values.size() == alternatives.size()) {
        return makeAlternatives(std::move(operand), std::move(values));
    }
    alternatives.insert(alternatives.begin(), std::move(operand));
    return folded(std::make_shared<In>(std::move(alternatives)));
}

std::optional<std::pair<ExpressionPtr, std::vector<jet::Value>>> alternativesOf(
    const Expression& expression) {
    if (const auto* set = dynamic_cast<const Alternatives*>(&expression)) {
        return std::pair{set->operands().front(), set->values()};
    }
    if (!expression.isEquality()) return std::nullopt;
    for (const std::size_t at : {0u, 1u}) {
        const ExpressionPtr& operand = expression.operands()[at];
        const ExpressionPtr& other = expression.operands()[1 - at];
        if (!operand->constant() && other->constant()) {
            return std::pair{operand, std::vector<jet::Value>{*other->constant()}};
        }
    }
    return std::nullopt;
}

}  // namespace sql

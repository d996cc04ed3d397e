// Conditions: AND, OR, NOT, IS NULL, LIKE, under the logic of three values.
#include "engine/sql/bind/alternatives.h"
#include "engine/sql/bind/expression.h"
#include "engine/sql/like/like.h"
#include "engine/sql/values/error.h"

#include <algorithm>
#include <optional>

namespace sql {

namespace {

constexpr ExpressionType kTruth{Domain::Number, jet::ColumnType::Boolean};

/// AND and OR: `Decisive` is the value of one operand that settles the whole.
template <bool Decisive>
class List final : public Expression {
public:
    explicit List(Expressions operands) : Expression{kTruth, std::move(operands)} {}

    jet::Value evaluate(Row& row) const override {
        bool unknown = false;
        for (const ExpressionPtr& operand : operands()) {
            const auto holds = truth(operand->evaluate(row));
            if (holds == Decisive) return Decisive;
            unknown |= !holds;
        }
        return unknown ? jet::Value{} : jet::Value{!Decisive};
    }

    bool isConjunction() const override { return !Decisive; }
};

/// A list of one decides as its operand does, but yields a truth value.
template <bool Decisive>
ExpressionPtr makeList(Expressions operands) {
    for (const ExpressionPtr& operand : operands) requireCondition(*operand);
    const auto decides = [](const ExpressionPtr& operand, bool as) {
        return operand->constant() && truth(*operand->constant()) == as;
    };
    if (std::any_of(operands.begin(), operands.end(),
                    [&](const auto& operand) { return decides(operand, Decisive); })) {
        return makeConstant(Decisive);
    }
    std::erase_if(operands, [&](const auto& operand) { return decides(operand, !Decisive); });
    if (operands.empty()) return makeConstant(!Decisive);
    return folded(std::make_shared<List<Decisive>>(std::move(operands)));
}

class Not final : public Expression {
public:
    explicit Not(ExpressionPtr operand) : Expression{kTruth, {std::move(operand)}} {}

    jet::Value evaluate(Row& row) const override {
        const auto holds = truth(operands().front()->evaluate(row));
        return holds ? jet::Value{!*holds} : jet::Value{};
    }
};

class IsNull final : public Expression {
public:
    explicit IsNull(ExpressionPtr operand) : Expression{kTruth, {std::move(operand)}} {}

    jet::Value evaluate(Row& row) const override {
        // Long values need not be fetched to see whether there is one.
        const jet::Column* column = operands().front()->column();
        if (column && row.record) return row.record->field(*column).null;
        return jet::isNull(operands().front()->evaluate(row));
    }
};

class Like final : public Expression {
public:
    Like(ExpressionPtr operand, ExpressionPtr pattern)
        : Expression{kTruth, {std::move(operand), std::move(pattern)}} {
        const jet::Value* constant = operands()[1]->constant();
        if (constant && !jet::isNull(*constant))
            pattern_.emplace(std::get<std::u16string>(*constant));
    }

    jet::Value evaluate(Row& row) const override {
        const jet::Value text = operands()[0]->evaluate(row);
        if (jet::isNull(text)) return {};
        if (pattern_) return pattern_->matches(std::get<std::u16string>(text));
        const jet::Value pattern = operands()[1]->evaluate(row);
        if (jet::isNull(pattern)) return {};
        return LikePattern{std::get<std::u16string>(pattern)}.matches(
            std::get<std::u16string>(text));
    }

private:
    std::optional<LikePattern> pattern_;  ///< where it is the same for all rows
};

/// A computed column is bound once, so that all its uses share one expression.
bool sameOperand(const ExpressionPtr& left, const ExpressionPtr& right) {
    return left == right || (left->column() && left->column() == right->column());
}

/// Equalities and sets of one column among the operands of an OR become one set.
Expressions gathered(Expressions operands) {
    std::vector<std::pair<ExpressionPtr, std::vector<jet::Value>>> sets;
    Expressions rest;
    for (ExpressionPtr& operand : operands) {
        auto alternatives = alternativesOf(*operand);
        if (!alternatives) {
            rest.push_back(std::move(operand));
            continue;
        }
        const auto same = std::find_if(sets.begin(), sets.end(), [&](const auto& set) {
            return sameOperand(set.first, alternatives->first);
        });
        if (same == sets.end()) {
            sets.push_back(std::move(*alternatives));
        } else {
            auto& values = alternatives->second;
            std::move(values.begin(), values.end(), std::back_inserter(same->second));
        }
    }
    for (auto& [column, values] : sets) {
        rest.push_back(makeAlternatives(std::move(column), std::move(values)));
    }
    return rest;
}

void requireText(const Expression& expression) {
    if (expression.domain() == Domain::Text || expression.domain() == Domain::Null) return;
    throw Error{Fault::TypeMismatch, "Data type mismatch: LIKE compares texts."};
}

}  // namespace

ExpressionPtr makeAnd(Expressions operands) { return makeList<false>(std::move(operands)); }

ExpressionPtr makeOr(Expressions operands) { return makeList<true>(gathered(std::move(operands))); }

ExpressionPtr makeNot(ExpressionPtr operand) {
    requireCondition(*operand);
    return folded(std::make_shared<Not>(std::move(operand)));
}

ExpressionPtr makeIsNull(ExpressionPtr operand) {
    return folded(std::make_shared<IsNull>(std::move(operand)));
}

ExpressionPtr makeLike(ExpressionPtr operand, ExpressionPtr pattern) {
    requireText(*operand);
    requireText(*pattern);
    return folded(std::make_shared<Like>(std::move(operand), std::move(pattern)));
}

}  // namespace sql

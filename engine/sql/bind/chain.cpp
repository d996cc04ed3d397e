// Operators between two operands: arithmetic, joining of texts, comparison.
#include "engine/sql/bind/expression.h"
#include "engine/sql/values/error.h"
#include "engine/sql/values/text_form.h"

namespace sql {

namespace {

[[noreturn]] void throwMismatch() {
    throw Error{Fault::TypeMismatch, "Data type mismatch in criteria expression."};
}

constexpr ExpressionType kTruth{Domain::Number, jet::ColumnType::Boolean};
constexpr ExpressionType kDouble{Domain::Number, jet::ColumnType::Double};
constexpr ExpressionType kDate{Domain::Date, jet::ColumnType::Date};
constexpr ExpressionType kText{Domain::Text, jet::ColumnType::Text};

bool holds(Operator op, std::weak_ordering order) {
    switch (op) {
        case Operator::Equal:
            return order == 0;
        case Operator::Unequal:
            return order != 0;
        case Operator::Less:
            return order < 0;
        case Operator::Greater:
            return order > 0;
        case Operator::LessOrEqual:
            return order <= 0;
        default:
            return order >= 0;
    }
}

bool isAdditive(Operator op) { return op == Operator::Add || op == Operator::Subtract; }

/// A date and a number added or subtracted give a date, two dates subtracted a number of days.
bool givesDate(Operator op, Domain left, Domain right) {
    if (!isAdditive(op)) return false;
    const bool difference = op == Operator::Subtract && right == Domain::Date;
    return (left == Domain::Date || right == Domain::Date) && !difference;
}

ExpressionType resultType(Operator op, ExpressionType left, ExpressionType right) {
    switch (levelOf(op)) {
        case ChainLevel::Comparison:
            if (!comparable(left.domain, right.domain)) throwMismatch();
            return kTruth;
        case ChainLevel::Join:
            if (left.domain == Domain::Binary || right.domain == Domain::Binary) throwMismatch();
            return kText;
        default:
            break;
    }
    const bool text = left.domain == Domain::Text || right.domain == Domain::Text;
    if (text && op == Operator::Add && comparable(left.domain, right.domain)) return kText;
    if (!isNumeric(left.domain) || !isNumeric(right.domain)) throwMismatch();
    return givesDate(op, left.domain, right.domain) ? kDate : kDouble;
}

/// Division by zero has no value: null.
jet::Value calculate(Operator op, const jet::Value& left, const jet::Value& right) {
    const double a = toDouble(left);
    const double b = toDouble(right);
    if (op == Operator::Multiply) return a * b;
    if (op == Operator::Divide) return b == 0 ? jet::Value{} : jet::Value{a / b};
    const double result = op == Operator::Add ? a + b : a - b;
    if (givesDate(op, domainOf(left), domainOf(right))) return jet::Date{result};
    return result;
}

jet::Value apply(Operator op, jet::Value left, const jet::Value& right) {
    if (levelOf(op) == ChainLevel::Join) {
        std::u16string text;
        if (auto* start = std::get_if<std::u16string>(&left)) {
            text = std::move(*start);
        } else {
            appendText(left, text);
        }
        appendText(right, text);
        return text;
    }
    if (jet::isNull(left) || jet::isNull(right)) return {};
    if (levelOf(op) == ChainLevel::Comparison) return holds(op, compareValues(left, right));
    if (const auto* text = std::get_if<std::u16string>(&left)) {
        return *text + std::get<std::u16string>(right);
    }
    return calculate(op, left, right);
}

class Chain final : public Expression {
public:
    Chain(ExpressionType type, std::vector<Operator> operators, Expressions operands)
        : Expression{type, std::move(operands)}, operators_{std::move(operators)} {}

    jet::Value evaluate(Row& row) const override {
        jet::Value result = operands().front()->evaluate(row);
        for (std::size_t i = 0; i < operators_.size(); ++i) {
            result = apply(operators_[i], std::move(result), operands()[i + 1]->evaluate(row));
        }
        return result;
    }

    bool isEquality() const override {
        return operators_.size() == 1 && operators_.front() == Operator::Equal;
    }

private:
    std::vector<Operator> operators_;
};

class Negative final : public Expression {
public:
    explicit Negative(ExpressionPtr operand) : Expression{kDouble, {std::move(operand)}} {}

    jet::Value evaluate(Row& row) const override {
        const jet::Value value = operands().front()->evaluate(row);
        if (jet::isNull(value)) return {};
        if (const auto* number = std::get_if<std::int32_t>(&value);
            number && *number != INT32_MIN) {
            return -*number;
        }
        return -toDouble(value);
    }
};

}  // namespace

ExpressionPtr makeChain(std::vector<Operator> operators, Expressions operands) {
    ExpressionType type = operands.front()->type();
    for (std::size_t i = 0; i < operators.size(); ++i) {
        type = resultType(operators[i], type, operands[i + 1]->type());
    }
    return folded(std::make_shared<Chain>(type, std::move(operators), std::move(operands)));
}

ExpressionPtr makeNegative(ExpressionPtr operand) {
    if (!isNumeric(operand->domain())) throwMismatch();
    return folded(std::make_shared<Negative>(std::move(operand)));
}

}  // namespace sql

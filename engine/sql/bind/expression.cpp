#include "engine/sql/bind/expression.h"

#include "engine/sql/values/error.h"

#include <algorithm>

namespace sql {

namespace {

class Constant final : public Expression {
public:
    Constant(jet::Value value, ExpressionType type)
        : Expression{type, {}}, value_{std::move(value)} {}

    jet::Value evaluate(Row&) const override { return value_; }
    const jet::Value* constant() const override { return &value_; }

private:
    jet::Value value_;
};

class StoredColumn final : public Expression {
public:
    explicit StoredColumn(const jet::Column& column)
        : Expression{typeOf(column.type), {}}, column_{column} {}

    jet::Value evaluate(Row& row) const override {
        jet::Value value = jet::readField(*row.pages, column_, *row.record);
        if (const auto* const lost = std::get_if<jet::Unreadable>(&value)) {
            row.lost.push_back({&column_, lost->why});
        }
        return value;
    }
    const jet::Column* column() const override { return &column_; }

private:
    const jet::Column& column_;
};

class GroupValue final : public Expression {
public:
    GroupValue(std::size_t slot, ExpressionType type, const jet::Column* column)
        : Expression{type, {}}, slot_{slot}, column_{column} {}

    jet::Value evaluate(Row& row) const override { return (*row.group)[slot_]; }
    const jet::Column* column() const override { return column_; }

private:
    std::size_t slot_;
    const jet::Column* column_;
};

jet::ColumnType columnTypeOf(const jet::Value& value) {
    // By the alternatives of jet::Value.
    constexpr jet::ColumnType kTypes[] = {
        jet::ColumnType::Text,    jet::ColumnType::Boolean, jet::ColumnType::Byte,
        jet::ColumnType::Integer, jet::ColumnType::Long,    jet::ColumnType::Currency,
        jet::ColumnType::Single,  jet::ColumnType::Double,  jet::ColumnType::Date,
        jet::ColumnType::Binary,  jet::ColumnType::Text,    jet::ColumnType::Guid,
        jet::ColumnType::Numeric, jet::ColumnType::Text};
    static_assert(std::size(kTypes) == std::variant_size_v<jet::Value>);
    return kTypes[value.index()];
}

}  // namespace

ExpressionType typeOf(jet::ColumnType type) { return {domainOf(type), type}; }

ExpressionPtr makeConstant(jet::Value value) {
    const ExpressionType type{domainOf(value), columnTypeOf(value)};
    return std::make_shared<Constant>(std::move(value), type);
}

ExpressionPtr makeColumn(const jet::Column& column) {
    return std::make_shared<StoredColumn>(column);
}

ExpressionPtr makeGroupValue(std::size_t slot, ExpressionType type, const jet::Column* column) {
    return std::make_shared<GroupValue>(slot, type, column);
}

ExpressionPtr folded(ExpressionPtr expression) {
    const Expressions& operands = expression->operands();
    const bool constant = !operands.empty() &&
                          std::all_of(operands.begin(), operands.end(),
                                      [](const auto& each) { return each->constant() != nullptr; });
    if (!constant) return expression;
    Row none;
    jet::Value value = expression->evaluate(none);
    // A constant keeps the type that it has as an expression, also where its value is null.
    if (jet::isNull(value)) return std::make_shared<Constant>(std::move(value), expression->type());
    return makeConstant(std::move(value));
}

void requireCondition(const Expression& expression) {
    if (!isNumeric(expression.domain())) {
        throw Error{Fault::TypeMismatch, "Data type mismatch in criteria expression."};
    }
}

void collectColumns(const Expression& expression, std::vector<const jet::Column*>& columns) {
    const jet::Column* column = expression.column();
    if (column && std::find(columns.begin(), columns.end(), column) == columns.end()) {
        columns.push_back(column);
    }
    for (const ExpressionPtr& operand : expression.operands()) collectColumns(*operand, columns);
}

std::vector<const jet::Column*> columnsOf(const Expression& expression) {
    std::vector<const jet::Column*> columns;
    collectColumns(expression, columns);
    return columns;
}

}  // namespace sql

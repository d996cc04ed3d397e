// Expressions bound to the columns of a table: each yields a value for a row.
//
//   const Expressions sides{makeColumn(column), makeConstant(std::int32_t{7})};
//   const ExpressionPtr condition = makeChain({Operator::Equal}, sides);
//   const jet::Value verdict = condition->evaluate(row);
//
// Expressions are immutable, any thread may evaluate them; a Row belongs to one thread. The
// functions that make them check the types of their operands (Error{TypeMismatch}) and give a
// constant where all operands are constant.
#pragma once

#include "engine/jet/record.h"
#include "engine/jet/value.h"
#include "engine/sql/parse/ast.h"
#include "engine/sql/values/comparison.h"

#include <memory>
#include <vector>

namespace sql {

/// What an expression is evaluated for: a record of the table, or the values of a group.
struct Row {
    const jet::Record* record = nullptr;
    jet::PageReader* pages = nullptr;  ///< for long values of the record
    const std::vector<jet::Value>* group = nullptr;
    OrderKey scratch;  ///< buffer for keys, reused from row to row
    std::vector<jet::LostField>
        lost;  ///< fields that could not be read, in the order of evaluation
};

/// The type that an expression yields.
struct ExpressionType {
    Domain domain = Domain::Null;
    jet::ColumnType type = jet::ColumnType::Text;
};

ExpressionType typeOf(jet::ColumnType type);

class Expression;
using ExpressionPtr = std::shared_ptr<const Expression>;
using Expressions = std::vector<ExpressionPtr>;

class Expression {
public:
    Expression(ExpressionType type, Expressions operands)
        : type_{type}, operands_{std::move(operands)} {}
    virtual ~Expression() = default;

    /// Null if an operand that decides is null or unreadable; a column itself is Unreadable then, and
    /// added to row.lost. Throws Error{TypeMismatch}.
    virtual jet::Value evaluate(Row& row) const = 0;

    /// The stored column, if this is one; else null.
    virtual const jet::Column* column() const { return nullptr; }

    /// Whether this is `first operand = second operand` and nothing more.
    virtual bool isEquality() const { return false; }

    /// Whether this is the AND of its operands.
    virtual bool isConjunction() const { return false; }

    /// The value of a constant; null if it depends on the row.
    virtual const jet::Value* constant() const { return nullptr; }

    const ExpressionType& type() const { return type_; }
    Domain domain() const { return type_.domain; }
    const Expressions& operands() const { return operands_; }

private:
    ExpressionType type_;
    Expressions operands_;
};

ExpressionPtr makeConstant(jet::Value value);

/// `column` must outlive the expression.
ExpressionPtr makeColumn(const jet::Column& column);

/// The value at index `slot` of a group. `column`: the column it is a value of; null if computed.
ExpressionPtr makeGroupValue(std::size_t slot, ExpressionType type, const jet::Column* column);

/// Operators of one level between operands, applied from the left.
ExpressionPtr makeChain(std::vector<Operator> operators, Expressions operands);

ExpressionPtr makeNegative(ExpressionPtr operand);

/// Constant operands are dropped or decide the result.
ExpressionPtr makeAnd(Expressions operands);

/// Likewise; equalities of one column with constants are merged into a set.
ExpressionPtr makeOr(Expressions operands);

ExpressionPtr makeNot(ExpressionPtr operand);
ExpressionPtr makeIsNull(ExpressionPtr operand);
ExpressionPtr makeLike(ExpressionPtr operand, ExpressionPtr pattern);

/// Whether `operand` equals one of `alternatives`.
ExpressionPtr makeIn(ExpressionPtr operand, Expressions alternatives);

/// The constant that `expression` yields if all its operands are constant; else itself.
ExpressionPtr folded(ExpressionPtr expression);

/// Throws Error{TypeMismatch} unless the expression can be true or false.
void requireCondition(const Expression& expression);

/// All columns that the expression reads, each once.
std::vector<const jet::Column*> columnsOf(const Expression& expression);

/// Adds those that are not in `columns` yet.
void collectColumns(const Expression& expression, std::vector<const jet::Column*>& columns);

}  // namespace sql

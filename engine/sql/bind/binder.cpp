#include "engine/sql/bind/binder.h"

#include "engine/jet/collation.h"
#include "engine/jet/text.h"
#include "engine/sql/values/error.h"

#include <algorithm>

namespace sql {

ExpressionPtr Binder::bind(const Node& node) {
    switch (node.kind) {
        case NodeKind::Literal:
            return makeConstant(node.value);
        case NodeKind::Column:
            return bindColumn(node);
        case NodeKind::Call:
            return bindCall(node);
        case NodeKind::Chain:
            return makeChain(node.operators, bindOperands(node));
        case NodeKind::And:
            return makeAnd(bindOperands(node));
        case NodeKind::Or:
            return makeOr(bindOperands(node));
        case NodeKind::Not:
            return makeNot(bind(*node.operands.front()));
        case NodeKind::Negative:
            return makeNegative(bind(*node.operands.front()));
        case NodeKind::Star:
            throw Error{Fault::Syntax, "Syntax error: * stands for columns only."};
        default:
            return node.negated ? makeNot(bindPredicate(node)) : bindPredicate(node);
    }
}

Expressions Binder::bindOperands(const Node& node) {
    Expressions operands;
    operands.reserve(node.operands.size());
    for (const NodePtr& operand : node.operands) operands.push_back(bind(*operand));
    return operands;
}

ExpressionPtr Binder::bindPredicate(const Node& node) {
    Expressions operands = bindOperands(node);
    ExpressionPtr operand = operands.front();
    switch (node.kind) {
        case NodeKind::In:
            operands.erase(operands.begin());
            return makeIn(std::move(operand), std::move(operands));
        case NodeKind::Like:
            return makeLike(std::move(operand), operands[1]);
        case NodeKind::Between:
            return makeAnd({makeChain({Operator::GreaterOrEqual}, {operand, operands[1]}),
                            makeChain({Operator::LessOrEqual}, {operand, operands[2]})});
        default:
            return makeIsNull(std::move(operand));
    }
}

bool Binder::isTable(std::u16string_view qualifier) const {
    return jet::compareText(qualifier, relation_.name) == 0 ||
           (!alias_.empty() && jet::compareText(qualifier, alias_) == 0);
}

const RelationColumn& Binder::column(const Node& node) const {
    const RelationColumn* found =
        node.qualifier.empty() || isTable(node.qualifier) ? relation_.find(node.name) : nullptr;
    if (found) return *found;
    const std::string name =
        (node.qualifier.empty() ? "" : jet::toUtf8(node.qualifier) + ".") + jet::toUtf8(node.name);
    throw Error{Fault::UnknownColumn,
                "No value given for one or more required parameters: '" + name + "'."};
}

ExpressionPtr Binder::bindColumn(const Node& node) { return column(node).value; }

ExpressionPtr Binder::bindCall(const Node& node) {
    const std::string name = jet::toUtf8(node.name);
    if (aggregateNamed(node.name)) {
        throw Error{Fault::Syntax, "Cannot have the aggregate function '" + name + "' here."};
    }
    throw Error{Fault::Syntax, "Undefined function '" + name + "' in expression."};
}

ExpressionPtr GroupBinder::bind(const Node& node) {
    for (std::size_t i = 0; i < select_.groupBy.size(); ++i) {
        if (!sameExpression(*select_.groupBy[i], node)) continue;
        if (node.kind == NodeKind::Column) column(node);  // its qualifier must be right, too
        const Expression& key = *plan_.groupKeys[i];
        return makeGroupValue(i, key.type(), key.column());
    }
    return Binder::bind(node);
}

ExpressionPtr GroupBinder::bindColumn(const Node& node) {
    column(node);
    throw Error{Fault::Syntax, "The expression '" + jet::toUtf8(node.name) +
                                   "' is neither grouped by nor part of an aggregate function."};
}

ExpressionPtr GroupBinder::bindCall(const Node& node) {
    const auto kind = aggregateNamed(node.name);
    if (!kind) return Binder::bindCall(node);
    if (node.operands.size() != 1) {
        throw Error{Fault::Syntax, "Wrong number of arguments used with function '" +
                                       jet::toUtf8(node.name) + "'."};
    }
    Aggregate aggregate{*kind, nullptr};
    const Node& argument = *node.operands.front();
    const bool allRows = *kind == AggregateKind::Count && argument.kind == NodeKind::Star;
    if (!allRows) aggregate.argument = records_.bind(argument);
    const std::size_t slot = plan_.groupKeys.size() + plan_.aggregates.size();
    const ExpressionType type = typeOf(aggregate);
    plan_.aggregates.push_back(std::move(aggregate));
    return makeGroupValue(slot, type, nullptr);
}

}  // namespace sql

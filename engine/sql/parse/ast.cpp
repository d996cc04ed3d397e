#include "engine/sql/parse/ast.h"

#include "engine/sql/parse/token.h"

#include <algorithm>

namespace sql {

ChainLevel levelOf(Operator op) {
    switch (op) {
        case Operator::Join:
            return ChainLevel::Join;
        case Operator::Add:
        case Operator::Subtract:
            return ChainLevel::Additive;
        case Operator::Multiply:
        case Operator::Divide:
            return ChainLevel::Multiplicative;
        default:
            return ChainLevel::Comparison;
    }
}

bool sameExpression(const Node& left, const Node& right) {
    return left.kind == right.kind && left.value == right.value &&
           sameWord(left.name, right.name) && left.operators == right.operators &&
           left.negated == right.negated &&
           std::equal(left.operands.begin(), left.operands.end(), right.operands.begin(),
                      right.operands.end(),
                      [](const NodePtr& a, const NodePtr& b) { return sameExpression(*a, *b); });
}

}  // namespace sql

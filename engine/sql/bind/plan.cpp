#include "engine/sql/bind/plan.h"

#include "engine/jet/text.h"
#include "engine/sql/bind/binder.h"
#include "engine/sql/bind/relation.h"
#include "engine/sql/parse/token.h"
#include "engine/sql/values/error.h"

#include <algorithm>

namespace sql {

namespace {

bool hasAggregate(const Node& node) {
    return (node.kind == NodeKind::Call && aggregateNamed(node.name)) ||
           std::any_of(node.operands.begin(), node.operands.end(),
                       [](const NodePtr& operand) { return hasAggregate(*operand); });
}

bool isGrouped(const SelectStatement& select) {
    const auto aggregates = [](const auto& item) {
        return item.expression && hasAggregate(*item.expression);
    };
    return !select.groupBy.empty() ||
           std::any_of(select.items.begin(), select.items.end(), aggregates) ||
           std::any_of(select.orderBy.begin(), select.orderBy.end(), aggregates);
}

class SelectBinder {
public:
    SelectBinder(const SelectStatement& select, jet::Database& database,
                 const Definitions& definitions)
        : select_{select}, from_{openRelation(database, select.table, definitions)} {
        plan_.table = from_.table;
        plan_.query = from_.query;
        plan_.grouped = isGrouped(select);
        plan_.distinct = select.distinct;
        plan_.top = select.top;
        records_ = std::make_unique<Binder>(from_, select.tableAlias);
    }

    Plan bind() {
        bindWhere();
        for (const NodePtr& key : select_.groupBy) {
            plan_.groupKeys.push_back(records_->bind(*key));
        }
        if (plan_.grouped) groups_ = std::make_unique<GroupBinder>(from_, select_, plan_);
        for (const SelectItem& item : select_.items) bindItem(item);
        for (const OrderItem& item : select_.orderBy) {
            plan_.order.push_back({bindOrder(*item.expression), item.ascending});
        }
        return std::move(plan_);
    }

private:
    /// A condition that is constant is no condition: all rows, or none.
    void bindWhere() {
        if (!select_.where) return;
        ExpressionPtr condition = records_->bind(*select_.where);
        requireCondition(*condition);
        if (const jet::Value* verdict = condition->constant()) {
            plan_.alwaysEmpty = truth(*verdict) != true;
        } else {
            plan_.condition = std::move(condition);
        }
    }

    Binder& binder() { return groups_ ? *groups_ : *records_; }

    void bindItem(const SelectItem& item) {
        if (!item.expression) return bindAllColumns(item);
        ExpressionPtr expression = binder().bind(*item.expression);
        OutputColumn column;
        column.type = expression->type().type;
        column.stored = expression->column();
        const bool named = item.expression->kind == NodeKind::Column;
        if (named) {
            const RelationColumn& shown = binder().column(*item.expression);
            column.name = shown.name;
            column.size = shown.size;
        }
        if (!item.alias.empty()) column.name = item.alias;
        if (column.name.empty()) column.name = unnamed();
        plan_.columns.push_back(std::move(column));
        plan_.outputs.push_back(std::move(expression));
    }

    std::u16string unnamed() const {
        return u"Expr" + jet::toUtf16(std::to_string(1000 + plan_.columns.size()));
    }

    void bindAllColumns(const SelectItem& item) {
        if (!item.starOf.empty() && !records_->isTable(item.starOf)) {
            throw Error{Fault::Syntax, "The table '" + jet::toUtf8(item.starOf) +
                                           "' before * is not part of the statement."};
        }
        if (plan_.grouped) {
            throw Error{Fault::Syntax, "* cannot be selected where rows are grouped."};
        }
        for (const RelationColumn& column : from_.columns) {
            plan_.columns.push_back(
                {column.name, column.value->type().type, column.size, column.value->column()});
            plan_.outputs.push_back(column.value);
        }
    }

    /// A column of the table, else the name of an output column; a number is the place of one.
    ExpressionPtr bindOrder(const Node& node) {
        if (const auto* place = std::get_if<std::int32_t>(&node.value);
            place && node.kind == NodeKind::Literal) {
            if (*place < 1 || static_cast<std::size_t>(*place) > plan_.outputs.size()) {
                throw Error{Fault::Syntax, "Syntax error in ORDER BY clause: there is no column " +
                                               std::to_string(*place) + "."};
            }
            return plan_.outputs[static_cast<std::size_t>(*place) - 1];
        }
        const bool plainName = node.kind == NodeKind::Column && node.qualifier.empty();
        if (plainName && !from_.find(node.name)) {
            const auto named =
                std::find_if(plan_.columns.begin(), plan_.columns.end(),
                             [&](const auto& column) { return sameWord(column.name, node.name); });
            if (named != plan_.columns.end()) {
                return plan_.outputs[static_cast<std::size_t>(named - plan_.columns.begin())];
            }
        }
        return binder().bind(node);
    }

    const SelectStatement& select_;
    const Relation from_;
    Plan plan_;
    std::unique_ptr<Binder> records_;
    std::unique_ptr<GroupBinder> groups_;
};

}  // namespace

Plan bind(const SelectStatement& select, jet::Database& database, const Definitions& definitions) {
    return SelectBinder{select, database, definitions}.bind();
}

}  // namespace sql

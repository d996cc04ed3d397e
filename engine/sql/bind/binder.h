// Resolves the names in expressions and makes them ready to be evaluated.
//
//   sql::Binder binder{*table, u"t"};
//   sql::ExpressionPtr condition = binder.bind(*select.where);
//
// Belongs to one thread.
#pragma once

#include "engine/sql/bind/plan.h"

namespace sql {

/// Binds expressions over the records of one table.
class Binder {
public:
    /// `table` must outlive what is bound.
    Binder(const jet::Table& table, std::u16string alias)
        : table_{table}, alias_{std::move(alias)} {}
    virtual ~Binder() = default;

    /// Throws Error: UnknownColumn, TypeMismatch, Syntax.
    virtual ExpressionPtr bind(const Node& node);

    /// Whether a qualifier names the table.
    bool isTable(std::u16string_view qualifier) const;

    /// Throws Error{UnknownColumn}.
    const jet::Column& column(const Node& node) const;

protected:
    virtual ExpressionPtr bindColumn(const Node& node);
    virtual ExpressionPtr bindCall(const Node& node);

private:
    Expressions bindOperands(const Node& node);
    ExpressionPtr bindPredicate(const Node& node);

    const jet::Table& table_;
    std::u16string alias_;
};

/// Binds expressions over groups: group keys, aggregates, and expressions of these.
class GroupBinder final : public Binder {
public:
    /// Adds the aggregates to `plan`, whose group keys must be bound already.
    GroupBinder(const jet::Table& table, const SelectStatement& select, Plan& plan)
        : Binder{table, select.tableAlias},
          records_{table, select.tableAlias},
          select_{select},
          plan_{plan} {}

    ExpressionPtr bind(const Node& node) override;

protected:
    ExpressionPtr bindColumn(const Node& node) override;
    ExpressionPtr bindCall(const Node& node) override;

private:
    Binder records_;
    const SelectStatement& select_;
    Plan& plan_;
};

}  // namespace sql

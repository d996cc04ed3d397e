// Resolves the names in expressions and makes them ready to be evaluated.
//
//   const sql::Relation people = sql::relationOf(table);
//   sql::Binder binder{people, u"t"};
//   sql::ExpressionPtr condition = binder.bind(*select.where);
//
// Belongs to one thread.
#pragma once

#include "engine/sql/bind/plan.h"
#include "engine/sql/bind/relation.h"

namespace sql {

/// Binds expressions over the rows of one relation.
class Binder {
public:
    /// `relation` must outlive the binder, and its table what is bound.
    Binder(const Relation& relation, std::u16string alias)
        : relation_{relation}, alias_{std::move(alias)} {}
    virtual ~Binder() = default;

    /// Throws Error: UnknownColumn, TypeMismatch, Syntax.
    virtual ExpressionPtr bind(const Node& node);

    /// Whether a qualifier names the relation.
    bool isTable(std::u16string_view qualifier) const;

    /// Throws Error{UnknownColumn}.
    const RelationColumn& column(const Node& node) const;

protected:
    virtual ExpressionPtr bindColumn(const Node& node);
    virtual ExpressionPtr bindCall(const Node& node);

private:
    Expressions bindOperands(const Node& node);
    ExpressionPtr bindPredicate(const Node& node);

    const Relation& relation_;
    std::u16string alias_;
};

/// Binds expressions over groups: group keys, aggregates, and expressions of these.
class GroupBinder final : public Binder {
public:
    /// Adds the aggregates to `plan`, whose group keys must be bound already.
    GroupBinder(const Relation& relation, const SelectStatement& select, Plan& plan)
        : Binder{relation, select.tableAlias},
          records_{relation, select.tableAlias},
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

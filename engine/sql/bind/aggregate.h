// COUNT, MIN, MAX, SUM and AVG.
//
//   sql::Accumulator sum{aggregate};
//   for (const jet::Value& value : values) sum.add(value);
//   use(sum.result());
//
// An accumulator belongs to one thread.
#pragma once

#include "engine/sql/bind/expression.h"

#include <string_view>

namespace sql {

enum class AggregateKind { Count, Minimum, Maximum, Sum, Average };

/// The aggregate function of that name; nothing if there is none.
std::optional<AggregateKind> aggregateNamed(std::u16string_view name);

struct Aggregate {
    AggregateKind kind = AggregateKind::Count;
    ExpressionPtr argument;  ///< null: all rows are counted
};

/// Currency stays Currency; other numbers are summed as doubles.
/// Throws Error{TypeMismatch} for a sum of non-numbers.
ExpressionType typeOf(const Aggregate& aggregate);

/// Accumulates the values of one group, ignoring Null. Belongs to one thread.
class Accumulator {
public:
    explicit Accumulator(const Aggregate& aggregate) : kind_{aggregate.kind} {}

    /// Requires: not null.
    void add(const jet::Value& value);

    /// Counts a row, whatever its values.
    void addRow() { ++count_; }

    jet::Value result() const;

private:
    void addToSum(const jet::Value& value);

    AggregateKind kind_;
    std::int32_t count_ = 0;
    jet::Value extreme_;
    double sum_ = 0;
    std::optional<std::int64_t> exactSum_;  ///< of amounts, in ten-thousandths
};

}  // namespace sql

#include "engine/sql/bind/aggregate.h"

#include "engine/sql/parse/token.h"
#include "engine/sql/values/error.h"

#include <array>
#include <utility>

namespace sql {

std::optional<AggregateKind> aggregateNamed(std::u16string_view name) {
    static constexpr std::array<std::pair<std::u16string_view, AggregateKind>, 5> kNames{{
        {u"COUNT", AggregateKind::Count},
        {u"MIN", AggregateKind::Minimum},
        {u"MAX", AggregateKind::Maximum},
        {u"SUM", AggregateKind::Sum},
        {u"AVG", AggregateKind::Average},
    }};
    for (const auto& [known, kind] : kNames) {
        if (sameWord(name, known)) return kind;
    }
    return std::nullopt;
}

ExpressionType typeOf(const Aggregate& aggregate) {
    if (aggregate.kind == AggregateKind::Count) return typeOf(jet::ColumnType::Long);
    const ExpressionType argument = aggregate.argument->type();
    if (aggregate.kind == AggregateKind::Minimum || aggregate.kind == AggregateKind::Maximum) {
        return argument;
    }
    if (!isNumeric(argument.domain)) {
        throw Error{Fault::TypeMismatch, "Data type mismatch: only numbers have a sum."};
    }
    const bool amount = argument.type == jet::ColumnType::Currency;
    return typeOf(amount ? jet::ColumnType::Currency : jet::ColumnType::Double);
}

void Accumulator::add(const jet::Value& value) {
    ++count_;
    switch (kind_) {
        case AggregateKind::Count:
            return;
        case AggregateKind::Minimum:
            if (jet::isNull(extreme_) || compareValues(value, extreme_) < 0) extreme_ = value;
            return;
        case AggregateKind::Maximum:
            if (jet::isNull(extreme_) || compareValues(value, extreme_) > 0) extreme_ = value;
            return;
        default:
            addToSum(value);
    }
}

void Accumulator::addToSum(const jet::Value& value) {
    const auto* amount = std::get_if<jet::Currency>(&value);
    if (!amount) {
        sum_ += toDouble(value);
        return;
    }
    std::int64_t sum = 0;
    if (__builtin_add_overflow(exactSum_.value_or(0), amount->tenThousandths, &sum)) {
        throw Error{Fault::TypeMismatch, "Overflow: a sum of amounts is too large."};
    }
    exactSum_ = sum;
}

jet::Value Accumulator::result() const {
    if (kind_ == AggregateKind::Count) return count_;
    if (count_ == 0) return {};
    switch (kind_) {
        case AggregateKind::Sum:
            return exactSum_ ? jet::Value{jet::Currency{*exactSum_}} : jet::Value{sum_};
        case AggregateKind::Average:
            return exactSum_ ? jet::Value{jet::Currency{*exactSum_ / count_}}
                             : jet::Value{sum_ / count_};
        default:
            return extreme_;
    }
}

}  // namespace sql

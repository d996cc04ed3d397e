// The order that rows are shown in: sort strings, and permutations of rows.
//
//   ado::OrderCache orders;
//   const ado::RowOrder order = orders.order(*rows, ado::parseSort(u"Date ASC", query->columns()));
//   use(rows->value(order.rowAt(0), 0));
//
// Orders are immutable; any thread may read them. A cache belongs to one thread.
#pragma once

#include "engine/ado/rows.h"

#include <memory>
#include <string_view>
#include <vector>

namespace ado {

struct SortColumn {
    std::size_t column = 0;
    bool descending = false;

    friend bool operator==(const SortColumn&, const SortColumn&) = default;
};

/// The columns of "NAME [ASC|DESC], ...", names in brackets where they need them; none for an
/// empty string. Throws Error: 3265 for an unknown column, 3001 for anything else that is wrong.
std::vector<SortColumn> parseSort(std::u16string_view text,
                                  const std::vector<sql::OutputColumn>& columns);

/// The rows that existed when it was made, in ascending order of some columns.
class Permutation {
public:
    /// Throws as Rows::value.
    Permutation(Rows& rows, std::vector<SortColumn> columns);

    const std::vector<SortColumn>& columns() const { return columns_; }
    std::uint32_t count() const { return count_; }

    std::uint32_t rowAt(std::uint32_t place) const { return rows_.empty() ? place : rows_[place]; }

    /// Whether the rows came in this order.
    bool isOfFetch() const { return rows_.empty(); }

    std::size_t byteCount() const { return rows_.capacity() * sizeof(std::uint32_t); }

private:
    std::vector<SortColumn> columns_;
    std::uint32_t count_ = 0;
    std::vector<std::uint32_t> rows_;  ///< empty if the rows came in this order already
};

/// For each of the first `count` rows the rank of its value among the different values of the
/// column, from 0. Throws as Rows::value.
std::vector<std::uint32_t> denseRanks(Rows& rows, std::size_t column, std::uint32_t count);

/// Maps positions to rows and back. Rows that arrived after the sort follow the sorted ones.
/// Descending is the exact reverse of ascending, also for equal rows.
class RowOrder {
public:
    /// The order of the fetch.
    RowOrder() = default;

    RowOrder(std::shared_ptr<const Permutation> permutation, bool reversed)
        : permutation_{std::move(permutation)}, reversed_{reversed} {}

    std::uint32_t rowAt(std::uint32_t position) const {
        if (!permutation_ || position >= permutation_->count()) return position;
        return permutation_->rowAt(reversed_ ? permutation_->count() - 1 - position : position);
    }

    /// Takes a pass over the rows.
    std::uint32_t positionOf(std::uint32_t row) const;

    /// Whether this is the order of the fetch, or its reverse.
    bool isOfFetch() const { return !permutation_ || permutation_->isOfFetch(); }
    bool isReversed() const { return permutation_ && reversed_; }

    const std::shared_ptr<const Permutation>& permutation() const { return permutation_; }

private:
    std::shared_ptr<const Permutation> permutation_;
    bool reversed_ = false;
};

/// Makes orders of one set of rows; equal ones are shared.
class OrderCache {
public:
    /// Throws as Rows::value.
    RowOrder order(Rows& rows, std::vector<SortColumn> columns);

private:
    std::vector<std::weak_ptr<const Permutation>> known_;
};

}  // namespace ado

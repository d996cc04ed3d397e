#include "engine/ado/sort_order.h"

#include "engine/ado/connection_string.h"
#include "engine/ado/error.h"
#include "engine/ado/radix_sort.h"

#include <algorithm>
#include <numeric>

namespace ado {
namespace {

std::size_t findColumn(std::u16string_view name, const std::vector<sql::OutputColumn>& columns) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (equalsIgnoringCase(columns[i].name, name)) return i;
    }
    throwItemNotFound(name);
}

/// Takes a name, plain or in brackets, from the front of `text`.
std::u16string_view takeName(std::u16string_view& text) {
    text = trimmed(text);
    const bool bracketed = !text.empty() && text.front() == u'[';
    const std::size_t end = bracketed ? text.find(u']') : text.find_first_of(u" \t,");
    if (bracketed && end == std::u16string_view::npos) {
        throwInvalidArgument("a sort string with an open bracket.");
    }
    const std::u16string_view name = text.substr(bracketed ? 1 : 0, bracketed ? end - 1 : end);
    text.remove_prefix(std::min(bracketed ? end + 1 : end, text.size()));
    if (name.empty()) throwInvalidArgument("a sort string without a column.");
    return name;
}

bool takeDescending(std::u16string_view& text) {
    const std::size_t end = std::min(text.find(u','), text.size());
    const std::u16string_view word = trimmed(text.substr(0, end));
    text.remove_prefix(end);
    if (equalsIgnoringCase(word, u"DESC")) return true;
    if (!word.empty() && !equalsIgnoringCase(word, u"ASC")) {
        throwInvalidArgument("a sort direction other than ASC and DESC.");
    }
    return false;
}

}  // namespace

std::vector<SortColumn> parseSort(std::u16string_view text,
                                  const std::vector<sql::OutputColumn>& columns) {
    std::vector<SortColumn> sort;
    text = trimmed(text);
    while (!text.empty()) {
        const std::size_t column = findColumn(takeName(text), columns);
        if (columns[column].type == jet::ColumnType::Ole) {
            throwInvalidArgument("a sort on a column of long binary values.");
        }
        sort.push_back({column, takeDescending(text)});
        if (text.empty()) break;
        text.remove_prefix(1);
        if (trimmed(text).empty()) throwInvalidArgument("a sort string that ends with a comma.");
    }
    return sort;
}

Permutation::Permutation(Rows& rows, std::vector<SortColumn> columns)
    : columns_{std::move(columns)}, count_{rows.count()}, rows_(count_) {
    const Pass pass{rows};
    std::iota(rows_.begin(), rows_.end(), 0u);
    // From the last column to the first: a stable sort keeps what the later columns decided.
    for (auto sort = columns_.rbegin(); sort != columns_.rend(); ++sort) {
        std::vector<std::uint64_t> keys = rows.orderKeys(sort->column, count_);
        if (sort->descending) {
            for (std::uint64_t& key : keys) key = ~key;
        }
        sortByKey(keys, rows_);
    }
    if (std::is_sorted(rows_.begin(), rows_.end())) std::vector<std::uint32_t>{}.swap(rows_);
}

namespace {

/// Of keys none of which is above `greatest`, which is small enough for a table.
std::vector<std::uint32_t> ranksByTable(const std::vector<std::uint64_t>& keys,
                                        std::uint64_t greatest) {
    std::vector<std::uint32_t> rankOf(static_cast<std::size_t>(greatest) + 1);
    for (const std::uint64_t key : keys) rankOf[static_cast<std::size_t>(key)] = 1;
    std::exclusive_scan(rankOf.begin(), rankOf.end(), rankOf.begin(), 0u);
    std::vector<std::uint32_t> ranks(keys.size());
    std::transform(keys.begin(), keys.end(), ranks.begin(),
                   [&](std::uint64_t key) { return rankOf[static_cast<std::size_t>(key)]; });
    return ranks;
}

std::vector<std::uint32_t> ranksBySorting(const std::vector<std::uint64_t>& keys) {
    std::vector<std::uint32_t> rows(keys.size());
    std::iota(rows.begin(), rows.end(), 0u);
    sortByKey(keys, rows);
    std::vector<std::uint32_t> ranks(keys.size());
    std::uint32_t rank = 0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (i > 0 && keys[rows[i]] != keys[rows[i - 1]]) ++rank;
        ranks[rows[i]] = rank;
    }
    return ranks;
}

}  // namespace

std::vector<std::uint32_t> denseRanks(Rows& rows, std::size_t column, std::uint32_t count) {
    const Pass pass{rows};
    const std::vector<std::uint64_t> keys = rows.orderKeys(column, count);
    if (keys.empty()) return {};
    const std::uint64_t greatest = *std::max_element(keys.begin(), keys.end());
    return greatest < 2 * std::uint64_t{count} + 1024 ? ranksByTable(keys, greatest)
                                                      : ranksBySorting(keys);
}

std::uint32_t RowOrder::positionOf(std::uint32_t row) const {
    if (!permutation_ || row >= permutation_->count()) return row;
    std::uint32_t place = 0;
    while (permutation_->rowAt(place) != row) ++place;
    return reversed_ ? permutation_->count() - 1 - place : place;
}

RowOrder OrderCache::order(Rows& rows, std::vector<SortColumn> columns) {
    if (columns.empty()) return {};
    const bool reversed = columns.front().descending;
    if (reversed) {
        for (SortColumn& column : columns) column.descending = !column.descending;
    }
    std::erase_if(known_, [](const auto& known) { return known.expired(); });
    for (const auto& known : known_) {
        const auto permutation = known.lock();
        if (permutation && permutation->columns() == columns &&
            permutation->count() == rows.count()) {
            return {permutation, reversed};
        }
    }
    auto made = std::make_shared<const Permutation>(rows, std::move(columns));
    known_.push_back(made);
    return {std::move(made), reversed};
}

}  // namespace ado

#include "engine/ado/order_keys.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace ado {
namespace {

struct Item {
    std::uint64_t prefix = 0;
    std::uint32_t index = 0;
    bool null = false;
    bool whole = false;  ///< the prefix is the whole key
};

constexpr std::size_t kPrefix = 8;

Item makeItem(std::uint32_t index, bool null, const sql::OrderKey& key) {
    Item item{0, index, null, key.size() <= kPrefix};
    for (std::size_t i = 0; i < kPrefix; ++i) {
        item.prefix = (item.prefix << 8) | (i < key.size() ? key[i] : 0u);
    }
    return item;
}

bool sameStart(const Item& left, const Item& right) {
    return left.null == right.null && left.prefix == right.prefix;
}

/// Ranks items whose keys begin alike, from `rank` on; gives the first rank above theirs.
std::uint64_t rankTies(std::span<const Item> ties, const KeySource& keyOf, std::uint64_t rank,
                       std::vector<std::uint64_t>& ranks) {
    std::vector<std::pair<sql::OrderKey, std::uint32_t>> keys(ties.size());
    for (std::size_t i = 0; i < ties.size(); ++i) {
        keys[i].second = ties[i].index;
        keyOf(ties[i].index, keys[i].first);
    }
    std::sort(keys.begin(), keys.end(),
              [](const auto& left, const auto& right) { return left.first < right.first; });
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (i > 0 && keys[i].first != keys[i - 1].first) ++rank;
        ranks[keys[i].second] = rank;
    }
    return rank + 1;
}

}  // namespace

std::vector<std::uint64_t> ranksOf(std::uint32_t count, const KeySource& keyOf) {
    std::vector<Item> items;
    items.reserve(count);
    sql::OrderKey key;
    for (std::uint32_t i = 0; i < count; ++i) {
        key.clear();
        const bool present = keyOf(i, key);
        items.push_back(makeItem(i, !present, key));
    }
    std::sort(items.begin(), items.end(), [](const Item& left, const Item& right) {
        if (left.null != right.null) return left.null;
        if (left.prefix != right.prefix) return left.prefix < right.prefix;
        return left.index < right.index;
    });

    std::vector<std::uint64_t> ranks(count);
    std::uint64_t rank = 1;
    for (std::size_t start = 0, end = 0; start < items.size(); start = end) {
        bool whole = true;
        for (end = start; end < items.size() && sameStart(items[start], items[end]); ++end) {
            whole = whole && items[end].whole;
        }
        if (items[start].null) continue;  // rank 0
        const auto ties = std::span{items}.subspan(start, end - start);
        if (ties.size() > 1 && !whole) {
            rank = rankTies(ties, keyOf, rank, ranks);
            continue;
        }
        for (const Item& item : ties) ranks[item.index] = rank;
        ++rank;
    }
    return ranks;
}

std::uint64_t orderedBits(double number) {
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
    if (number == 0) number = 0;  // -0.0 is the same number
    const auto bits = std::bit_cast<std::uint64_t>(number);
    return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

void packKeys(std::vector<std::uint64_t>& keys, const std::vector<bool>& nulls) {
    std::uint64_t least = std::numeric_limits<std::uint64_t>::max();
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (!nulls[i]) least = std::min(least, keys[i]);
    }
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const std::uint64_t above = keys[i] - least;
        // The highest of 2^64 numbers shares its key with the one below it.
        keys[i] =
            nulls[i] ? 0 : above + (above == std::numeric_limits<std::uint64_t>::max() ? 0 : 1);
    }
}

}  // namespace ado

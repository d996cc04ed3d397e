#include "engine/ado/order_keys.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace ado {
namespace {

/// The first bytes of a key as two numbers.
struct Item {
    std::uint64_t high = 0;
    std::uint64_t low = 0;
    std::uint32_t index = 0;
    bool present = false;     ///< not Null
    std::uint8_t length = 0;  ///< of the key, kPrefix + 1 if it is longer than that
};

constexpr std::size_t kPrefix = 16;

std::uint64_t bigEndian(const sql::OrderKey& key, std::size_t start) {
    std::uint64_t number = 0;
    for (std::size_t i = start; i < start + 8; ++i) {
        number = (number << 8) | (i < key.size() ? key[i] : 0u);
    }
    return number;
}

Item makeItem(std::uint32_t index, bool present, const sql::OrderKey& key) {
    const auto length = static_cast<std::uint8_t>(std::min(key.size(), kPrefix + 1));
    return {bigEndian(key, 0), bigEndian(key, 8), index, present, length};
}

bool sameStart(const Item& left, const Item& right) {
    return left.present == right.present && left.high == right.high && left.low == right.low &&
           left.length == right.length;
}

bool before(const Item& left, const Item& right) {
    if (left.present != right.present) return right.present;
    if (left.high != right.high) return left.high < right.high;
    if (left.low != right.low) return left.low < right.low;
    if (left.length != right.length) return left.length < right.length;
    return left.index < right.index;
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
        items.push_back(makeItem(i, present, key));
    }
    std::sort(items.begin(), items.end(), before);

    std::vector<std::uint64_t> ranks(count);
    std::uint64_t rank = 1;
    for (std::size_t start = 0, end = 0; start < items.size(); start = end) {
        for (end = start; end < items.size() && sameStart(items[start], items[end]); ++end) {
        }
        if (!items[start].present) continue;  // rank 0
        const auto ties = std::span{items}.subspan(start, end - start);
        if (ties.size() > 1 && items[start].length > kPrefix) {
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

// Values converted to whole numbers of the same order.
//
//   const auto ranks = ado::ranksOf(count, [&](std::uint32_t i, sql::OrderKey& key) {
//       sql::appendOrderKey(values[i], jet::ColumnType::Text, true, key);
//       return !jet::isNull(values[i]);
//   });
//
// Pure functions; any thread may call them.
#pragma once

#include "engine/sql/values/comparison.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace ado {

/// Appends the key of item i to the empty `key`; false for Null. Called more than once for items
/// whose keys share a prefix.
using KeySource = std::function<bool(std::uint32_t i, sql::OrderKey& key)>;

/// The rank of each of `count` items: 0 for Null, then 1, 2, ... in the order of the keys, equal
/// only for equal keys. Memory: 32 bytes an item, and the keys of all items that share their first
/// 16 bytes.
std::vector<std::uint64_t> ranksOf(std::uint32_t count, const KeySource& keyOf);

/// Unsigned numbers in the order of the doubles.
std::uint64_t orderedBits(double number);

/// Unsigned numbers in the order of the signed numbers.
inline std::uint64_t orderedBits(std::int64_t number) {
    return static_cast<std::uint64_t>(number) ^ (std::uint64_t{1} << 63);
}

/// Shifts the numbers so that the smallest is 1 and Null is 0. `nulls` is 1 for a Null.
void packKeys(std::vector<std::uint64_t>& keys, const std::vector<bool>& nulls);

}  // namespace ado

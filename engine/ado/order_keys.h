// Values turned into whole numbers that order as they do.
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

/// Puts the bytes of item i into the empty `key`; false for Null. Called more than once for items
/// whose keys begin alike.
using KeySource = std::function<bool(std::uint32_t i, sql::OrderKey& key)>;

/// For each of `count` items its rank among them: 0 for Null, then 1, 2, ... in the order of the
/// keys, equal exactly for equal keys. Memory: 32 bytes an item, and the keys of as many items as
/// begin with the same 16 bytes.
std::vector<std::uint64_t> ranksOf(std::uint32_t count, const KeySource& keyOf);

/// Bits that compare as unsigned numbers as the doubles do.
std::uint64_t orderedBits(double number);

/// Bits that compare as unsigned numbers as the signed numbers do.
inline std::uint64_t orderedBits(std::int64_t number) {
    return static_cast<std::uint64_t>(number) ^ (std::uint64_t{1} << 63);
}

/// Moves numbers down so that the least is 1 and Null 0. `nulls` holds 1 for a Null.
void packKeys(std::vector<std::uint64_t>& keys, const std::vector<bool>& nulls);

}  // namespace ado

// A stable sort of row numbers by whole-number keys, in time proportional to their number.
//
//   ado::sortByKey(keys, rows);   // keys[rows[0]] <= keys[rows[1]] <= ...
//
// Pure functions; any thread may call them.
#pragma once

#include <cstdint>
#include <vector>

namespace ado {

/// Reorders `rows`, a permutation of 0 to keys.size() - 1, by their keys; the sort is stable.
/// Temporary memory: up to 32 bytes a row.
void sortByKey(const std::vector<std::uint64_t>& keys, std::vector<std::uint32_t>& rows);

}  // namespace ado

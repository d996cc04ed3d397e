// Usage maps: sets of page numbers. The layout is in format/usage_map.h.
//
//   for (const jet::PageNumber owned : jet::readUsageMap(pages, definition.ownedMap)) use(owned);
//
// Any thread may call, with a PageReader of its own.
#pragma once

#include "engine/jet/format/usage_map.h"
#include "engine/jet/page_cache.h"

#include <vector>

namespace jet {

/// The pages of the map in row `map`, ascending; a map id of 0 is an empty map. Pages beyond the
/// end of the file are included: another program may be about to append them, and otherwise the
/// reader counts them as missing. Throws Error{Damaged}.
std::vector<PageNumber> readUsageMap(PageReader& pages, RowId map);

/// The bytes of the map's row; at least kMinRowSize. Throws Error{Damaged}.
std::vector<std::uint8_t> readUsageMapRow(PageReader& pages, RowId map);

}  // namespace jet

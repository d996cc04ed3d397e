// Checks of usage maps: the sets of pages that tables, columns and indexes own, and the free pages
// of the file.
//
//   const auto owned = readMap(context, definition.ownedMap, definition.page, "its pages");
//   const auto free = readMap(context, definition.freeMap, definition.page, "its pages with room");
//   if (owned && free) checkFreeMap(context, *owned, *free, "its pages with room");
//
// One thread, that of the check.
#pragma once

#include "engine/jet/check/context.h"

#include <string_view>
#include <vector>

namespace jet::checking {

/// The pages of a map, ascending, those outside the file left out and reported. Claims the map's
/// row and its bitmap pages. A map id of 0 is an empty map; nothing if the map cannot be read.
/// `table` is the owner; `role` names the map in findings.
std::optional<std::vector<PageNumber>> readMap(Context& context, RowId map, PageNumber table,
                                               std::string_view role);

/// Reports the pages of `free` that are not in `owned`; both are ascending.
void checkFreeMap(Context& context, const std::vector<PageNumber>& owned,
                  const std::vector<PageNumber>& free, std::string_view role);

/// Which pages the file's own map lists as free; nothing if that map cannot be read.
std::optional<std::vector<bool>> readFreePages(Context& context);

}  // namespace jet::checking

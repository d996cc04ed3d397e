// Usage maps: sets of pages as rows of map pages, in the inline and in the reference form; and the
// map of the file's free pages on page 1.
#pragma once

#include "tests/support/record_pages.h"

namespace fixture {

enum class MapForm {
    Natural,    ///< inline while all pages lie within one window of 512, else by reference
    Inline,     ///< always inline; the row grows with the highest page
    Reference,  ///< always by reference to bitmap pages
};

/// The row of a map. `pages` must ascend. The reference form allocates and writes bitmap pages.
ByteVector encodeUsageMap(PageFile& file, std::span<const jet::PageNumber> pages, MapForm form);

/// Writes page 1: the map of free pages, in which the pages of the file are in use, except those
/// given up, and all that the map reaches behind its end are free; and a second, empty map. Files
/// beyond the reach of a row get the reference form, whose bitmap pages are allocated here.
void writeFreePageMap(PageFile& file);

}  // namespace fixture

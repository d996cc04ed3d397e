// What all parts of a check share.
//
//   Context context{storage};
//   PageReader pages = context.reader();
//   if (!context.inFile(number)) context.report.error(Rule::PageReference, first, "no such page");
//
// One thread, that of the check.
#pragma once

#include "engine/jet/check/ownership.h"
#include "engine/jet/check/report.h"
#include "engine/jet/format/page.h"
#include "engine/jet/page_cache.h"

#include <algorithm>
#include <unordered_set>

namespace jet::checking {

struct Context {
    explicit Context(const Storage& source)
        : storage{source},
          pageCount{std::min(source.pageCount(), format::page::kMaxCount)},
          cache{source},
          owners{pageCount} {}

    PageReader reader() { return {storage, cache}; }

    bool inFile(PageNumber page) const { return page != kNoPage && raw(page) < pageCount; }

    const Storage& storage;
    const std::uint32_t pageCount;
    PageCache cache;
    Reporter report;
    PageOwners owners;
    std::unordered_set<std::uint32_t> mapRows;  ///< rows that hold a usage map, packed

    std::unordered_set<std::uint32_t> objectPages;  ///< that objects of the catalog lead to

    /// False once a list of pages could not be read: pages without owner may have one in that list.
    bool ownersKnown = true;
};

}  // namespace jet::checking

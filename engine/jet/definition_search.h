// Tables that no entry of the catalog leads to: their definitions, found by looking at all pages.
//
//   for (const jet::PageNumber page : jet::findDefinitions(pages)) use(page);
//
// Any thread may call, with a PageReader of its own.
#pragma once

#include "engine/jet/database.h"

namespace jet {

/// The first pages of all definitions of users' tables, ascending. Reads the whole file.
std::vector<PageNumber> findDefinitions(PageReader& pages);

/// Entries for the tables whose definitions no entry of the catalog leads to. A table of traces that
/// is missing is recognised by its columns, and gets its name back; others are Table1, Table2, ...
std::vector<CatalogEntry> entriesOfLostTables(PageReader& pages,
                                              const std::vector<CatalogEntry>& catalog);

/// The data pages of the table whose definition begins on `owner`, ascending. Reads the whole file.
std::vector<PageNumber> findDataPages(PageReader& pages, PageNumber owner);

}  // namespace jet

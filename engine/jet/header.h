// The header page: what kind of file this is, and whether it can be read. The layout is in
// format/header_page.h.
//
//   const auto storage = jet::openFile(path);
//   jet::checkHeader(*storage);
//
// Any thread may call.
#pragma once

#include "engine/jet/page_cache.h"

namespace jet {

/// Checks that `storage` is a Jet 4 database that can be read.
/// Throws Error: NotADatabase, OlderFormat, NewerFormat, Encrypted, PasswordProtected, Truncated.
void checkHeader(const Storage& storage);

/// How many pages are in use, according to the file's map of free pages, but beyond its end; one at
/// least if it ends in the middle of a page. An invalid map is ignored: only writers need it.
std::uint64_t missingPages(PageReader& pages);

/// Makes `page` the header of a new database, without key and password. The creation date is always
/// the same: the security identifiers of a new catalog depend on it.
void writeHeader(Page& page);

}  // namespace jet

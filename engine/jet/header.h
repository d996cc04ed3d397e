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

/// Checks that `storage` holds a Jet 4 database that can be read whole.
/// Throws Error: NotADatabase, OlderFormat, NewerFormat, Encrypted, PasswordProtected, Truncated.
void checkHeader(const Storage& storage);

/// Checks that no page which the file's map of free pages counts as used lies beyond the end.
/// A map that makes no sense proves nothing: only writers need it. Throws Error{Truncated}.
void checkLength(PageReader& pages);

/// Makes `page` the header of a new database, without key and password. Its creation date is the
/// same for all of them: the security identifiers of a new catalog belong to it.
void writeHeader(Page& page);

}  // namespace jet

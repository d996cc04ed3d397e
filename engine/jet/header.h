// The header page: what kind of file this is, and whether it can be read.
//
//   offset  size  meaning
//   0x04    16    "Standard Jet DB" or another signature
//   0x14    4     0 = Jet 3, 1 = Jet 4, more = later
//   0x18    128   masked with a fixed key stream; in it:
//   0x3E    4       database key, 0 = pages are stored plainly
//   0x42    40      password, masked with the creation date
//   0x72    8       creation date
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
